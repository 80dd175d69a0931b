// What imports make of the value text of a plain feature, and what the text means to people.
#pragma once

#include <QString>

namespace companion
{

// The six type words that imports know.
bool isPlainType(const QString& type);

struct ImportedValue
{
    QString text; // as a features file would have it once it is written
    QString flaw; // why that is not what the file says; null when it is
};
ImportedValue importedValue(const QString& type, const QString& fileText);

// Whether two texts of one type stand for the same value ("1" and "true" do not, "1" and "01" do).
bool isSameValue(const QString& type, const QString& fileText, const QString& cameraText);

// Whether the camera is as near to the file's value as its increment (of integers) or the precision of 32-bit
// floats lets it come.
bool isCoercedValue(const QString& type, const QString& fileText, const QString& cameraText,
                    qint64 increment);

} // namespace companion
