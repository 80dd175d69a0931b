// Cameras behind the serial lines that KX_CAMERA_SERIAL_PORTS names, and behind the ports of the serial
// libraries in the folders of CLSERIALPATH. No other line is ever touched, and no other library loaded.
#pragma once

#include "KXCameraControl/ports/Transport.h"

namespace kx
{

// Looks at all lines at the same time; blocks for up to about 1.5 s while a line has no camera. A line
// without one gives no entry; one that somebody uses gives an entry with what was last seen behind it.
Transport serialTransport();

} // namespace kx
