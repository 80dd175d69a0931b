// Descriptions that were fetched before: the last few in memory, more of them on disk.
#pragma once

#include "KXCameraControl/description/Description.h"
#include "KXCameraControl/ports/Port.h"

namespace kx
{

// Under which name a description is remembered: what a camera says of itself and of its description. `url` is
// the whole text, the length in it. Cameras of one key are likely to have one description, no more.
digest::Sha256 descriptionKey(const CameraNames& names, const std::string& url);

// From any thread; no lock is held over a file. Nothing fails: what cannot be found, read or kept is not
// there. Null: none. `isCalledZip` as in descriptionIn().
SharedDescription rememberedDescription(const digest::Sha256& key, bool isCalledZip);
// Gives the one that equal ones are shared by, for use in its place. On disk too: `isNew` to it.
SharedDescription rememberDescription(const digest::Sha256& key, SharedDescription description, bool isNew);

} // namespace kx
