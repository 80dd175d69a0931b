// Saving all streamable features of a camera, for every combination of their selectors.
#pragma once

#include "KXCameraControl/bag/BagNodes.h"
#include "KXCameraControl/bag/BagText.h"

namespace kx
{

struct Bag
{
    std::vector<BagEntry> entries;
    std::vector<std::string> notes; // what was left out, and why; sentences, comments of the file
    std::string remark; // what could not be put back on the camera, and what was cut off for its size
};

// Collects the bag's lines. Every selector is put back to what it was on every way out; a status of a failed
// line ends the collection.
KX_Status collectBag(BagNodes& nodes, Bag& bag);

// The file, as writeBagFile() writes it. `message` tells more in English; `count` is the
// number of entries. KX_E_INCOMPLETE: it is written, but there is a remark.
KX_Status saveBag(BagNodes& nodes, const BagIdentity& identity, const std::string& path, std::string& message,
                  uint32_t& count);

} // namespace kx
