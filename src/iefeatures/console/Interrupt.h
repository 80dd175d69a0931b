// Ctrl-C and the request to end, taken as a wish: the work in hand is ended properly.
#pragma once

namespace companion
{

// While one lives, the first SIGINT, SIGTERM or SIGHUP is remembered and the second ends the process at once
// with exit code 130. On Windows the console's events (onConsoleEvent()) are taken so as well. One at a time.
class Interrupt
{
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // From any thread.
    static bool isRequested();

private:
    using Handler = void (*)(int);
    Handler m_previousInterrupt;
    Handler m_previousEnd;
    Handler m_previousHangUp = nullptr;
};

} // namespace companion
