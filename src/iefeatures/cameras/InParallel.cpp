#include "iefeatures/cameras/InParallel.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace companion
{

void inParallel(size_t count, const std::function<void(size_t)>& work)
{
    std::atomic<size_t> next{0};
    const auto takeTurns = [&] {
        for (size_t i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> threads;
    for (size_t i = 0; i < std::min<size_t>(count, VELAInterface::toolsSupportNum()); ++i)
        threads.emplace_back(takeTurns);
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace companion
