// What imports make of the value text of a plain feature, and what the text means to people.
#pragma once

#include "jobs/nodes/FeatureKind.h"

#include <QString>

namespace companion
{

struct ImportedValue
{
    QString text; // as a features file would have it once it is written
    QString flaw; // why that is not what the file says; null when it is
};
ImportedValue importedValue(ie::FeatureKind kind, const QString& fileText);

// Whether the camera is as near to the file's value as its increment (of integers) or the precision of 32-bit
// floats lets it come.
bool isCoercedValue(ie::FeatureKind kind, const QString& fileText, const QString& cameraText,
                    qint64 increment);

} // namespace companion
