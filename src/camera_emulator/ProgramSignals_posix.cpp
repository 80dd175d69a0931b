#include "camera_emulator/ProgramSignals.h"

#include <csignal>

namespace emu
{

struct ProgramSignals::State
{
    sigset_t signals;
};

// Blocked before any thread starts, so that sigwait() alone sees them.
ProgramSignals::ProgramSignals() : m_state(std::make_unique<State>())
{
    sigset_t& signals = m_state->signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

ProgramSignals::~ProgramSignals() = default;

Request ProgramSignals::wait()
{
    int signal = 0;
    return sigwait(&m_state->signals, &signal) == 0 && signal == SIGUSR1 ? Request::Change : Request::End;
}

std::vector<std::string> programArguments(int argc, char** argv)
{
    return {argv + 1, argv + argc};
}

void prepareOutput() {}

} // namespace emu
