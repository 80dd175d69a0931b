// A features file from the disk, read as imports read it.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/console/Verdict.h"

#include "jobs/file/FeaturesFile.h"

#include <QString>

namespace companion
{

struct FeaturesFileInput
{
    ie::FeaturesContent content;
    CameraVerdict verdict = CameraVerdict::Ready; // UnreadableFile, BadFile: of the file by itself
    QString error;                                // then why, a printable sentence

    bool isGood() const { return verdict == CameraVerdict::Ready; }
};

// The error of a file that cannot be opened, with the cause.
QString unreadableText(const QString& path);

// A features file is well-formed XML with an element "Features"; what else a file leaves out is for the
// reader of `content`.
FeaturesFileInput readFeaturesFile(const QString& path);

// On the message stream; for scripts as an object as well, {"kind":"refusal",...}.
void tellError(Console& console, const FeaturesFileInput& input, bool isJson);

} // namespace companion
