// Who is there, over all transports. Takes control of nothing.
#pragma once

#include "KXCameraControl/ports/Transport.h"

#include <vector>

namespace kx
{

// What KX_CC_EnumDevices promises: the cameras of the transports in the mask, in its order. The transports
// are searched at the same time, each for as long as it takes; what one of them fails with counts only when
// no other found a camera. Thread-safe.
KX_Status enumerateDevices(uint32_t transportMask, std::vector<KX_DeviceEntry>& entries);

// What KX_CC_IsDeviceAccessible promises. KX_E_NOT_SUPPORTED: the transport. Thread-safe.
KX_Status deviceAvailability(const KX_DeviceInfo& device, uint32_t& availability);

// What KX_CC_GetController promises. KX_E_NOT_SUPPORTED: the transport. Thread-safe.
KX_Status controllerOf(const KX_DeviceInfo& device, KX_Controller& controller);

// What KX_CC_ForceIp promises, of an address that a host can have. Thread-safe.
KX_Status forceIp(const KX_DeviceInfo& device, const IpSettings& wanted);

} // namespace kx
