// The one question before something is written.
#pragma once

#include "iefeatures/commands/Command.h"

#include <QString>

namespace companion
{

// Puts "<question> [y/N] ". ExitWell: the person said yes. ExitUsage: there is nobody to ask; ExitJobFailed:
// no; ExitInterrupted. What is not written then is told. Blocks until there is an answer.
int askForAgreement(World& world, const QString& question);

} // namespace companion
