// What the test of the programs cannot do from outside of Windows.
//
//   stage_hand ask WORD            asks every running camera_emulator by its event; 1 when there is none
//   stage_hand hold FILE MS        has the file open, for nobody else, for so long; says "held" when it has
//   it
//   stage_hand code-page           prints the number of the system's 8-bit encoding
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

#include <tlhelp32.h>

namespace
{

bool raise(const std::wstring& name)
{
    const HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, name.c_str());
    return event && SetEvent(event);
}

int ask(const std::wstring& word)
{
    int asked = 0;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry;
    entry.dwSize = sizeof entry;
    for (BOOL found = Process32FirstW(snapshot, &entry); found; found = Process32NextW(snapshot, &entry))
        if (wcscmp(entry.szExeFile, L"camera_emulator.exe") == 0)
            asked += raise(L"camera_emulator." + std::to_wstring(entry.th32ProcessID) + L"." + word);
    CloseHandle(snapshot);
    return asked > 0 ? 0 : 1;
}

int hold(const wchar_t* path, DWORD milliseconds)
{
    const HANDLE file =
        CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    std::puts("held");
    std::fflush(stdout);
    Sleep(milliseconds);
    CloseHandle(file);
    return 0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc == 3 && wcscmp(argv[1], L"ask") == 0)
        return ask(argv[2]);
    if (argc == 4 && wcscmp(argv[1], L"hold") == 0)
        return hold(argv[2], static_cast<DWORD>(wcstoul(argv[3], nullptr, 10)));
    if (argc == 2 && wcscmp(argv[1], L"code-page") == 0)
        return std::printf("%u\n", GetACP()) > 0 ? 0 : 1;
    return 2;
}
