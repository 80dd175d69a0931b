// A camera that leaves in the middle of what is done with it.
#pragma once

#include "camera_emulator/EmulatedCamera.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace tests
{

// Stops the camera as soon as that is so.
class Cable
{
public:
    Cable(emu::Shell& camera, std::function<bool()> isTime)
        : Cable(std::move(isTime), [&camera] { camera.stop(); })
    {}
    // Whatever else may happen to it.
    Cable(std::function<bool()> isTime, std::function<void()> happen)
        : m_thread([this, isTime = std::move(isTime), happen = std::move(happen)] {
              while (!m_isOver && !isTime())
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              happen();
          })
    {}
    ~Cable()
    {
        m_isOver = true;
        m_thread.join();
    }
    Cable(const Cable&) = delete;
    Cable& operator=(const Cable&) = delete;

private:
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

// After so many requests it answers no more, and is gone soon.
inline std::function<bool()> afterRequests(emu::Shell& camera, uint64_t count)
{
    emu::Faults faults;
    faults.silence = emu::Silence{static_cast<unsigned>(count), std::nullopt};
    camera.setFaults(faults);
    return
        [&camera, end = camera.counters().requests() + count] { return camera.counters().requests() >= end; };
}

// An import has set it.
inline std::function<bool()> whenHeightIs(const emu::Shell& camera, int64_t height)
{
    return [&camera, height] { return camera.node("Height") == emu::NodeValue(height); };
}

} // namespace tests
