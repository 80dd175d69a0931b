// A fresh address of 127.0.0.0/8 for every emulated camera of a test, so that all tests run in parallel.
#pragma once

#include <unistd.h>

#include <atomic>
#include <string>

namespace tests
{

// Unique within the process, and among processes as long as their ids differ in the lower bits. At most 254
// per process. 127.0.0.0/16 stays free for people.
inline std::string freshLoopbackAddress()
{
    static std::atomic<unsigned> used{0};
    const auto process = static_cast<unsigned>(getpid());
    return "127." + std::to_string(1 + process / 254 % 254) + "." + std::to_string(1 + process % 254) + "." +
           std::to_string(1 + used++ % 254);
}

} // namespace tests
