// The half of EmulatorProcess.h that is a template.
#pragma once

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

template <typename Work>
Cost costOf(Work work)
{
    int channel[2];
    if (pipe(channel) != 0)
        std::abort();
    std::fflush(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        int count = 1;
        char name[] = "bench";
        char* arguments[] = {name, nullptr};
        QCoreApplication application(count, arguments);
        const auto begin = std::chrono::steady_clock::now();
        const bool isGood = work();
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& time) {
            return double(time.tv_sec) + double(time.tv_usec) / 1e6;
        };
        const Cost cost{wall.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
                        double(usage.ru_maxrss) / 1024};
        if (!isGood || write(channel[1], &cost, sizeof cost) != sizeof cost)
            _exit(1);
        _exit(0);
    }
    close(channel[1]);
    Cost cost;
    const bool isGood = read(channel[0], &cost, sizeof cost) == sizeof cost;
    close(channel[0]);
    waitpid(process, nullptr, 0);
    if (!isGood) {
        std::puts("the work that was to be measured failed");
        std::exit(1);
    }
    return cost;
}

} // namespace bench
