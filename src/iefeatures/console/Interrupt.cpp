#include "iefeatures/console/Interrupt.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/UnfinishedFolder.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

namespace companion
{
namespace
{

std::atomic<bool> g_isRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler uses it");

} // namespace

// C linkage is what signal() asks for; nothing here but what a handler may do.
extern "C" void rememberInterrupt(int)
{
    if (!g_isRequested.exchange(true))
        return;
    UnfinishedFolder::removeAll();
    std::_Exit(ExitInterrupted);
}

Interrupt::Interrupt()
{
    g_isRequested = false;
    m_previousInterrupt = std::signal(SIGINT, rememberInterrupt);
    // A shell starts background jobs so; the terminal's Ctrl-C is not meant for them.
    if (m_previousInterrupt == SIG_IGN)
        std::signal(SIGINT, SIG_IGN);
    m_previousEnd = std::signal(SIGTERM, rememberInterrupt);
#if defined(SIGHUP)
    // The terminal has gone; nohup says that this is nothing to end for.
    m_previousHangUp = std::signal(SIGHUP, rememberInterrupt);
    if (m_previousHangUp == SIG_IGN)
        std::signal(SIGHUP, SIG_IGN);
#endif
    onConsoleEvent(rememberInterrupt);
}

Interrupt::~Interrupt()
{
    onConsoleEvent(nullptr);
    std::signal(SIGINT, m_previousInterrupt);
    std::signal(SIGTERM, m_previousEnd);
#if defined(SIGHUP)
    std::signal(SIGHUP, m_previousHangUp);
#endif
}

bool Interrupt::isRequested()
{
    return g_isRequested;
}

} // namespace companion
