// USB3 Vision cameras of this machine.
#pragma once

#include "KXCameraControl/ports/Transport.h"

namespace kx
{

// Cameras are found by what their interfaces say they are; KX_CAMERA_USB=none: none are looked for, and none
// opened. To see whether a camera is free its control interface is claimed for a moment.
Transport usb3Transport();

} // namespace kx
