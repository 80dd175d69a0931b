// What the test's process holds of the system's, as it counts it.
#pragma once

// threadsHeld(); filesHeld(), sockets among them; socketsHeld(); residentKilobytes(); allocatedKilobytes(),
// what of them is in use (0 where a sanitizer has the memory).
#if defined(_WIN32)
#include "support/Held_windows.h"
#else
#include "support/Held_posix.h"
#endif

#include <cstddef>
#include <string>

namespace tests
{

struct Held
{
    size_t threads = threadsHeld();
    size_t files = filesHeld();

    bool isNoMoreThan(const Held& other) const { return threads <= other.threads && files <= other.files; }
    std::string text() const
    {
        return std::to_string(threads) + " threads and " + std::to_string(files) + " files";
    }
};

} // namespace tests
