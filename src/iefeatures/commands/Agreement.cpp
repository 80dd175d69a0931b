#include "iefeatures/commands/Agreement.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"

namespace companion
{

int askForAgreement(World& world, const QString& question)
{
    if (Interrupt::isRequested())
        return ExitInterrupted;
    const std::optional<std::string> answer = world.ask(world.console, (question + " [y/N] ").toStdString());
    if (!answer) {
        world.console.err(std::string("There is no terminal to ask on; --yes goes on without.\n"));
        return ExitUsage;
    }
    const bool isYes = *answer == "y" || *answer == "Y" || *answer == "yes";
    if (!isYes)
        world.console.err(std::string("Nothing was written.\n"));
    return Interrupt::isRequested() ? ExitInterrupted : isYes ? ExitWell : ExitJobFailed;
}

} // namespace companion
