#include "KXCameraControl/bag/ReplaceFile.h"

#include <windows.h>

#include <system_error>

namespace kx
{
namespace
{

// Who scans or indexes new files holds them for a moment.
constexpr int kAttempts = 4;
constexpr DWORD kPauseMs = 400;

} // namespace

// rename() leaves an older file in place here.
std::string replaceFile(const std::string& from, const std::string& to)
{
    DWORD error = 0;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (attempt > 0)
            Sleep(kPauseMs);
        if (MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return {};
        error = GetLastError();
        if (error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED)
            break;
    }
    return std::system_category().message(static_cast<int>(error));
}

} // namespace kx
