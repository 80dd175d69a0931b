#include "KXCameraControl/ports/EnvironmentPath.h"

#include <cstdlib>

namespace kx
{

std::filesystem::path environmentPath(const char* variable)
{
    const char* value = std::getenv(variable);
    return value ? value : "";
}

} // namespace kx
