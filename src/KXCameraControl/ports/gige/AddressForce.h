// Giving a GigE Vision camera another address from outside.
#pragma once

#include "KXCameraControl/ports/Transport.h"

namespace kx
{

// What KX_CC_ForceIp promises of a camera that nobody controls. Thread-safe; blocks for up to 6 s.
KX_Status forceGigeIp(const KX_DeviceInfo& device, const IpSettings& wanted);

} // namespace kx
