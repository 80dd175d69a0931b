// A feature bag from the disk, before anybody loads it.
#pragma once

#include "iefeatures/files/FeaturesFileInput.h"

namespace companion
{

constexpr qint64 kLargestBag = 64 * 1024 * 1024; // bytes; the camera library takes no larger one

// Whether the file can be read and begins as the GenApi persistence text does; no content. What its lines
// say is for the camera library, which reads all of them before it writes the first.
FeaturesFileInput lookAtFeatureBag(const QString& path);

// Why the path cannot be handed to the camera library, which takes it as Latin-1; a sentence, or an empty
// text.
QString bagPathProblem(const QString& path);

} // namespace companion
