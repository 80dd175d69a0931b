// What a status means, in words.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

namespace kx
{

// A short English sentence; never null, static storage.
const char* statusText(KX_Status status);

} // namespace kx
