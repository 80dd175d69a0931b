// Who is there. Takes control of nothing.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <vector>

namespace kx
{

// What KX_CC_EnumDevices promises: the cameras of the transports in the mask, in its order, found in the
// places that SearchPlaces.h tells. A camera's address is the one that it answered from. Blocks for up to 400 ms where a network is searched (less when only single addresses are
// asked and all answer), and for up to three tries of 200 ms more when a camera that was found does not tell
// whether it is in use. KX_E_NETWORK: no socket could be opened. Thread-safe.
KX_Status enumerateDevices(uint32_t transportMask, std::vector<KX_DeviceEntry>& entries);

// What KX_CC_IsDeviceAccessible promises; blocks for up to three tries of 200 ms. KX_E_NOT_SUPPORTED: the
// transport. KX_E_NETWORK: no socket could be opened. Thread-safe.
KX_Status deviceAvailability(const KX_DeviceInfo& device, uint32_t& availability);

// What KX_CC_GetController promises; blocks for up to twice three tries of 200 ms. KX_E_NOT_SUPPORTED: the
// transport. KX_E_NETWORK: no socket could be opened. Thread-safe.
KX_Status controllerOf(const KX_DeviceInfo& device, KX_Controller& controller);

} // namespace kx
