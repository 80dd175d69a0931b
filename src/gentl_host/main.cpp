// ie_gentl_host LIBRARY: serves one GenTL producer, or a grabber's serial library, to the camera library
// (gentl/HostProtocol.h). Started by that alone.
#include "gentl_host/ResidentMemory.h"
#include "gentl_host/Session.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace
{

using namespace gentl_host;

constexpr std::chrono::milliseconds kMemoryInterval{100};
constexpr long kUsualLimit = 1024; // MB
constexpr unsigned kLastSeconds = 2;

std::atomic<int> sessions{0};

// In KiB.
long memoryLimit()
{
    const char* setting = std::getenv("KX_GENTL_MEMORY");
    const long given = setting ? std::strtol(setting, nullptr, 10) : 0;
    return (given > 0 ? given : kUsualLimit) * 1024;
}

// Should all memory of the machine be used up before the limit is seen, this process goes first.
void volunteer()
{
    std::ofstream("/proc/self/oom_score_adj") << 1000;
}

void connect(Loaded& loaded, std::vector<Channel>& ends)
{
    if (ends.empty())
        return;
    Channel loss = ends.size() > 1 ? std::move(ends[1]) : Channel();
    ++sessions;
    std::thread([&loaded, requests = std::move(ends[0]), loss = std::move(loss)]() mutable {
        Session(loaded, std::move(requests), std::move(loss)).run();
        --sessions;
    }).detach();
}

// The library is gone, by its own will or not. What the producer has open is given back if it can be.
[[noreturn]] void leave(Modules& modules)
{
    ::alarm(kLastSeconds);
    while (sessions > 0) // they close their devices
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    modules.closeAll();
    std::_Exit(ExitDone);
}

[[noreturn]] void serve(Loaded& loaded, Channel control)
{
    const long limit = memoryLimit();
    for (;;) {
        Bytes message;
        std::vector<Channel> ends;
        const auto outcome = control.receive(message, Channel::Clock::now() + kMemoryInterval, &ends);
        if (residentMemory() > limit)
            std::_Exit(ExitMemory);
        if (outcome == Channel::Outcome::Gone)
            leave(loaded.modules);
        if (outcome == Channel::Outcome::Done)
            connect(loaded, ends);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || ::fcntl(kControlDescriptor, F_GETFD) < 0) {
        std::fprintf(stderr, "ie_gentl_host is started by the camera library.\n");
        return ExitUsage;
    }
    ::fcntl(kControlDescriptor, F_SETFD, FD_CLOEXEC); // producers start programs too
    volunteer();
    static Loaded loaded(argv[1]); // sessions outlive main
    serve(loaded, Channel(kControlDescriptor));
}
