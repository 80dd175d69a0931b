#include "camera_emulator/ProgramSignals.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cstdio>

#include <fcntl.h>
#include <io.h>

namespace emu
{
namespace
{

// The console's handler knows no object of ours; it lives as long as the process.
HANDLE g_end = nullptr;

HANDLE eventOf(const wchar_t* name)
{
    const std::wstring whole = L"camera_emulator." + std::to_wstring(GetCurrentProcessId()) + L"." + name;
    return CreateEventW(nullptr, FALSE, FALSE, whole.c_str());
}

// On a thread of its own; where the console closes, the process ends when this returns.
BOOL WINAPI askForTheEnd(DWORD event)
{
    SetEvent(g_end);
    if (event == CTRL_CLOSE_EVENT)
        Sleep(INFINITE); // until main() has returned
    return TRUE;
}

std::string utf8Of(const wchar_t* text)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(std::max(size, 1)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    utf8.resize(utf8.size() - 1);
    return utf8;
}

} // namespace

struct ProgramSignals::State
{
    HANDLE change = eventOf(L"change");
};

ProgramSignals::ProgramSignals() : m_state(std::make_unique<State>())
{
    g_end = eventOf(L"end");
    SetConsoleCtrlHandler(askForTheEnd, TRUE);
}

ProgramSignals::~ProgramSignals()
{
    CloseHandle(m_state->change);
}

Request ProgramSignals::wait()
{
    const HANDLE events[] = {g_end, m_state->change};
    const DWORD which = WaitForMultipleObjects(2, events, FALSE, INFINITE);
    return which == WAIT_OBJECT_0 + 1 ? Request::Change : Request::End;
}

std::vector<std::string> programArguments(int, char**)
{
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; words && i < count; ++i)
        arguments.push_back(utf8Of(words[i]));
    LocalFree(words);
    return arguments;
}

void prepareOutput()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
}

} // namespace emu
