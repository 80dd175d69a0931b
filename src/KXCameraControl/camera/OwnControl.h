// The cameras that this process controls. A camera's control register tells that somebody controls it, not
// who: without this a program would meet the cameras of its own running jobs as taken.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>

namespace kx
{

class OwnControl
{
public:
    using Clock = std::chrono::steady_clock;

    explicit OwnControl(const KX_DeviceInfo& device) : m_device(device) {}
    ~OwnControl() { release(); }
    OwnControl(const OwnControl&) = delete;
    OwnControl& operator=(const OwnControl&) = delete;

    void take();
    // Once for each take(); does nothing otherwise.
    void release();

    // Whether a camera was controlled here at `start` or at any time after it.
    static bool hasBeenSince(const KX_DeviceInfo& device, Clock::time_point start);

private:
    const KX_DeviceInfo& m_device;
    bool m_taken = false;
};

} // namespace kx
