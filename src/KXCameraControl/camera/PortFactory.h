// Which port a device record asks for: the one place that knows all transports.
#pragma once

#include "KXCameraControl/ports/Port.h"

#include <memory>

namespace kx
{

// Null for a transport that this build has no port for.
std::unique_ptr<Port> makePort(const KX_DeviceInfo& device);

} // namespace kx
