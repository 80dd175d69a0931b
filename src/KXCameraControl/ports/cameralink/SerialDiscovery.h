// Cameras behind the serial lines that KX_CAMERA_SERIAL_PORTS names (paths, comma-separated). No other line
// is ever touched.
#pragma once

#include "KXCameraControl/ports/Transport.h"

namespace kx
{

// Looks at all lines at the same time; blocks for up to about 1.5 s while a line has no camera. A line
// without one gives no entry; one that somebody uses gives an entry with what was last seen behind it.
Transport serialTransport();

} // namespace kx
