#include "iefeatures/line/LinePlan.h"

#include "iefeatures/cameras/InParallel.h"

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

// Where nothing can be written, why.
LineTarget targetOf(const Inventory& inventory, LineMatch& match)
{
    LineTarget target{match.wanted, *match.camera, {}, {}, match};
    const QString path = inventory.resolved(match.wanted->featuresFile);
    target.files = readImportFiles({}, path);
    const QString& hash = match.wanted->featuresHash;
    const bool isMeant = hash.isEmpty() || hashOfFile(path) == hash;
    if (!target.files->input.isGood() || !isMeant) {
        match.state = LineState::BadFiles;
        match.reason = isMeant ? target.files->input.error
                               : "The features file is not the one that the inventory means: " + path;
    }
    return target;
}

bool canBeSet(const LineMatch& match)
{
    return match.camera && !match.isOther && !match.wanted->featuresFile.isEmpty() &&
           (match.state == LineState::InOrder || match.state == LineState::Elsewhere);
}

// One camera of the inventory, and what is to be done with it.
struct Row
{
    LineCameraCheck settled;
    std::optional<LineTarget> target;
};

void plan(const Inventory& inventory, const std::function<bool()>& mayGoOn, Row& row)
{
    LineMatch& match = row.settled.match;
    if (!canBeSet(match))
        return;
    LineTarget target = targetOf(inventory, match);
    if (match.state == LineState::BadFiles)
        return;
    const CheckRule rule(CheckMode::Plan, false, inventory.ignoredOf(*match.wanted));
    target.plan = checkCamera(target.camera, target.files->input.content, rule, mayGoOn);
    if (target.plan.verdict <= CameraVerdict::Incomplete && wouldWrite(target.plan)) {
        row.target = target;
        return;
    }
    row.settled.check = target.plan;
    if (const LineState state = stateOf(target.plan.verdict); state > match.state) {
        match.state = state;
        match.reason = target.plan.error;
    }
}

} // namespace

QStringList LineTarget::changes() const
{
    QStringList changes;
    for (const EntryCheck& entry : plan.entries)
        if (entry.verdict == EntryVerdict::WouldChange)
            changes += entry.title() + ": " + entry.cameraValue + " -> " + entry.newValue;
    return changes;
}

LineState LinePlan::gravest() const
{
    LineState found = LineState::InOrder;
    for (const LineTarget& target : targets)
        found = std::max(found, target.match.state);
    for (const LineCameraCheck& one : settled)
        found = std::max(found, one.match.state);
    return found;
}

LinePlan planLine(const Inventory& inventory, const std::vector<ListedCamera>& cameras,
                  const QStringList& names, const std::function<bool()>& mayGoOn)
{
    LinePlan made;
    std::vector<Row> rows;
    for (const LineMatch& match : matchLine(inventory, cameras)) {
        if (!match.wanted)
            made.strangers.push_back(*match.camera);
        else if (names.isEmpty() || names.contains(match.wanted->name))
            rows.push_back({{match, {}}, {}});
    }
    inParallel(rows.size(), [&](size_t i) { plan(inventory, mayGoOn, rows[i]); });
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
