// Which port a device record asks for: the one place that knows all transports.
#pragma once

#include "KXCameraControl/ports/Port.h"

#include <functional>
#include <memory>

namespace kx
{

// Null for a transport that this build has no port for.
std::unique_ptr<Port> makePort(const KX_DeviceInfo& device);

// Where the ports of new handles come from: makePort(), unless a test says otherwise.
using PortFactory = std::function<std::unique_ptr<Port>(const KX_DeviceInfo&)>;
void setPortFactory(PortFactory factory); // empty: makePort() again
std::unique_ptr<Port> newPort(const KX_DeviceInfo& device);

} // namespace kx
