// Cameras behind the GenTL producers of this machine: what frame grabbers bring, of every transport layer
// that the library has no port of its own for.
#pragma once

#include "KXCameraControl/ports/Transport.h"

namespace kx
{

// Asks all producers at the same time; each call into one may take gentlCallTime(). A producer that hung,
// crashed or cannot be used hides no other, and is left alone for half a minute by searches; opening one of
// its cameras tries it again.
Transport gentlTransport();

// A sentence for each producer that had something against the last search; nothing is started for it.
std::vector<std::string> gentlProblems();

} // namespace kx
