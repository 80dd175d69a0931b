#include "camera_emulator/NewCamera.h"

#include "camera_emulator/EmulatedCamera.h"
#include "camera_emulator/GrabberCamera.h"
#include "camera_emulator/SerialCamera.h"

namespace emu
{

std::unique_ptr<Shell> newCamera(const CameraOptions& wanted)
{
    if (!wanted.serial.link.empty())
        return std::make_unique<SerialCamera>(wanted.config, wanted.serial);
    if (!wanted.grabber.socket.empty())
        return std::make_unique<GrabberCamera>(wanted.config, wanted.grabber);
    return std::make_unique<EmulatedCamera>(wanted.config);
}

} // namespace emu
