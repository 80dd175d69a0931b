// The thread that keeps control of a camera alive.
#include "KXCameraControl/ports/ControlThread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <thread>

TEST(ControlThread, BeatsOnWhereABeatHasFoundNoMemory)
{
    kx::ControlThread control;
    std::atomic<int> beats{0};
    control.start(
        std::chrono::milliseconds(1),
        [&beats] {
            ++beats;
            throw std::bad_alloc();
        },
        [](KX_Status) { ADD_FAILURE() << "nothing was lost"; });
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (beats < 3 && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    control.stop();
    EXPECT_GE(beats, 3);
}
