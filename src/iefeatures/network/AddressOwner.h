// Whether somebody else has the address that a camera is to get.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <cstdint>

namespace companion
{

// Who but the camera answers at the address, behind the interface that the camera was found at: what follows
// the address in a sentence; empty: nobody. Blocks for up to 1.5 s.
QString addressOwner(const ListedCamera& camera, uint32_t address);

// An address of the interface's network that nobody answers at, from the highest down; 0: there is none among
// the first that were tried, or it is not known by which interface the camera was found.
uint32_t freeAddress(const ListedCamera& camera);

} // namespace companion
