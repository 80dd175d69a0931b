// What a features file has to prove before anything of it is written to a camera.
#pragma once

#include "jobs/file/FeaturesFile.h"
#include "jobs/nodes/FeatureKind.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QString>

#include <functional>
#include <vector>

namespace ie
{

struct IdentityComparison
{
    // In the order of the import.
    enum class What
    {
        VersionGiven,
        Version,
        BoardType,
        Firmware,
        Model
    };
    enum class Outcome
    {
        Good,
        Tolerated, // differs, which the import lets pass
        Bad
    };
    What what = What::VersionGiven;
    Outcome outcome = Outcome::Good;
    QString fileValue;   // null: the file has none
    QString cameraValue; // null: not asked, or the camera does not tell; the suite's own for the versions
};
using IdentityComparisons = std::vector<IdentityComparison>;

enum class IdentityDepth
{
    UpToTheFirstBad, // the camera is asked no further, as in imports
    All
};
using FeatureRead = std::function<FeatureReading(FeatureKind kind, const QString& name)>;

// Not empty. `read` asks the camera; the model is the record's.
IdentityComparisons compareIdentity(const FeaturesHeader& file, const KX_DeviceInfo& device,
                                    const FeatureRead& read, IdentityDepth depth);

bool isGood(const IdentityComparisons& comparisons); // or tolerated, all of them

} // namespace ie
