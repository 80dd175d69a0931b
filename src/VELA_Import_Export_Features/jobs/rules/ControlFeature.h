// The feature that says who controls a camera.
#pragma once

namespace ie
{

// SFNC, Transport Layer Control; its 0 is "nobody".
inline constexpr char kControlFeature[] = "GevCCP";

} // namespace ie
