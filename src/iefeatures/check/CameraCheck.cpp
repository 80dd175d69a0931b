#include "iefeatures/check/CameraCheck.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/Controller.h"
#include "iefeatures/cameras/DescriptionWords.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/EntryNature.h"
#include "iefeatures/check/PlainCheck.h"
#include "iefeatures/check/RegisterCheck.h"
#include "iefeatures/check/WriteSafety.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/running/ReadingProgress.h"

#include <algorithm>

namespace companion
{
namespace
{

// Of what will be told.
void nameEntries(FeatureReader& reader, EntryCheck& entry)
{
    if (entry.verdict == EntryVerdict::Unchanged || entry.verdict == EntryVerdict::Skipped)
        return;
    const auto nameOf = [&](const QString& value) {
        bool isNumber = false;
        const uint number = value.toUInt(&isNumber);
        return isNumber ? reader.entryName(entry.feature, number) : QString();
    };
    entry.fileEntry = nameOf(entry.fileValue);
    entry.cameraEntry = nameOf(entry.cameraValue);
    entry.newEntry = nameOf(entry.newValue);
}

// Registers by their selectors, and what lists them, of all that may be told of.
void placeEntry(DescriptionWords& words, const CheckRule& rule, const QString& variables, EntryCheck& entry)
{
    if (entry.verdict == EntryVerdict::Unchanged)
        return;
    if (!variables.isEmpty())
        entry.selectors = words.selectors(entry.feature, variables);
    if (rule.asksCategories)
        entry.category = words.category(entry.feature);
}

// False: the camera was not asked about all of them.
bool checkEntries(FeatureReader& reader, const ie::FeaturesContent& file, const CheckRule& rule,
                  const std::function<bool()>& mayGoOn, const std::function<void()>& inHand,
                  CameraCheck& check)
{
    const bool isGigE = check.camera.device.stDeviceInfo.transportType == KX_TRANSPORT_GIGE;
    ImportSkips skips(reader);
    PlainCheck plain(reader, skips, rule.mode);
    RegisterCheck registers(reader, skips, rule.mode, isGigE);
    FeatureNature nature(reader, isGigE, namedBy(file).values);
    DescriptionWords words(reader.handle(), isGigE);
    for (const ie::FeaturesContent::Entry& entry : file.entries) {
        if (!mayGoOn())
            return false;
        if (inHand)
            inHand();
        std::vector<EntryCheck> done =
            entry.isComplex ? registers.check(entry.complex) : std::vector<EntryCheck>{plain.check(entry)};
        for (EntryCheck& one : done)
            tellApart(nature, rule, entry.complex.length, one);
        if (!entry.isComplex && ie::featureKind(entry.plain.type) == ie::FeatureKind::Enumeration)
            nameEntries(reader, done.front());
        for (size_t i = 0; i < done.size(); ++i)
            placeEntry(words, rule,
                       entry.isComplex ? entry.complex.values.value(int(i)).variables : QString(), done[i]);
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

// False: it is settled.
bool proveIdentity(FeatureReader& reader, const ie::FeaturesContent& file, CameraCheck& check)
{
    QString unread; // who cannot be asked is no other camera
    const auto read = [&](ie::FeatureKind kind, const QString& name) {
        const FeatureReader::Reading reading = reader.read(kind, name);
        if (reading.status != KX_OK && reading.status != KX_E_GC_PROPERTY)
            unread = name + " cannot be read: " + KX_CC_StatusText(reading.status);
        return reading;
    };
    check.identity =
        ie::compareIdentity(file.header, check.camera.device.stDeviceInfo, read, ie::IdentityDepth::All);
    if (reader.lineStatus() == KX_OK && ie::isGood(check.identity))
        return true;
    if (unread.isEmpty())
        unread = reader.descriptionProblem();
    if (reader.lineStatus() != KX_OK)
        conclude(check, CameraVerdict::Failed, reader.lineText());
    else if (!unread.isEmpty())
        conclude(check, CameraVerdict::Failed, unread);
    else
        conclude(check, CameraVerdict::Incompatible, incompatibleText(check.identity));
    return false;
}

// False: it is settled.
bool proveSafety(FeatureReader& reader, const ie::FeaturesContent& file, CameraCheck& check)
{
    check.entries = dangersTo(check.camera, file, reader);
    if (!check.entries.empty())
        conclude(check, CameraVerdict::BadFile, dangerText(check.entries));
    return check.entries.empty();
}

void checkOpenCamera(FeatureReader& reader, const ie::FeaturesContent& file, const CheckRule& rule,
                     const std::function<bool()>& mayGoOn, const std::function<void()>& inHand,
                     CameraCheck& check)
{
    if (!proveIdentity(reader, file, check))
        return;
    if (rule.mode == CheckMode::Plan && !rule.isForced && !proveSafety(reader, file, check))
        return;
    const bool isDone =
        reader.lineStatus() == KX_OK && checkEntries(reader, file, rule, mayGoOn, inHand, check);
    if (reader.lineStatus() != KX_OK)
        return conclude(check, CameraVerdict::Failed, reader.lineText());
    if (!isDone)
        return conclude(check, CameraVerdict::Interrupted);
    const auto good = rule.mode == CheckMode::Plan ? CameraVerdict::Ready : CameraVerdict::Applied;
    conclude(check, verdictOn(check.entries, good));
}

} // namespace

QString identityWord(ie::IdentityComparison::What what)
{
    switch (what) {
    case ie::IdentityComparison::What::VersionGiven:
        return "version given";
    case ie::IdentityComparison::What::Version:
        return "version";
    case ie::IdentityComparison::What::BoardType:
        return "board type";
    case ie::IdentityComparison::What::Firmware:
        return "firmware";
    case ie::IdentityComparison::What::Model:
        break;
    }
    return "model";
}

QString incompatibleText(const ie::IdentityComparisons& identity)
{
    QStringList parts;
    for (const ie::IdentityComparison& line : identity) {
        if (line.outcome != ie::IdentityComparison::Outcome::Bad)
            continue;
        if (line.what == ie::IdentityComparison::What::VersionGiven)
            parts += "it names no version";
        else
            parts += QString("%1 %2, the camera has %3")
                         .arg(identityWord(line.what), line.fileValue.isNull() ? "not given" : line.fileValue,
                              line.cameraValue.isNull() ? "none" : line.cameraValue);
    }
    const QString text = "The file belongs to another model, firmware, board type or version";
    return text + (parts.isEmpty() ? QString() : ": " + parts.join("; ")) + '.';
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
    const QString where =
        (selectors.isEmpty() ? QString() : selectors + ", ") + "register " + hexAddress(*address);
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
    case EntryVerdict::Ignored:
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

CameraCheck checkCamera(const ListedCamera& camera, const ie::FeaturesContent& file, const CheckRule& rule,
                        const std::function<bool()>& mayGoOn, const std::function<void()>& inHand)
{
    CameraCheck check;
    check.camera = camera;
    if (!mayGoOn())
        return check;
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    if (connection.status() != KX_OK) {
        conclude(check, CameraVerdict::Failed,
                 openingFailure(camera.device.stDeviceInfo, connection.status()));
        return check;
    }
    FeatureReader reader(connection.handle());
    checkOpenCamera(reader, file, rule, mayGoOn, inHand, check);
    return check;
}

std::optional<CameraCheck> refusal(const ListedCamera& camera, const ie::FeaturesContent& file)
{
    const CameraConnection connection(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    if (connection.status() != KX_OK)
        return {};
    CameraCheck check;
    check.camera = camera;
    FeatureReader reader(connection.handle());
    const bool isRefused = proveIdentity(reader, file, check) ? !proveSafety(reader, file, check)
                                                              : !reader.descriptionProblem().isEmpty();
    return isRefused && reader.lineStatus() == KX_OK ? check : std::optional<CameraCheck>();
}

std::vector<CameraCheck> checkCameras(Console& console, const std::vector<ListedCamera>& cameras,
                                      const ie::FeaturesContent& file, const CheckRule& rule,
                                      const std::function<bool()>& mayGoOn)
{
    std::vector<CameraCheck> checks(cameras.size());
    ReadingProgress progress(console, cameras, "checking");
    inParallel(cameras.size(), [&](size_t i) {
        checks[i] = checkCamera(cameras[i], file, rule, mayGoOn,
                                [&] { progress.advance(i, int(file.entries.size())); });
        progress.end(i);
    });
    return checks;
}

} // namespace companion
