// Where the XDG base directories have it.
#include "KXCameraControl/description/DataFolder.h"

#include "KXCameraControl/ports/EnvironmentPath.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kx
{

namespace
{

std::filesystem::path absoluteFolder(const char* variable)
{
    const std::filesystem::path folder = environmentPath(variable);
    return folder.is_absolute() ? folder : std::filesystem::path();
}

} // namespace

std::filesystem::path userDataFolder()
{
    const std::filesystem::path data = absoluteFolder("XDG_DATA_HOME");
    const std::filesystem::path home = absoluteFolder("HOME");
    return data.empty() && !home.empty() ? home / ".local/share" : data;
}

bool isOwnFolder(const std::filesystem::path& folder)
{
    struct stat about = {};
    return ::stat(folder.c_str(), &about) == 0 && S_ISDIR(about.st_mode) && about.st_uid == ::geteuid() &&
           (about.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace kx
