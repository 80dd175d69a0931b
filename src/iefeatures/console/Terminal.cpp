#include "iefeatures/console/Terminal.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#if defined(_WIN32)
#include <windows.h>

#include <fcntl.h>
#include <io.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace companion
{
namespace
{

bool isDumb()
{
    const char* kind = std::getenv("TERM");
    return kind && std::strcmp(kind, "dumb") == 0;
}

} // namespace

bool isTerminal(StandardStream stream)
{
#if defined(_WIN32)
    return _isatty(static_cast<int>(stream)) && !isDumb();
#else
    return isatty(static_cast<int>(stream)) && !isDumb();
#endif
}

TerminalSize terminalSize(StandardStream stream)
{
    TerminalSize size;
#if !defined(_WIN32)
    winsize window{};
    if (ioctl(static_cast<int>(stream), TIOCGWINSZ, &window) == 0 && window.ws_col > 0 && window.ws_row > 0)
        size = {window.ws_col, window.ws_row};
#else
    const HANDLE console =
        GetStdHandle(stream == StandardStream::Error ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO about;
    if (GetConsoleScreenBufferInfo(console, &about)) {
        size.columns = about.srWindow.Right - about.srWindow.Left + 1;
        size.rows = about.srWindow.Bottom - about.srWindow.Top + 1;
    }
#endif
    return size;
}

bool wantsColour()
{
    const char* refusal = std::getenv("NO_COLOR");
    return !refusal || *refusal == '\0';
}

void prepareOutput()
{
#if defined(_WIN32)
    _setmode(static_cast<int>(StandardStream::Output), _O_BINARY);
    _setmode(static_cast<int>(StandardStream::Error), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
    for (const DWORD stream : {STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        DWORD mode = 0;
        const HANDLE console = GetStdHandle(stream);
        if (GetConsoleMode(console, &mode))
            SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    }
#endif
}

void ignoreBrokenPipes()
{
#if !defined(_WIN32)
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

} // namespace companion
