// Emulated cameras in a process of their own, so that time and memory measured in this one are the program's
// alone.
#pragma once

#include "camera_emulator/EmulatedCamera.h"

#include <KXCameraControl/KXCameraControl.h>

#include <string>
#include <sys/types.h>
#include <vector>

namespace bench
{

// The record that discovery would give for an emulated camera.
KX_DeviceInfo deviceInfo(const emu::CameraConfig& camera);

class EmulatorProcess
{
public:
    // To be made before this process has threads. Ends the program when the cameras do not start.
    explicit EmulatorProcess(const std::vector<emu::CameraConfig>& cameras);
    ~EmulatorProcess();
    EmulatorProcess(const EmulatorProcess&) = delete;
    EmulatorProcess& operator=(const EmulatorProcess&) = delete;

    // What the cameras were asked since the last call, all together.
    emu::Counters takeCounters();

private:
    pid_t m_process = -1;
    int m_toCameras = -1;
    int m_fromCameras = -1;
};

// What a piece of work costs a process that does nothing else.
struct Cost
{
    double seconds = 0;
    double processorSeconds = 0;
    double peakMegabytes = 0;
};

// Does the work in a process of its own, with a QCoreApplication. Ends the program when it returns false.
template <typename Work>
Cost costOf(Work work);

} // namespace bench

#include "EmulatorProcess_Cost.h"
