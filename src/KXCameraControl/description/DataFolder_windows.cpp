#include "KXCameraControl/description/DataFolder.h"

#include <cstdlib>
#include <string>

namespace kx
{

std::filesystem::path environmentPath(const char* variable)
{
    const std::string name = variable; // names are plain ASCII
    const wchar_t* value = _wgetenv(std::wstring(name.begin(), name.end()).c_str());
    return value ? std::filesystem::path(value) : std::filesystem::path();
}

std::filesystem::path userDataFolder()
{
    const std::filesystem::path folder = environmentPath("LOCALAPPDATA");
    return folder.is_absolute() ? folder : std::filesystem::path();
}

// Where programs keep their data here, the system lets nobody else write.
bool isOwnFolder(const std::filesystem::path& folder)
{
    std::error_code error;
    return std::filesystem::is_directory(folder, error);
}

} // namespace kx
