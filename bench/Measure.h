// Times of whole pieces of work, as medians: the machines that run this are shared and noisy.
#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench
{

// Median of `runs` times of `work`, in seconds, after one run that warms up; `prepare` goes before each run
// and is not counted.
template <typename Prepare, typename Work>
double medianSecondsAfter(Prepare prepare, Work work, int runs = 5)
{
    std::vector<double> times;
    for (int run = 0; run <= runs; ++run) {
        prepare();
        const auto begin = std::chrono::steady_clock::now();
        work();
        if (run > 0)
            times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

template <typename Work>
double medianSeconds(Work work, int runs = 5)
{
    return medianSecondsAfter([] {}, work, runs);
}

} // namespace bench
