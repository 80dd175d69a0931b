#include "camera_emulator/EmulatedCamera.h"
#include "camera_emulator/NewCamera.h"

namespace emu
{

std::unique_ptr<Shell> newCamera(const CameraOptions& wanted)
{
    if (!wanted.serial.link.empty() || !wanted.grabber.socket.empty())
        return nullptr;
    return std::make_unique<EmulatedCamera>(wanted.config);
}

} // namespace emu
