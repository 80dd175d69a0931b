// Saving all streamable features of a camera, for every combination of their selectors.
#pragma once

#include "KXCameraControl/bag/BagNodes.h"
#include "KXCameraControl/bag/BagText.h"

namespace kx
{

// Collects the bag's lines. Every selector is put back to what it was on every way out; a status of a failed
// line ends the collection. What could not be restored is told in `remark`.
KX_Status collectBag(BagNodes& nodes, std::vector<BagEntry>& entries, std::string& remark);

// The file, through a temporary beside `path` and a rename. `message` tells more in English.
KX_Status saveBag(BagNodes& nodes, const BagIdentity& identity, const std::string& path,
                  std::string& message);

} // namespace kx
