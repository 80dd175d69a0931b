#include "iefeatures/line/LineCheck.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/files/FeaturesFileInput.h"
#include "iefeatures/imports/AuditLog.h"
#include "iefeatures/line/LineFiles.h"
#include "iefeatures/network/NetworkSettings.h"
#include "iefeatures/running/ReadingProgress.h"

#include <algorithm>

namespace companion
{
namespace
{

void worsen(LineMatch& match, LineState state, const QString& reason)
{
    if (state <= match.state)
        return;
    match.state = state;
    match.reason = reason;
}

// Whether what the camera is can be asked of it: another one in its place is told by that alone.
bool isAsked(const LineMatch& match)
{
    return match.wanted && match.camera &&
           (match.state == LineState::InOrder || match.state == LineState::Elsewhere);
}

// False: it cannot be used, which the match tells.
bool readFeatures(const Inventory& inventory, LineMatch& match, ie::FeaturesContent& content)
{
    const QString path = inventory.resolved(match.wanted->featuresFile);
    const FeaturesFileInput input = readFeaturesFile(path);
    if (!input.isGood()) {
        worsen(match, LineState::BadFiles, input.error);
        return false;
    }
    const QString objection =
        fileObjection(inventory, "features file", match.wanted->featuresFile, match.wanted->featuresHash);
    if (!objection.isEmpty()) {
        worsen(match, LineState::BadFiles, objection);
        return false;
    }
    content = input.content;
    return true;
}

void compareFirmware(const QString& found, LineMatch& match)
{
    const QString& expected = match.wanted->firmware;
    if (expected.isEmpty() || found.isNull() || found == expected)
        return;
    match.differences.push_back({"firmware", expected, found});
    worsen(match, LineState::Incompatible, {});
}

void askOne(const Inventory& inventory, bool isStrict, const LineQuestions& questions, LineCameraCheck& one)
{
    LineMatch& match = one.match;
    if (!isAsked(match))
        return;
    compareNetwork(questions, match);
    ie::FeaturesContent content;
    if (match.wanted->featuresFile.isEmpty() || !readFeatures(inventory, match, content))
        return;
    const CheckRule rule(CheckMode::Verify, isStrict, inventory.ignoredOf(*match.wanted));
    one.check = questions.features(*match.camera, content, rule);
    worsen(match, stateOf(one.check->verdict), one.check->error);
    compareFirmware(one.firmware(), match);
}

// What of this host may be why; said, and never changed.
void explainSilence(LineMatch& match)
{
    if (match.state != LineState::Unreachable && match.state != LineState::Missing)
        return;
    const QString& place = match.camera ? match.camera->interfaceName : match.wanted->interfaceName;
    QStringList causes = QStringList(match.reason) + hostObstacles(place);
    causes.removeAll({});
    match.reason = causes.join("; ");
}

} // namespace

void compareNetwork(const LineQuestions& questions, LineMatch& match)
{
    const InventoryCamera& wanted = *match.wanted;
    const auto word = [](const std::optional<bool>& isOn) {
        return isOn ? QString(*isOn ? "true" : "false") : QString();
    };
    const std::vector<std::pair<QString, QString>> expected = {{"mask", wanted.mask},
                                                               {"gateway", wanted.gateway},
                                                               {"dhcp", word(wanted.usesDhcp)},
                                                               {"lla", word(wanted.usesLla)}};
    if (std::all_of(expected.begin(), expected.end(), [](const auto& one) { return one.second.isEmpty(); }))
        return;
    const QMap<QString, QString> found = questions.network(*match.camera);
    for (const auto& [key, value] : expected) {
        if (value.isEmpty() || !found.contains(key) || found[key] == value)
            continue;
        match.differences.push_back({key, value, found[key]});
        worsen(match, LineState::Elsewhere, {});
    }
}

LineState stateOf(CameraVerdict verdict)
{
    switch (verdict) {
    case CameraVerdict::Applied:
    case CameraVerdict::Ready:
        return LineState::InOrder;
    case CameraVerdict::Incomplete:
        return LineState::Differs;
    case CameraVerdict::Incompatible:
        return LineState::Incompatible;
    case CameraVerdict::BadFile:
    case CameraVerdict::UnreadableFile:
        return LineState::BadFiles;
    default:
        return LineState::NotJudged;
    }
}

QString LineCameraCheck::name() const
{
    return match.wanted ? match.wanted->name : match.camera->title();
}

QString LineCameraCheck::firmware() const
{
    if (check)
        for (const ie::IdentityComparison& line : check->identity)
            if (line.what == ie::IdentityComparison::What::Firmware)
                return line.cameraValue;
    return {};
}

int LineCameraCheck::count(EntryVerdict verdict) const
{
    return !check ? 0
                  : int(std::count_if(check->entries.begin(), check->entries.end(),
                                      [&](const EntryCheck& entry) { return entry.verdict == verdict; }));
}

int LineCameraCheck::differing() const
{
    return check ? int(std::count_if(check->entries.begin(), check->entries.end(), isAmiss)) : 0;
}

bool LineCameraCheck::lacksComparison() const
{
    return isAsked(match) && match.wanted->featuresFile.isEmpty();
}

LineState LineCheck::gravest() const
{
    LineState found = LineState::InOrder;
    for (const LineCameraCheck& one : cameras)
        found = std::max(found, one.match.state);
    return found;
}

int LineCheck::count(LineState state) const
{
    return int(std::count_if(cameras.begin(), cameras.end(),
                             [&](const LineCameraCheck& one) { return one.match.state == state; }));
}

ExitCode exitCodeOf(LineState state)
{
    switch (state) {
    case LineState::InOrder:
        return ExitWell;
    case LineState::Stranger:
    case LineState::Retired:
    case LineState::Differs:
    case LineState::Elsewhere:
    case LineState::OtherCamera:
        return ExitNotAllApplied;
    case LineState::Incompatible:
        return ExitIncompatible;
    case LineState::Missing:
        return ExitNoSuchCamera;
    case LineState::NotJudged:
    case LineState::Unreachable:
        return ExitJobFailed;
    case LineState::BadFiles:
        break;
    }
    return ExitInputOutput;
}

LineQuestions askCameras(const std::function<bool()>& mayGoOn)
{
    return {[mayGoOn](const ListedCamera& camera, const ie::FeaturesContent& file, const CheckRule& rule) {
                return checkCamera(camera, file, rule, mayGoOn);
            },
            networkSettings};
}

LineCheck checkLine(Console& console, const Inventory& inventory, const std::vector<ListedCamera>& cameras,
                    bool isStrict, const LineQuestions& questions)
{
    LineCheck done;
    done.begun = QDateTime::currentDateTimeUtc();
    std::vector<ListedCamera> asked;
    for (const LineMatch& match : matchLine(inventory, cameras)) {
        done.cameras.push_back({match, {}});
        if (match.camera)
            asked.push_back(*match.camera);
    }
    ReadingProgress progress(console, asked, "checking");
    size_t next = 0;
    std::vector<size_t> rows(done.cameras.size());
    for (size_t i = 0; i < done.cameras.size(); ++i)
        rows[i] = done.cameras[i].match.camera ? next++ : asked.size();
    inParallel(done.cameras.size(), [&](size_t i) {
        askOne(inventory, isStrict, questions, done.cameras[i]);
        explainSilence(done.cameras[i].match);
        if (rows[i] < asked.size())
            progress.end(rows[i]);
    });
    return done;
}

QString hashOfFile(const QString& path)
{
    return auditFile(path).sha256;
}

} // namespace companion
