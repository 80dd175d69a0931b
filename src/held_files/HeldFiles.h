// Windows: files that another program has open. C++17 only.
#pragma once

#include <windows.h>

namespace held_files
{

constexpr int kAttempts = 4;
constexpr DWORD kPauseMs = 350;

// Calls `attempt`, which gives 0 or the system's error, and again while the error says that the file is held:
// who scans or indexes new files holds them for a moment. Three times more at most, over about a second.
// Gives what the last call gave.
template <typename Attempt>
DWORD retried(Attempt attempt)
{
    DWORD error = attempt();
    for (int i = 1; i < kAttempts && (error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED);
         ++i) {
        Sleep(kPauseMs);
        error = attempt();
    }
    return error;
}

} // namespace held_files
