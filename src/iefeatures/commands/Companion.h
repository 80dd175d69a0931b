// The program without its main(): finds the command that the arguments name and runs it.
#pragma once

#include "iefeatures/commands/Command.h"

#include <string>
#include <vector>

namespace companion
{

// Gives an ExitCode. `arguments` in UTF-8, without the program's name. Needs a QCoreApplication.
int runCompanion(const std::vector<std::string>& arguments, World world);

} // namespace companion
