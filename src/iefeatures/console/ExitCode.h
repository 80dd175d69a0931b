// What the companion's exit says. Scripts depend on the numbers.
#pragma once

#include <string>
#include <vector>

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

// What several cameras come to together: interrupted, job failed, input or output, incompatible, not all
// applied, well.
int gravestExitCode(const std::vector<int>& codes);

// The table for people, one line a code.
std::string exitCodeTable();

} // namespace companion
