#include "KXCameraControl/description/DataFolder.h"

#include "KXCameraControl/ports/EnvironmentPath.h"

namespace kx
{

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
