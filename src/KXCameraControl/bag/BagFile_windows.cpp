#include "KXCameraControl/bag/BagFile.h"

#include "held_files/HeldFiles.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include <io.h>

namespace kx
{
namespace
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

std::string fill(std::FILE* file, const std::string& text)
{
    bool ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    ok = std::fflush(file) == 0 && ok;
    ok = ok && _commit(_fileno(file)) == 0;
    const std::string reason = ok ? std::string() : std::strerror(errno);
    return std::fclose(file) == 0 || !ok ? reason : std::strerror(errno);
}

} // namespace

std::string writeBagFile(const std::string& path, const std::string& text)
{
    static std::atomic<unsigned> number{0};
    const std::string temporary =
        path + '.' + std::to_string(GetCurrentProcessId()) + '-' + std::to_string(++number);
    std::FILE* const file = std::fopen(temporary.c_str(), "wb");
    if (!file)
        return std::strerror(errno);
    std::string reason = fill(file, text);
    if (reason.empty())
        reason = replaceFile(temporary, path);
    if (!reason.empty())
        std::remove(temporary.c_str());
    return reason;
}

} // namespace kx
