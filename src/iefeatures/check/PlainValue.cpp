#include "iefeatures/check/PlainValue.h"

#include "jobs/rules/ImportRules.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace companion
{
namespace
{

QString flawOf(ie::FeatureKind kind, const QString& fileText, const QString& written)
{
    switch (kind) {
    case ie::FeatureKind::Boolean:
        return '"' + fileText + "\" is written as 0: imports take 1 and 0";
    case ie::FeatureKind::Float:
        return '"' + fileText + "\" is written as " + written + ": it is no number of 32 bits";
    case ie::FeatureKind::StringReg:
        return fileText.startsWith(written)
                   ? QString("the text is written up to its first %1 bytes").arg(ie::kLongestText)
                   : "the text changes in the camera's encoding";
    default:
        return '"' + fileText + "\" is written as 0: imports take decimal numbers from 0 to 4294967295";
    }
}

} // namespace

ImportedValue importedValue(ie::FeatureKind kind, const QString& fileText)
{
    const ie::ImportedText imported = ie::importedText(kind, fileText);
    return {imported.text, imported.isFaithful ? QString() : flawOf(kind, fileText, imported.text)};
}

bool isCoercedValue(ie::FeatureKind kind, const QString& fileText, const QString& cameraText,
                    qint64 increment)
{
    if (kind == ie::FeatureKind::Integer || kind == ie::FeatureKind::IntReg) {
        const std::optional<qint64> meant = ie::meantInteger(fileText);
        if (!meant)
            return false;
        const qint64 inFile = *meant;
        const qint64 inCamera = cameraText.toLongLong();
        const quint64 distance =
            inFile < inCamera ? quint64(inCamera) - quint64(inFile) : quint64(inFile) - quint64(inCamera);
        return distance < quint64(std::max<qint64>(increment, 1));
    }
    if (kind != ie::FeatureKind::Float)
        return false;
    bool ok = false;
    const double inFile = fileText.toDouble(&ok);
    const double inCamera = cameraText.toDouble();
    // A few steps of a 32-bit float, or of the last digit that files have.
    const double precision = std::max(4 * double(FLT_EPSILON) * std::fabs(inFile), 1.5e-6);
    return ok && std::fabs(inFile - inCamera) <= precision;
}

} // namespace companion
