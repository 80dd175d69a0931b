// path_entry add|remove AllUsers|CurrentUser FOLDER: makes the folder part of the machine's or the user's
// PATH, or takes it away again. The installer's own texts are too short for what people have in PATH. 0:
// done, or nothing to do.
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

struct Path
{
    std::wstring text;
    DWORD type = REG_EXPAND_SZ; // as it was: what is between percent signs stays so
};

LSTATUS openKey(bool isForAll, HKEY& key)
{
    const wchar_t* const machine = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Environment";
    return RegOpenKeyExW(isForAll ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
                         isForAll ? machine : L"Environment", 0, KEY_READ | KEY_WRITE, &key);
}

LSTATUS read(HKEY key, Path& path)
{
    DWORD size = 0;
    const LSTATUS status = RegQueryValueExW(key, L"Path", nullptr, &path.type, nullptr, &size);
    if (status == ERROR_FILE_NOT_FOUND)
        return ERROR_SUCCESS; // nobody has set one
    if (status != ERROR_SUCCESS || (path.type != REG_SZ && path.type != REG_EXPAND_SZ))
        return ERROR_INVALID_DATA;
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1);
    const LSTATUS result =
        RegQueryValueExW(key, L"Path", nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &size);
    path.text = text.data();
    return result;
}

LSTATUS write(HKEY key, const Path& path)
{
    const DWORD size = static_cast<DWORD>((path.text.size() + 1) * sizeof(wchar_t));
    return RegSetValueExW(key, L"Path", 0, path.type, reinterpret_cast<const BYTE*>(path.text.c_str()), size);
}

// Where the folder stands among the entries, with the semicolon in front of it or behind; npos: it does not.
size_t placeOf(const std::wstring& folder, const std::wstring& path, size_t& length)
{
    for (size_t begin = 0; begin < path.size();) {
        const size_t end = std::min(path.find(L';', begin), path.size());
        const std::wstring entry = path.substr(begin, end - begin);
        if (_wcsicmp(entry.c_str(), folder.c_str()) == 0) {
            const size_t first = begin == 0 ? 0 : begin - 1;
            length = end - first + (begin == 0 && end < path.size() ? 1 : 0);
            return first;
        }
        begin = end + 1;
    }
    return std::wstring::npos;
}

bool change(std::wstring& path, bool isAdded, const std::wstring& folder)
{
    size_t length = 0;
    const size_t place = placeOf(folder, path, length);
    if (isAdded == (place != std::wstring::npos))
        return false;
    if (isAdded)
        path += (path.empty() ? L"" : L";") + folder;
    else
        path.erase(place, length);
    return true;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc != 4)
        return 2;
    const bool isAdded = std::wstring(argv[1]) == L"add";
    HKEY key = nullptr;
    Path path;
    if (openKey(std::wstring(argv[2]) == L"AllUsers", key) != ERROR_SUCCESS ||
        read(key, path) != ERROR_SUCCESS)
        return 1;
    if (!change(path.text, isAdded, argv[3]))
        return 0;
    if (write(key, path) != ERROR_SUCCESS)
        return 1;
    DWORD_PTR ignored = 0;
    SendMessageTimeoutW(HWND_BROADCAST, WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(L"Environment"),
                        SMTO_ABORTIFHUNG, 2000, &ignored);
    return 0;
}
