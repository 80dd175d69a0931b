#include "KXCameraControl/api/ThreadError.h"

namespace kx::api
{

std::string& lastThreadError()
{
    static thread_local std::string text;
    return text;
}

} // namespace kx::api
