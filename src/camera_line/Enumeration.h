// Asks the camera library who is there.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <vector>

namespace camera_line
{

// All cameras that answer on `transports` (KX_TRANSPORT_ bits), in the library's order, however many. Blocks
// for the discovery window; any thread. On a failure (the library's status) `entries` is empty.
KX_Status enumerateCameras(uint32_t transports, std::vector<KX_DeviceEntry>& entries);

} // namespace camera_line
