// What is asked of the running program from outside.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace emu
{

enum class Request
{
    Change, // the cameras' settings, by their files
    End
};

// To be made before any other thread, and once.
//
// POSIX systems: SIGUSR1 asks for changes, SIGINT and SIGTERM for the end. Windows: the named events
// "camera_emulator.PID.change" and "camera_emulator.PID.end" do (PID: the process's number, decimal), and
// Ctrl-C, Ctrl-Break and the console's closing ask for the end.
class ProgramSignals
{
public:
    ProgramSignals();
    ~ProgramSignals();
    ProgramSignals(const ProgramSignals&) = delete;
    ProgramSignals& operator=(const ProgramSignals&) = delete;

    // Blocks until the next one.
    Request wait();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

// The arguments without the program's name; in UTF-8 on Windows, as they are elsewhere.
std::vector<std::string> programArguments(int argc, char** argv);

// Lines that are printed end with line feeds from now on, on Windows too.
void prepareOutput();

} // namespace emu
