#include "iefeatures/console/Terminal.h"

#include <csignal>
#include <cstdlib>
#include <cstring>

#if defined(_WIN32)
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
    static_cast<void>(stream);
#endif
    return size;
}

bool wantsColour()
{
    const char* refusal = std::getenv("NO_COLOR");
    return !refusal || *refusal == '\0';
}

void ignoreBrokenPipes()
{
#if !defined(_WIN32)
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

} // namespace companion
