// Cameras on networks and at single addresses: GigE Vision's discovery.
#pragma once

#include "KXCameraControl/ports/Transport.h"

namespace kx
{

// Searches the places that KX_CAMERA_INTERFACES and KX_CAMERA_ADDRESSES name. A camera's address is the one
// that it answered from. Blocks for up to 400 ms where a network is searched (less when only single addresses
// are asked and all answer), and for up to three tries of 200 ms more when a camera that was found does not
// tell whether it is in use. KX_E_NETWORK: no socket could be opened.
Transport gigeTransport();

} // namespace kx
