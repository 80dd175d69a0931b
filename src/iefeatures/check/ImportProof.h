// What a camera holds of a features file behind its import: a check, with what was seen of the import laid
// over it, which tells what it has changed from what was so before, and why something was refused.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/running/FailedCalls.h"
#include "iefeatures/running/ObservedChanges.h"

#include <vector>

namespace companion
{

struct ImportTraces
{
    std::vector<Change> changes;
    std::vector<EntryCheck> failures; // what was not applied as far as the jobs were seen to go
};

// A call that failed for good, as an entry that was not applied.
EntryCheck failedEntry(const FailedCall& call);

// `check` verified the camera behind the import. Failures that it has no entry for become entries of it. One
// that could not be completed stays as it is.
void layOver(CameraCheck& check, const ImportTraces& traces);

} // namespace companion
