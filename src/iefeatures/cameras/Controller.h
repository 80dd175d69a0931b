// Who has control of a camera.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

namespace companion
{

// Asks the camera: "10.0.0.5:49152"; empty when nobody does or it does not tell. Blocks until it has
// answered, or for some tries.
QString controllerOf(const ListedCamera& camera);

// Why it could not be opened, a sentence. Asks it who else has control, when that is why.
QString openingFailure(const KX_DeviceInfo& device, KX_Status status);

} // namespace companion
