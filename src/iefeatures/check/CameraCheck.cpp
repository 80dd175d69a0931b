#include "iefeatures/check/CameraCheck.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/PlainCheck.h"
#include "iefeatures/check/RegisterCheck.h"

#include "jobs/import/ImportIdentity.h"

#include <algorithm>

namespace companion
{
namespace
{

using IdentityVerdict = IdentityCheck::Verdict;

const char* identityWord(ie::IdentityComparison::What what)
{
    using What = ie::IdentityComparison::What;
    switch (what) {
    case What::VersionGiven:
        return "version given";
    case What::Version:
        return "version";
    case What::BoardType:
        return "board type";
    case What::Firmware:
        return "firmware";
    default:
        return "model";
    }
}

IdentityVerdict identityVerdict(ie::IdentityComparison::Outcome outcome)
{
    using Outcome = ie::IdentityComparison::Outcome;
    if (outcome == Outcome::Tolerated)
        return IdentityVerdict::Tolerated;
    return outcome == Outcome::Good ? IdentityVerdict::Good : IdentityVerdict::Bad;
}

// All are told, though an import ends at the first that is bad.
std::vector<IdentityCheck> checkIdentity(FeatureReader& reader, const KX_DeviceInfo& device,
                                         const ie::FeaturesHeader& file)
{
    const auto read = [&reader](ie::FeatureKind kind, const QString& name) {
        return reader.read(kind, name);
    };
    std::vector<IdentityCheck> checks;
    for (const ie::IdentityComparison& comparison :
         ie::compareIdentity(file, device, read, ie::IdentityDepth::All))
        checks.push_back({identityWord(comparison.what), identityVerdict(comparison.outcome),
                          comparison.fileValue, comparison.cameraValue});
    return checks;
}

bool isBad(const IdentityCheck& check)
{
    return check.verdict == IdentityVerdict::Bad;
}

CameraCheck::State checkEntries(FeatureReader& reader, const ie::FeaturesContent& file, CheckMode mode,
                                const std::function<bool()>& mayGoOn, CameraCheck& check)
{
    const bool isGigE = check.camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE;
    ImportSkips skips(reader);
    PlainCheck plain(reader, skips, mode);
    RegisterCheck registers(reader, skips, mode, isGigE);
    for (const ie::FeaturesContent::Entry& entry : file.entries) {
        if (!mayGoOn())
            return CameraCheck::State::Interrupted;
        const std::vector<EntryCheck> done =
            entry.isComplex ? registers.check(entry.complex) : std::vector<EntryCheck>{plain.check(entry)};
        if (reader.lineStatus() != KX_OK)
            return CameraCheck::State::Failed;
        check.entries.insert(check.entries.end(), done.begin(), done.end());
    }
    return CameraCheck::State::Checked;
}

} // namespace

bool isAmiss(const EntryCheck& entry)
{
    switch (entry.verdict) {
    case Verdict::Same:
    case Verdict::Coerced:
    case Verdict::Change:
    case Verdict::Skipped:
        return !entry.isFaithful;
    default:
        return true;
    }
}

CameraCheck checkCamera(const ListedCamera& camera, const ie::FeaturesContent& file, CheckMode mode,
                        const std::function<bool()>& mayGoOn)
{
    CameraCheck check;
    check.camera = camera;
    if (!mayGoOn())
        return check;
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    check.status = connection.status();
    check.state = CameraCheck::State::Failed;
    if (check.status != KX_OK)
        return check;
    FeatureReader reader(connection.handle());
    check.identity = checkIdentity(reader, camera.device.stDeviceInfo, file.header);
    if (reader.lineStatus() == KX_OK)
        check.state = std::any_of(check.identity.begin(), check.identity.end(), isBad)
                          ? CameraCheck::State::Incompatible
                          : checkEntries(reader, file, mode, mayGoOn, check);
    check.status = reader.lineStatus();
    return check;
}

std::vector<CameraCheck> checkCameras(const std::vector<ListedCamera>& cameras,
                                      const ie::FeaturesContent& file, CheckMode mode,
                                      const std::function<bool()>& mayGoOn)
{
    std::vector<CameraCheck> checks(cameras.size());
    inParallel(cameras.size(), [&](size_t i) { checks[i] = checkCamera(cameras[i], file, mode, mayGoOn); });
    return checks;
}

} // namespace companion
