// What the companion's exit says. Scripts depend on the numbers.
#pragma once

#include "iefeatures/console/Verdict.h"

#include <string>

namespace companion
{

enum ExitCode
{
    ExitWell = 0,
    ExitJobFailed = 1,
    ExitUsage = 2,
    ExitNoSuchCamera = 3,
    ExitNotAllApplied = 4,
    ExitIncompatible = 5,
    ExitInputOutput = 6,
    ExitInterrupted = 130
};

// Of one camera or file; several come to what the gravest of them does.
ExitCode exitCodeOf(CameraVerdict verdict);

// The table for people, one line a code.
std::string exitCodeTable();
// Of the commands that work on an inventory.
std::string lineExitCodeTable();

} // namespace companion
