#include "KXCameraControl/ports/EnvironmentPath.h"

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

} // namespace kx
