#include "KXCameraControl/bag/BagFile.h"

#include "held_files/HeldFiles.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include <io.h>

namespace kx
{
namespace
{

// rename() leaves an older file in place here.
std::string replaceFile(const std::wstring& from, const std::wstring& to)
{
    const DWORD error = held_files::retried([&] {
        const DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
        return MoveFileExW(from.c_str(), to.c_str(), flags) ? DWORD(ERROR_SUCCESS) : GetLastError();
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
    const std::wstring target = std::filesystem::u8path(path).wstring();
    const std::wstring temporary =
        target + L'.' + std::to_wstring(GetCurrentProcessId()) + L'-' + std::to_wstring(++number);
    std::FILE* const file = _wfopen(temporary.c_str(), L"wb");
    if (!file)
        return std::strerror(errno);
    std::string reason = fill(file, text);
    if (reason.empty())
        reason = replaceFile(temporary, target);
    if (!reason.empty())
        _wremove(temporary.c_str());
    return reason;
}

} // namespace kx
