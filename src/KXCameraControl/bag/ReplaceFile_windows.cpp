#include "KXCameraControl/bag/ReplaceFile.h"

#include "held_files/HeldFiles.h"

#include <system_error>

namespace kx
{

// rename() leaves an older file in place here.
std::string replaceFile(const std::string& from, const std::string& to)
{
    const DWORD error = held_files::retried([&] {
        const DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
        return MoveFileExA(from.c_str(), to.c_str(), flags) ? DWORD(ERROR_SUCCESS) : GetLastError();
    });
    return error == ERROR_SUCCESS ? std::string() : std::system_category().message(static_cast<int>(error));
}

} // namespace kx
