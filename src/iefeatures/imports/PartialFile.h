// A part of a features file, as a file of its own.
#pragma once

#include "iefeatures/cameras/NamePatterns.h"

#include <QString>
#include <QStringList>

namespace companion
{

// Writes into `target` what the features file has of the features that fit one of `names` (NamePatterns.h),
// with all that it says of its camera. Gives what went wrong as a sentence, or an empty text: a name that
// fits nothing goes wrong too.
QString writePartialFile(const QString& file, const QStringList& names, const QString& target);

} // namespace companion
