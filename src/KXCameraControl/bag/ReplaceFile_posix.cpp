#include "KXCameraControl/bag/ReplaceFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kx
{

std::string replaceFile(const std::string& from, const std::string& to)
{
    return std::rename(from.c_str(), to.c_str()) == 0 ? std::string() : std::strerror(errno);
}

} // namespace kx
