// A features file from the disk, read as imports read it.
#pragma once

#include "jobs/file/FeaturesFile.h"

#include <QString>

namespace companion
{

struct FeaturesFileInput
{
    ie::FeaturesContent content;
    QString problem; // a sentence; null: the file could be read
};

// Whatever is well-formed XML is a features file; what a file leaves out is for the reader of `content`.
FeaturesFileInput readFeaturesFile(const QString& path);

} // namespace companion
