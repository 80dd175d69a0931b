// What the tests of the programs cannot do from outside of Windows.
//
//   stage_hand ask WORD            asks every running camera_emulator by its event; 1 when there is none
//   stage_hand hold FILE MS        has the file open, for nobody else, for so long; says "held" when it has
//   it
//   stage_hand code-page           prints the number of the system's 8-bit encoding
//   stage_hand window DO TITLE     DO: look (prints "hidden", "minimised" or "shown"), popup (prints "open"
//   when
//                                  it has a window of its own open, else "none"), minimise, close;
//                                  1 when no window has the title
//   stage_hand crash PROGRAM.exe   lets every running copy run into an exception; 1 when there is none
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <functional>
#include <string>

#include <tlhelp32.h>

namespace
{

int forEach(const wchar_t* program, const std::function<bool(DWORD process)>& action)
{
    int done = 0;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry;
    entry.dwSize = sizeof entry;
    for (BOOL found = Process32FirstW(snapshot, &entry); found; found = Process32NextW(snapshot, &entry))
        if (wcscmp(entry.szExeFile, program) == 0)
            done += action(entry.th32ProcessID);
    CloseHandle(snapshot);
    return done > 0 ? 0 : 1;
}

bool raise(const std::wstring& name)
{
    const HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, name.c_str());
    return event && SetEvent(event);
}

int ask(const std::wstring& word)
{
    return forEach(L"camera_emulator.exe", [&word](DWORD process) {
        return raise(L"camera_emulator." + std::to_wstring(process) + L"." + word);
    });
}

struct Others
{
    HWND window;
    bool areThere;
};

BOOL CALLBACK lookAtOther(HWND window, LPARAM parameter)
{
    auto* const others = reinterpret_cast<Others*>(parameter);
    DWORD process = 0;
    DWORD wanted = 0;
    GetWindowThreadProcessId(window, &process);
    GetWindowThreadProcessId(others->window, &wanted);
    others->areThere |= process == wanted && window != others->window && IsWindowVisible(window);
    return TRUE;
}

bool hasOthersBesides(HWND window)
{
    Others others{window, false};
    EnumWindows(lookAtOther, reinterpret_cast<LPARAM>(&others));
    return others.areThere;
}

int doWithWindow(const std::wstring& what, const wchar_t* title)
{
    const HWND window = FindWindowW(nullptr, title);
    if (!window)
        return 1;
    if (what == L"minimise")
        return ShowWindow(window, SW_MINIMIZE) ? 0 : 2;
    if (what == L"close")
        return PostMessageW(window, WM_CLOSE, 0, 0) ? 0 : 2;
    if (what == L"popup")
        return std::puts(hasOthersBesides(window) ? "open" : "none") < 0;
    std::puts(!IsWindowVisible(window) ? "hidden" : IsIconic(window) ? "minimised" : "shown");
    return 0;
}

// A thread that begins where nothing is.
int crash(const wchar_t* program)
{
    return forEach(program, [](DWORD id) {
        const HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, id);
        return process && CreateRemoteThread(process, nullptr, 0, nullptr, nullptr, 0, nullptr);
    });
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
    if (argc == 4 && wcscmp(argv[1], L"window") == 0)
        return doWithWindow(argv[2], argv[3]);
    if (argc == 3 && wcscmp(argv[1], L"crash") == 0)
        return crash(argv[2]);
    return 2;
}
