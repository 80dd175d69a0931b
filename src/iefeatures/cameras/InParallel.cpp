#include "iefeatures/cameras/InParallel.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace companion
{

void inParallel(size_t count, const std::function<void(size_t)>& work)
{
    std::atomic<size_t> next{0};
    std::mutex mutex;
    std::exception_ptr failure;
    const auto takeTurns = [&] {
        try {
            for (size_t i = next++; i < count; i = next++)
                work(i);
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex);
            failure = std::current_exception();
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(std::min<size_t>(count, VELAInterface::toolsSupportNum()));
    try {
        while (threads.size() < threads.capacity())
            threads.emplace_back(takeTurns);
    } catch (...) { // the system gives no more of them
        takeTurns();
    }
    for (std::thread& thread : threads)
        thread.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace companion
