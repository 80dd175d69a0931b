#include "iefeatures/check/PlainValue.h"

#include "jobs/file/FeaturesFile.h"
#include <SuiteTools/SuiteTools.h>

#include <QStringList>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace companion
{
namespace
{

constexpr int kLongestText = 255; // bytes that a job hands to the camera library

bool isInteger(const QString& type)
{
    return type == "Integer" || type == "IntReg";
}

ImportedValue importedText(const QString& text)
{
    char bytes[kLongestText + 1] = {};
    VELAInterface::CovertEncodeCharFromQString(text, bytes, kLongestText);
    const QString kept = VELAInterface::char2QStringLocale(bytes, -1);
    if (kept == text)
        return {kept, {}};
    const bool isCut = text.startsWith(kept);
    return {kept, isCut ? "the text is written up to its first 255 bytes"
                        : "the text changes in the camera's encoding"};
}

ImportedValue importedNumber(const QString& text)
{
    bool ok = false;
    const uint number = text.toUInt(&ok, 10);
    if (ok)
        return {QString::number(number), {}};
    return {"0", '"' + text + "\" is written as 0: imports take decimal numbers from 0 to 4294967295"};
}

// A decimal number or "0x" and hexadecimal digits, of 64 bits with a sign.
bool meaning(const QString& text, qint64& number)
{
    bool ok = false;
    number = text.toLongLong(&ok, 10);
    if (!ok && text.startsWith("0x"))
        number = qint64(text.midRef(2).toULongLong(&ok, 16));
    return ok;
}

} // namespace

bool isPlainType(const QString& type)
{
    static const QStringList types = {"Boolean", "Enumeration", "Integer", "IntReg", "Float", "StringReg"};
    return types.contains(type);
}

ImportedValue importedValue(const QString& type, const QString& fileText)
{
    bool ok = false;
    if (type == "Boolean") {
        const int number = fileText.toInt(&ok, 10);
        return {ie::booleanText(number >= 1),
                ok && number >= 0 ? QString() : '"' + fileText + "\" is written as 0: imports take 1 and 0"};
    }
    if (type == "Float") {
        const float number = fileText.toFloat(&ok);
        return {ie::floatText(number), ok ? QString()
                                          : '"' + fileText + "\" is written as " + ie::floatText(number) +
                                                ": it is no number of 32 bits"};
    }
    return type == "StringReg" ? importedText(fileText) : importedNumber(fileText);
}

bool isSameValue(const QString& type, const QString& fileText, const QString& cameraText)
{
    if (fileText == cameraText)
        return true;
    if (type == "StringReg")
        return false;
    if (isInteger(type)) {
        qint64 inFile = 0;
        return meaning(fileText, inFile) && QString::number(inFile) == cameraText;
    }
    if (type == "Float") {
        bool ok = false;
        const double inFile = fileText.toDouble(&ok);
        return ok && inFile == cameraText.toDouble();
    }
    const ImportedValue imported = importedValue(type, fileText);
    return imported.flaw.isNull() && imported.text == cameraText;
}

bool isCoercedValue(const QString& type, const QString& fileText, const QString& cameraText, qint64 increment)
{
    if (isInteger(type)) {
        qint64 inFile = 0;
        const qint64 inCamera = cameraText.toLongLong();
        if (!meaning(fileText, inFile))
            return false;
        const quint64 distance =
            inFile < inCamera ? quint64(inCamera) - quint64(inFile) : quint64(inFile) - quint64(inCamera);
        return distance < quint64(std::max<qint64>(increment, 1));
    }
    if (type != "Float")
        return false;
    bool ok = false;
    const double inFile = fileText.toDouble(&ok);
    const double inCamera = cameraText.toDouble();
    // A few steps of a 32-bit float, or of the last digit that files have.
    const double precision = std::max(4 * double(FLT_EPSILON) * std::fabs(inFile), 1.5e-6);
    return ok && std::fabs(inFile - inCamera) <= precision;
}

} // namespace companion
