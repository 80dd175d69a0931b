#include "iefeatures/check/CameraCheck.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/EntryNature.h"
#include "iefeatures/check/PlainCheck.h"
#include "iefeatures/check/RegisterCheck.h"
#include "iefeatures/check/WriteSafety.h"
#include "iefeatures/files/NamedFeatures.h"

#include <algorithm>

namespace companion
{
namespace
{

// False: the camera was not asked about all of them.
bool checkEntries(FeatureReader& reader, const ie::FeaturesContent& file, CheckRule rule,
                  const std::function<bool()>& mayGoOn, CameraCheck& check)
{
    const bool isGigE = check.camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE;
    ImportSkips skips(reader);
    PlainCheck plain(reader, skips, rule.mode);
    RegisterCheck registers(reader, skips, rule.mode, isGigE);
    FeatureNature nature(reader, isGigE, namedBy(file).values);
    for (const ie::FeaturesContent::Entry& entry : file.entries) {
        if (!mayGoOn())
            return false;
        std::vector<EntryCheck> done =
            entry.isComplex ? registers.check(entry.complex) : std::vector<EntryCheck>{plain.check(entry)};
        for (EntryCheck& one : done)
            tellApart(nature, rule.isStrict, entry.complex.length, one);
        if (reader.lineStatus() != KX_OK)
            return false;
        check.entries.insert(check.entries.end(), done.begin(), done.end());
    }
    return true;
}

void conclude(CameraCheck& check, CameraVerdict verdict, const QString& error = {})
{
    check.verdict = verdict;
    check.error = error;
}

std::vector<EntryCheck> dangersTo(const ListedCamera& camera, const ie::FeaturesContent& file,
                                  FeatureReader& reader)
{
    ImportSkips skips(reader);
    return dangersIn(file, reader, skips, camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE);
}

void checkOpenCamera(FeatureReader& reader, const ie::FeaturesContent& file, CheckRule rule,
                     const std::function<bool()>& mayGoOn, CameraCheck& check)
{
    const auto read = [&](ie::FeatureKind kind, const QString& name) { return reader.read(kind, name); };
    check.identity =
        ie::compareIdentity(file.header, check.camera.device.stDeviceInfo, read, ie::IdentityDepth::All);
    if (reader.lineStatus() == KX_OK && !ie::isGood(check.identity))
        return conclude(check, CameraVerdict::Incompatible, incompatibleText());
    if (rule.mode == CheckMode::Plan && !rule.isForced)
        check.entries = dangersTo(check.camera, file, reader);
    if (!check.entries.empty())
        return conclude(check, CameraVerdict::BadFile, dangerText(check.entries));
    const bool isDone = reader.lineStatus() == KX_OK && checkEntries(reader, file, rule, mayGoOn, check);
    if (reader.lineStatus() != KX_OK)
        return conclude(check, CameraVerdict::Failed, KX_CC_StatusText(reader.lineStatus()));
    if (!isDone)
        return conclude(check, CameraVerdict::Interrupted);
    const auto good = rule.mode == CheckMode::Plan ? CameraVerdict::Ready : CameraVerdict::Applied;
    conclude(check, verdictOn(check.entries, good));
}

} // namespace

QString incompatibleText()
{
    return "The file belongs to another model, firmware, board type or version.";
}

void EntryCheck::judge(EntryVerdict of, const QString& why)
{
    verdict = of;
    reason = why;
}

QString EntryCheck::title() const
{
    if (!address)
        return feature;
    const QString where = "register " + QString::number(*address);
    return feature.isEmpty() ? where : feature + " (" + where + ')';
}

bool isAmiss(const EntryCheck& entry)
{
    switch (entry.verdict) {
    case EntryVerdict::Applied:
    case EntryVerdict::Unchanged:
    case EntryVerdict::Coerced:
    case EntryVerdict::WouldChange:
    case EntryVerdict::Skipped:
        return !entry.isFaithful;
    case EntryVerdict::State:
    case EntryVerdict::Session:
    case EntryVerdict::Automatic:
        return false;
    default:
        return true;
    }
}

QStringList CameraCheck::notApplied() const
{
    QStringList titles;
    for (const EntryCheck& entry : entries)
        if (isAmiss(entry))
            titles += entry.title();
    titles.removeDuplicates();
    return titles;
}

CameraVerdict verdictOn(const std::vector<EntryCheck>& entries, CameraVerdict good)
{
    return std::any_of(entries.begin(), entries.end(), isAmiss) ? CameraVerdict::Incomplete : good;
}

CameraCheck checkCamera(const ListedCamera& camera, const ie::FeaturesContent& file, CheckRule rule,
                        const std::function<bool()>& mayGoOn)
{
    CameraCheck check;
    check.camera = camera;
    if (!mayGoOn())
        return check;
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    if (connection.status() != KX_OK) {
        conclude(check, CameraVerdict::Failed, KX_CC_StatusText(connection.status()));
        return check;
    }
    FeatureReader reader(connection.handle());
    checkOpenCamera(reader, file, rule, mayGoOn, check);
    return check;
}

std::vector<CameraCheck> checkCameras(const std::vector<ListedCamera>& cameras,
                                      const ie::FeaturesContent& file, CheckRule rule,
                                      const std::function<bool()>& mayGoOn)
{
    std::vector<CameraCheck> checks(cameras.size());
    inParallel(cameras.size(), [&](size_t i) { checks[i] = checkCamera(cameras[i], file, rule, mayGoOn); });
    return checks;
}

} // namespace companion
