// Where an entry of a features file that is not as the file says is nobody's setting.
#pragma once

#include "iefeatures/cameras/FeatureNature.h"
#include "iefeatures/check/CameraCheck.h"

namespace companion
{

// Gives an entry that is amiss, or would change, the verdict of its nature where it is no setting, or the one
// of what is to be ignored. A strict rule takes only states for no settings. `length`: of the entry's
// register, in bytes.
void tellApart(FeatureNature& nature, const CheckRule& rule, qint64 length, EntryCheck& entry);

// The same for what jobs were seen not to apply. `settled`: by their files. Opens the camera for monitoring,
// blocks until it has answered; what it does not tell stays amiss.
void tellApart(const ListedCamera& camera, const FeatureNature::Settled& settled, const CheckRule& rule,
               std::vector<EntryCheck>& failures);

} // namespace companion
