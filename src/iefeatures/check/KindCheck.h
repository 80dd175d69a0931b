// Whether a camera can be set as another one is at all.
#pragma once

#include "iefeatures/check/CameraCheck.h"

#include <optional>

namespace companion
{

// A camera of another transport than `source` is Incompatible, whatever model it calls itself: features files
// hold words of registers in the order of the transport, at places that may be the transport's own, and
// features that only make sense on it. Nothing: they are of one kind. Asks no camera.
std::optional<CameraCheck> refusalOfOtherKind(const ListedCamera& camera, const ListedCamera& source);

} // namespace companion
