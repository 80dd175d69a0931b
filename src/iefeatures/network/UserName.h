// Names that people give to cameras.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

namespace companion
{

constexpr int kGigENameBytes = 16; // GigE Vision, bootstrap register "User-defined Name"
constexpr int kUsbNameBytes = 64;  // USB3 Vision, technology agnostic register "User Defined Name"

// Why a name has no room there; what follows the name. Empty: it has.
QString userNameObjection(const QString& name, int room);

// How many bytes the camera has for its name; 0: it has none.
int userNameRoom(const ListedCamera& camera);

} // namespace companion
