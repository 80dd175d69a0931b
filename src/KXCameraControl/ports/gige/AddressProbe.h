// Whether somebody has an IPv4 address already.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

namespace kx
{

// What KX_CC_ProbeAddress promises, of an address that a host can have. Thread-safe; blocks for up to 1.5 s.
KX_AddressOwner probeAddress(uint32_t address, uint32_t interfaceAddress);

} // namespace kx
