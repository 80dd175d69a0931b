// Whether what a process holds stays as it was once it had warmed up: rows of figures over a long run.
#pragma once

#include "support/Held.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace tests
{

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepsFreedMemory = true;
#else
constexpr bool kKeepsFreedMemory = false;
#endif

class Flatness
{
public:
    // Kilobytes that may come on top, of the resident memory and of what is in use of it. `settle`: for which
    // what comes and goes by itself is looked at; the least of it counts.
    Flatness(size_t resident, size_t allocated, std::chrono::milliseconds settle = {})
        : m_residentAllowance(resident), m_allocatedAllowance(allocated), m_settle(settle)
    {}

    // While the run warms up, the highest figures are what later ones must not exceed.
    void warmUp(size_t done)
    {
        const Row now = look(done);
        m_warm.held.threads = std::max(m_warm.held.threads, now.held.threads);
        m_warm.held.files = std::max(m_warm.held.files, now.held.files);
        m_warm.sockets = std::max(m_warm.sockets, now.sockets);
        m_warm.resident = std::max(m_warm.resident, now.resident);
        m_warm.allocated = std::max(m_warm.allocated, now.allocated);
    }

    void expectFlat(size_t done)
    {
        // A thread that was waited for may still be there for a moment.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        while (!Held().isNoMoreThan(m_warm.held) && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const Row now = look(done);
        EXPECT_TRUE(now.held.isNoMoreThan(m_warm.held))
            << done << ": " << now.held.text() << " instead of " << m_warm.held.text();
        EXPECT_LE(now.sockets, m_warm.sockets) << done;
        if (kKeepsFreedMemory)
            return;
        EXPECT_LE(now.resident, m_warm.resident + m_residentAllowance) << done;
        EXPECT_LE(now.allocated, m_warm.allocated + m_allocatedAllowance) << done;
    }

private:
    struct Row
    {
        Held held;
        size_t sockets = socketsHeld();
        size_t resident = residentKilobytes();
        size_t allocated = allocatedKilobytes();
    };

    Row look(size_t done) const
    {
        Row now;
        const auto end = std::chrono::steady_clock::now() + m_settle;
        while (std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            const Row next;
            now.held.threads = std::min(now.held.threads, next.held.threads);
            now.held.files = std::min(now.held.files, next.held.files);
            now.sockets = std::min(now.sockets, next.sockets);
        }
        std::printf("%6zu: %zu kB resident, %zu kB in use, %s, %zu of them sockets\n", done, now.resident,
                    now.allocated, now.held.text().c_str(), now.sockets);
        std::fflush(stdout);
        return now;
    }

    const size_t m_residentAllowance;
    const size_t m_allocatedAllowance;
    const std::chrono::milliseconds m_settle;
    Row m_warm{{0, 0}, 0, 0, 0};
};

} // namespace tests
