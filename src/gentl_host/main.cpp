// ie_gentl_host LIBRARY: serves one GenTL producer, or a grabber's serial library, to the camera library
// (gentl/HostProtocol.h). Started by that alone.
#include "gentl_host/OwnProcess.h"
#include "gentl_host/ResidentMemory.h"
#include "gentl_host/Session.h"

#include <cstdio>
#include <cstdlib>

namespace
{

using namespace gentl_host;

constexpr std::chrono::milliseconds kMemoryInterval{100};
constexpr int64_t kUsualLimit = 1024; // MB
constexpr unsigned kLastSeconds = 2;

std::atomic<int> sessions{0};

// In KiB.
int64_t memoryLimit()
{
    const char* setting = std::getenv("KX_GENTL_MEMORY");
    const int64_t given = setting ? std::strtoll(setting, nullptr, 10) : 0;
    return (given > 0 ? given : kUsualLimit) * 1024;
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
    endWithin(kLastSeconds);
    while (sessions > 0) // they close their devices
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    modules.closeAll();
    std::_Exit(ExitDone);
}

[[noreturn]] void serve(Loaded& loaded, Channel control)
{
    const int64_t limit = memoryLimit();
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
    const std::string library = libraryArgument(argc, argv);
    Channel control = controlChannel();
    if (library.empty() || !control.isOpen()) {
        std::fprintf(stderr, "ie_gentl_host is started by the camera library.\n");
        return ExitUsage;
    }
    volunteer();
    static Loaded loaded(library); // sessions outlive main
    serve(loaded, std::move(control));
}
