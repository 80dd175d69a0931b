// What no import should write, because nobody who set a camera up by its description can have meant it.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/check/ImportSkips.h"

#include <vector>

namespace companion
{

// Entries of the file that an import would take away its own control with, or would write to a place that is
// none: each Broken, with its reason.
//  - the transport's register of control and the key to it (GigE Vision, bootstrap registers "Control Channel
//    Privilege" and "Control Switchover Key"), but for the value that an import holds itself;
//  - register addresses that are no numbers, which imports take for 0;
//  - registers that no register of the camera's description covers.
// What imports pass over (ImportSkips.h, addresses that are no multiple of 4) is not among them. Sends
// nothing but what ImportSkips asks.
std::vector<EntryCheck> dangersIn(const ie::FeaturesContent& file, FeatureReader& reader, ImportSkips& skips,
                                  bool isGigE);

// Whether a camera has to be asked: the file names registers, or control.
bool mayHoldDangers(const ie::FeaturesContent& file);

// The error of such a file.
QString dangerText(const std::vector<EntryCheck>& dangers);

} // namespace companion
