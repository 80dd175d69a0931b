#include "iefeatures/line/LinePlan.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/line/LineFiles.h"
#include "iefeatures/line/LineNetwork.h"

#include <algorithm>

namespace companion
{
namespace
{

bool wouldWrite(const CameraCheck& plan)
{
    return std::any_of(plan.entries.begin(), plan.entries.end(),
                       [](const EntryCheck& entry) { return entry.verdict == EntryVerdict::WouldChange; });
}

// False: the files are none, which the match tells.
bool readFiles(const Inventory& inventory, LineMatch& match, SharedImportFiles& files)
{
    QString problem;
    files = readLineFiles(inventory, *match.wanted, false, problem);
    if (problem.isEmpty())
        return true;
    match.state = LineState::BadFiles;
    match.reason = problem;
    return false;
}

bool isAsked(const LineMatch& match)
{
    return match.camera && !match.isOther &&
           (match.state == LineState::InOrder || match.state == LineState::Elsewhere);
}

// One camera of the inventory, and what is to be done with it.
struct Row
{
    LineCameraCheck settled;
    std::optional<LineTarget> target;
};

// One that is unreachable in its network may be reached by the address that it should have.
NetworkTask planNetwork(const Unfinished& unfinished, LineMatch& match)
{
    if (!match.camera || match.isOther ||
        (match.state == LineState::Unreachable && match.camera->mac.isEmpty()))
        return {};
    if (!isAsked(match) && match.state != LineState::Unreachable)
        return {};
    NetworkTask task = networkTaskOf(match);
    if (unfinished.contains(match.wanted->name) && isAsked(match))
        task.persistent = networkTaskOf(*match.wanted, *match.camera).persistent;
    QStringList objections = task.isEmpty() ? QStringList() : networkObjections(*match.camera, task);
    if (objections.isEmpty())
        return task;
    for (QString& objection : objections)
        objection.chop(1); // no sentences of their own here
    match.reason = objections.join("; ");
    return {};
}

// What an import would do; nothing where it has nothing to do, or cannot be.
void planFeatures(const Inventory& inventory, const Unfinished& unfinished,
                  const std::function<bool()>& mayGoOn, Row& row, LineTarget& target)
{
    LineMatch& match = row.settled.match;
    if (!isAsked(match) || match.wanted->featuresFile.isEmpty() || !readFiles(inventory, match, target.files))
        return;
    const CheckRule rule(CheckMode::Plan, false, inventory.ignoredOf(*match.wanted));
    const CameraCheck plan = checkCamera(target.camera, target.files->input.content, rule, mayGoOn);
    const bool isToWrite = plan.verdict <= CameraVerdict::Incomplete && wouldWrite(plan);
    target.isUnfinished = !isToWrite && plan.verdict <= CameraVerdict::Ready &&
                          !match.wanted->userSet.isEmpty() && unfinished.contains(match.wanted->name);
    if (isToWrite || target.isUnfinished) {
        target.plan = plan;
        return;
    }
    row.settled.check = plan;
    if (const LineState state = stateOf(plan.verdict); state > match.state) {
        match.state = state;
        match.reason = plan.error;
    }
}

void plan(const Inventory& inventory, const Unfinished& unfinished, const std::function<bool()>& mayGoOn,
          Row& row)
{
    LineMatch& match = row.settled.match;
    if (!match.camera)
        return;
    if (isAsked(match))
        compareNetwork(askCameras(mayGoOn), match);
    LineTarget target{match.wanted, *match.camera, {}, {}, {}, planNetwork(unfinished, match)};
    planFeatures(inventory, unfinished, mayGoOn, row, target);
    target.match = match;
    const bool isKind = match.state != LineState::BadFiles && match.state != LineState::Incompatible &&
                        match.state != LineState::NotJudged;
    if (isKind && (target.plan || !target.network.isEmpty()))
        row.target = target;
}

} // namespace

QStringList LineTarget::changes() const
{
    QStringList changes = networkWords(network);
    for (const EntryCheck& entry : plan ? plan->entries : std::vector<EntryCheck>())
        if (entry.verdict == EntryVerdict::WouldChange)
            changes += entry.title() + ": " + entry.cameraValue + " -> " + entry.newValue;
    return changes;
}

// Of one that has not been asked yet nobody knows what differs.
LineState LineTarget::stateBehind() const
{
    if (isUnreachable())
        return LineState::Differs;
    if (match.state != LineState::Elsewhere)
        return match.state;
    return differencesBehind(network, match).empty() ? LineState::InOrder : match.state;
}

LineState LinePlan::gravest() const
{
    LineState found = LineState::InOrder;
    for (const LineTarget& target : targets)
        found = std::max(found, target.stateBehind());
    for (const LineCameraCheck& one : settled)
        found = std::max(found, one.match.state);
    return found;
}

LinePlan planLine(const Inventory& inventory, const Unfinished& unfinished,
                  const std::vector<ListedCamera>& cameras, const QStringList& names,
                  const std::function<bool()>& mayGoOn)
{
    LinePlan made;
    std::vector<Row> rows;
    for (const LineMatch& match : matchLine(inventory, cameras)) {
        if (!match.wanted)
            made.strangers.push_back(*match.camera);
        else if (names.isEmpty() || names.contains(match.wanted->name))
            rows.push_back({{match, {}}, {}});
    }
    inParallel(rows.size(), [&](size_t i) { plan(inventory, unfinished, mayGoOn, rows[i]); });
    for (const Row& row : rows) {
        if (row.target)
            made.targets.push_back(*row.target);
        else
            made.settled.push_back(row.settled);
    }
    return made;
}

QString planObjection(const LineTarget& target, const LinePlan& now)
{
    const auto found = std::find_if(now.targets.begin(), now.targets.end(), [&](const LineTarget& other) {
        return other.wanted->name == target.wanted->name;
    });
    if (found == now.targets.end())
        return "it is not there any more, or is not what it was";
    const bool isSame = found->camera.mac == target.camera.mac && found->camera.guid == target.camera.guid &&
                        found->camera.serial == target.camera.serial &&
                        found->camera.address == target.camera.address;
    if (!isSame)
        return "another camera is in its place by now";
    return found->changes() == target.changes() ? QString() : "it has changed since it was planned";
}

} // namespace companion
