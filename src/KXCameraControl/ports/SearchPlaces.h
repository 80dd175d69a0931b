// Where cameras are looked for, as the environment says: KX_CAMERA_INTERFACES and KX_CAMERA_ADDRESSES.
#pragma once

#include "KXCameraControl/ports/gige/Socket.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kx
{

struct SearchPlaces
{
    std::vector<NetworkInterface> interfaces; // that are searched by broadcast
    std::vector<uint32_t> addresses;          // that are asked one by one; ascending, each once
    // A sentence for each value that names no interface of this machine or is no address. Such a one is
    // passed over: an interface may come later.
    std::vector<std::string> problems;
};

// As it stands now. Lists are separated by commas, blanks around a value do not count. Without
// KX_CAMERA_INTERFACES all interfaces but the loopback's; "none" is no interface. Thread-safe.
SearchPlaces searchPlaces();

} // namespace kx
