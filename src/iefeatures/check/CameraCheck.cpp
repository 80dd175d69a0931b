#include "iefeatures/check/CameraCheck.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/PlainCheck.h"
#include "iefeatures/check/RegisterCheck.h"

#include "jobs/rules/DeviceNames.h"
#include <SuiteTools/SuiteTools.h>

#include <algorithm>

namespace companion
{
namespace
{

using IdentityVerdict = IdentityCheck::Verdict;

IdentityVerdict goodIf(bool isGood, IdentityVerdict otherwise = IdentityVerdict::Bad)
{
    return isGood ? IdentityVerdict::Good : otherwise;
}

// Of what the file may leave out; null when it does.
QString given(bool isThere, const QString& text)
{
    return isThere && text.isNull() ? QString("") : text;
}

// All are told, though an import ends at the first that is bad.
std::vector<IdentityCheck> checkIdentity(FeatureReader& reader, const KX_DeviceInfo& device,
                                         const ie::FeaturesHeader& file)
{
    const QString version = VELAInterface::softwareVersion();
    std::vector<IdentityCheck> checks = {
        {"version given", goodIf(!file.version.isEmpty()), file.version, version},
        {"version", goodIf(file.version == version, IdentityVerdict::Tolerated), file.version, version}};
    // A file without a board type fits every board.
    const QString board = file.hasBoardType ? reader.read("Integer", "BoardDeviceType").text : QString();
    const auto add = [&](const char* what, bool isGood, const QString& inFile, const QString& inCamera) {
        checks.push_back({what, goodIf(isGood), inFile, inCamera});
    };
    add("board type", !file.hasBoardType || (!board.isNull() && board == file.boardType),
        given(file.hasBoardType, file.boardType), board);
    const QString firmware = reader.read("StringReg", "DeviceFirmwareVersion").text;
    add("firmware", file.hasFirmware && !firmware.isNull() && firmware == file.firmware,
        given(file.hasFirmware, file.firmware), firmware);
    const QString model = ie::modelNameAsUtf8(device);
    add("model", file.hasModel && model == file.model, given(file.hasModel, file.model), model);
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
