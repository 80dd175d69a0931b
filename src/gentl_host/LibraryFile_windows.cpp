#include "gentl_host/LibraryFile.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

namespace gentl_host
{

// With the libraries that lie beside it. Whatever it lacks is told by the system's error, and by no window.
std::string LibraryFile::open(const std::string& path)
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX | SEM_NOGPFAULTERRORBOX);
    const std::filesystem::path file = std::filesystem::u8path(path);
    m_library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (m_library)
        return {};
    return "it cannot be loaded: " + std::system_category().message(static_cast<int>(GetLastError()));
}

void* LibraryFile::address(const char* name) const
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_library), name));
}

} // namespace gentl_host
