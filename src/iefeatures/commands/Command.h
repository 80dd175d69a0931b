// One command of the companion.
#pragma once

#include "iefeatures/cameras/Controller.h"
#include "iefeatures/console/Console.h"

#include <functional>
#include <optional>
#include <string>

namespace CLI
{
class App;
}

namespace companion
{

// Puts a question to the person at the terminal and gives the line that is typed; nothing when nobody can be
// asked. Blocks until then, or until an interrupt (Interrupt.h), which counts as an empty line.
using Ask = std::function<std::optional<std::string>(Console& console, const std::string& question)>;
std::optional<std::string> askOnTerminal(Console& console, const std::string& question);

// What commands reach the world through.
struct World
{
    Console& console;
    Enumerate enumerate = enumerateCameras;
    Ask ask = askOnTerminal;
    std::function<QString(const ListedCamera& camera)> controller = controllerOf;
};

class Command
{
public:
    virtual ~Command() = default;

    virtual const char* name() const = 0;
    virtual const char* summary() const = 0;
    // The options write into the command, which must outlive the parser.
    virtual void addOptions(CLI::App& app) = 0;
    // Gives an ExitCode. Blocks until the work is done; jobs need a QCoreApplication.
    virtual int execute(World& world) = 0;
};

void tellSearchFailure(Console& console, KX_Status status);

} // namespace companion
