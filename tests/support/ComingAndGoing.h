// Emulated cameras that are unplugged and plugged in again, on a thread of their own.
#pragma once

#include "camera_emulator/EmulatedCamera.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tests
{

class ComingAndGoing
{
public:
    // `pause`: until the next of them moves; asked on the thread, the cameras move one after the other.
    ComingAndGoing(std::vector<emu::EmulatedCamera*> cameras,
                   std::function<std::chrono::milliseconds()> pause)
        : m_cameras(std::move(cameras)), m_isThere(m_cameras.size(), true), m_pause(std::move(pause)),
          m_thread([this] { run(); })
    {}
    ~ComingAndGoing()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isOver = true;
        }
        m_wake.notify_all();
        m_thread.join();
    }

    // How often one has gone or come by now.
    unsigned moves() const { return m_moves; }

    // All are there from now on, until they may go again.
    void holdAll()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isHeld = true;
        for (size_t i = 0; i < m_cameras.size(); ++i)
            if (!m_isThere[i])
                move(i);
    }
    void letGo()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isHeld = false;
    }

private:
    void move(size_t which)
    {
        ++m_moves;
        m_isThere[which] = !m_isThere[which];
        if (m_isThere[which])
            EXPECT_TRUE(m_cameras[which]->start());
        else
            m_cameras[which]->stop();
    }

    void run()
    {
        size_t next = 0;
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_wake.wait_for(lock, m_pause(), [this] { return m_isOver; }))
            if (!m_isHeld)
                move(next++ % m_cameras.size());
    }

    const std::vector<emu::EmulatedCamera*> m_cameras;
    std::vector<bool> m_isThere;
    const std::function<std::chrono::milliseconds()> m_pause;
    std::atomic<unsigned> m_moves{0};
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_isHeld = false;
    bool m_isOver = false;
    std::thread m_thread;
};

} // namespace tests
