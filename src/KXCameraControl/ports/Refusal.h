// What a camera's status code means. GVCP and GenCP share the codes of the groups that matter (GigE
// Vision 2.0, "Status Code Standard Definitions"; GenCP 1.3, "Status Codes").
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <string>

namespace kx
{

// KX_E_GC_ACCESS: the camera will not do this to this register. KX_E_BUSY: it may later. KX_E_DEVICE: a fault
// of its own.
KX_Status statusOfRefusal(uint16_t code);
// "access denied (0x8006)"
std::string refusalText(uint16_t code);

} // namespace kx
