#include "iefeatures/commands/Command.h"

#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/OperatingSystem.h"

#include <iostream>

namespace companion
{

std::optional<std::string> askOnTerminal(Console& console, const std::string& question)
{
    if (!isTerminal(StandardStream::Input) || !isTerminal(StandardStream::Error))
        return {};
    console.err(question);
    std::string answer;
    if (awaitInput([] { return !Interrupt::isRequested(); }))
        std::getline(std::cin, answer);
    return answer;
}

void tellSearchFailure(Console& console, KX_Status status)
{
    console.err(QString("Cameras cannot be looked for: %1 [0x%2]\n")
                    .arg(KX_CC_StatusText(status))
                    .arg(status, 8, 16, QLatin1Char('0')));
}

} // namespace companion
