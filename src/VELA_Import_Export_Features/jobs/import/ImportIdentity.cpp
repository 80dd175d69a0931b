#include "jobs/import/ImportIdentity.h"

#include "jobs/rules/DeviceNames.h"

#include <SuiteTools/SuiteTools.h>

#include <algorithm>

namespace ie
{
namespace
{

using What = IdentityComparison::What;
using Outcome = IdentityComparison::Outcome;

bool isBad(const IdentityComparison& comparison)
{
    return comparison.outcome == Outcome::Bad;
}

// Of what the file may leave out; null when it does.
QString given(bool isThere, const QString& text)
{
    return isThere && text.isNull() ? QString("") : text;
}

IdentityComparison compareVersionGiven(const FeaturesHeader& file, const QString& version)
{
    return {What::VersionGiven, file.version.isEmpty() ? Outcome::Bad : Outcome::Good, file.version, version};
}

IdentityComparison compareVersion(const FeaturesHeader& file, const QString& version)
{
    return {What::Version, file.version == version ? Outcome::Good : Outcome::Tolerated, file.version,
            version};
}

IdentityComparison compareTexts(What what, bool isThere, const QString& inFile, const QString& inCamera)
{
    const bool isSame = isThere && !inCamera.isNull() && inFile == inCamera;
    return {what, isSame ? Outcome::Good : Outcome::Bad, given(isThere, inFile), inCamera};
}

// A file without a board type fits every board.
IdentityComparison compareBoardType(const FeaturesHeader& file, const FeatureRead& read)
{
    if (!file.hasBoardType)
        return {What::BoardType, Outcome::Good, {}, {}};
    return compareTexts(What::BoardType, true, file.boardType,
                        read(FeatureKind::Integer, "BoardDeviceType").text);
}

IdentityComparison compareFirmware(const FeaturesHeader& file, const FeatureRead& read)
{
    return compareTexts(What::Firmware, file.hasFirmware, file.firmware,
                        read(FeatureKind::StringReg, "DeviceFirmwareVersion").text);
}

IdentityComparison compareModel(const FeaturesHeader& file, const KX_DeviceInfo& device)
{
    const QString model = modelNameAsUtf8(device);
    return compareTexts(What::Model, file.hasModel, file.model, given(true, model));
}

} // namespace

IdentityComparisons compareIdentity(const FeaturesHeader& file, const KX_DeviceInfo& device,
                                    const FeatureRead& read, IdentityDepth depth)
{
    const bool isOver = file.version.isEmpty() && depth == IdentityDepth::UpToTheFirstBad;
    const QString version = isOver ? QString() : VELAInterface::softwareVersion();
    const std::function<IdentityComparison()> steps[] = {
        [&] { return compareVersionGiven(file, version); }, [&] { return compareVersion(file, version); },
        [&] { return compareBoardType(file, read); }, [&] { return compareFirmware(file, read); },
        [&] { return compareModel(file, device); }};
    IdentityComparisons comparisons;
    for (const auto& step : steps) {
        comparisons.push_back(step());
        if (depth == IdentityDepth::UpToTheFirstBad && isBad(comparisons.back()))
            break;
    }
    return comparisons;
}

bool isGood(const IdentityComparisons& comparisons)
{
    return std::none_of(comparisons.begin(), comparisons.end(), isBad);
}

} // namespace ie
