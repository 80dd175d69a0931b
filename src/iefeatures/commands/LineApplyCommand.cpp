#include "iefeatures/commands/LineApplyCommand.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/commands/Agreement.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/LineFile.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/imports/ImportProcedure.h"
#include "iefeatures/line/LineLock.h"
#include "iefeatures/line/LineNetwork.h"
#include "iefeatures/line/LineReport.h"
#include "iefeatures/network/NetworkWrites.h"
#include "iefeatures/running/JobRun.h"

#include <CLI/CLI.hpp>

#include <QDir>

#include <map>

namespace companion
{
namespace
{

const char* const kNotCompared = "its features are not compared: the inventory names no features file of it";

bool mayGoOn()
{
    return !Interrupt::isRequested();
}

// Snapshots of what was there before lie beside the files.
QString snapshotFolder(const Inventory& inventory)
{
    const QString folder = inventory.resolved(inventory.filesFolder() + "/snapshots");
    return QDir().mkpath(folder) ? folder : QString();
}

// Cameras that are proved by the same rule, and kept in the same set, are written at the same time.
using Group = std::pair<QStringList, QString>;

// What is set of name and address, and what stays.
void tellNetwork(Console& console, const LineTarget& target)
{
    const QString name = printable(target.wanted->name);
    LineMatch rest = target.match;
    rest.differences = differencesBehind(target.network, target.match);
    if (target.isUnreachable())
        rest.reason.clear();
    for (const QString& problem : lineProblems({rest, {}}))
        console.err(name + ": " + problem + "; that stays as it is.\n");
    if (!target.network.isEmpty())
        console.err(name + ": would get " + networkWords(target.network).join("; ") + ".\n");
    if (target.isUnfinished)
        console.err(name + ": " + printable(target.wanted->userSet) +
                    " may not hold what was written before; it would be saved.\n");
    if (target.isUnreachable())
        console.err(name + ": unreachable now; its features are what the next apply looks at.\n");
}

// Where nothing is left to be finished.
QStringList inOrder(const LinePlan& plan)
{
    QStringList names;
    for (const LineCameraCheck& one : plan.settled)
        if (one.match.state == LineState::InOrder)
            names += one.name();
    return names;
}

// All but those whose user set a command before has not saved, and whose features nobody has looked at now.
QStringList finishedBy(const std::vector<LineTarget>& targets, const Unfinished& before)
{
    QStringList names;
    for (const LineTarget& target : targets) {
        const bool hasUserSet = !target.wanted->featuresFile.isEmpty() && !target.wanted->userSet.isEmpty();
        if (target.plan || !hasUserSet || !before.contains(target.wanted->name))
            names += target.wanted->name;
    }
    return names;
}

void tellNotBegun(Console& console, const std::vector<LineTarget>& targets)
{
    for (const LineTarget& target : targets)
        console.err(printable(target.wanted->name) + ": not begun.\n");
}

} // namespace

void LineApplyCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "The inventory")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a file."));
    app.add_option("--camera", m_cameras, "Cameras of the inventory, by their names there; else all")
        ->type_name("NAME")
        ->check(isGiven("Name a camera."));
    app.add_flag("--dry-run", m_isDryRun, "Show what would change and change nothing");
    app.add_flag("--yes", m_isAgreed, "Do not ask");
    app.add_flag("--all-at-once", m_isAllAtOnce,
                 "Set all cameras at the same time, not one before the others");
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_audit.addOptions(app);
    m_report.addDetails(app);
    m_report.addOptions(app);
    m_log.addOptions(app);
}

int LineApplyCommand::execute(World& world)
{
    Inventory inventory;
    if (const int code = readLine(world.console, inventory))
        return code;
    return runLogged(world.console, m_log, [&] { return apply(world, inventory); });
}

QStringList LineApplyCommand::names() const
{
    QStringList names;
    for (const std::string& name : m_cameras)
        names += QString::fromStdString(name);
    return names;
}

int LineApplyCommand::readLine(Console& console, Inventory& inventory) const
{
    if (!readInventoryOrTell(console, m_file, inventory))
        return ExitInputOutput;
    if (!hasCameras(console, inventory, names()))
        return ExitUsage;
    return ExitWell;
}

int LineApplyCommand::apply(World& world, const Inventory& inventory) const
{
    LineLock lock(inventory.path);
    if (const QString holder = m_isDryRun ? QString() : lock.take(); !holder.isEmpty()) {
        world.console.err(holder + '\n');
        return ExitJobFailed;
    }
    Unfinished unfinished(inventory.path);
    if (const QString problem = unfinished.read(); !problem.isEmpty()) {
        world.console.err(problem + '\n');
        return ExitInputOutput;
    }
    std::vector<ListedCamera> cameras;
    if (const int code = findLine(world, inventory, cameras))
        return code;
    CameraSearch::tellProblems(world.console);
    const LinePlan plan = planLine(inventory, unfinished, cameras, names(), mayGoOn);
    if (Interrupt::isRequested()) {
        world.console.err(std::string("Interrupted.\n"));
        return ExitInterrupted;
    }
    tellPlan(world.console, plan);
    const int rest = exitCodeOf(plan.gravest()); // of those that nothing can be done about
    if (!m_isDryRun)
        unfinished.remove(inOrder(plan));
    if (m_isDryRun || plan.targets.empty())
        return rest;
    if (!m_isAgreed) {
        const QString question = QString("Set %1 camera(s) of the line \"%2\" as its inventory says?")
                                     .arg(plan.targets.size())
                                     .arg(printable(inventory.name));
        if (const int code = askForAgreement(world, question))
            return code;
    }
    const int code = write(world, inventory, unfinished, plan);
    return code == ExitWell ? rest : code;
}

void LineApplyCommand::tellPlan(Console& console, const LinePlan& plan) const
{
    std::vector<CameraCheck> checks;
    for (const LineTarget& target : plan.targets) {
        tellNetwork(console, target);
        if (!target.plan)
            continue;
        checks.push_back(*target.plan);
        console.object("plan", checkJson(*target.plan));
    }
    for (const ListedCamera& stranger : plan.strangers)
        console.err(stranger.title() + ": not in the inventory; it is left alone.\n");
    for (const LineCameraCheck& one : plan.settled) {
        console.object("line", lineJson(one));
        const bool isInOrder = one.match.state == LineState::InOrder;
        QStringList problems = isInOrder ? QStringList() : lineProblems(one);
        if (one.lacksComparison())
            problems += kNotCompared;
        if (!console.isJson())
            console.err(printable(one.name()) + ": " + lineStateWord(one.match.state) +
                        (problems.isEmpty() ? QString() : ": " + problems.join("; ")) + '\n');
    }
    if (console.isJson())
        return;
    if (m_isDryRun)
        console.out(checkText(checks, m_report.style()));
    else
        console.err(checkText(checks, m_report.style()));
}

// One camera proves the files before the others get theirs.
int LineApplyCommand::write(World& world, const Inventory& inventory, Unfinished& unfinished,
                            const LinePlan& plan) const
{
    const auto first = plan.targets.begin();
    const auto behindFirst = m_isAllAtOnce ? plan.targets.end() : first + 1;
    int code = writeBatch(world, inventory, unfinished, {first, behindFirst});
    if (behindFirst == plan.targets.end())
        return code;
    if (code == ExitWell)
        return writeBatch(world, inventory, unfinished, {behindFirst, plan.targets.end()});
    tellNotBegun(world.console, {behindFirst, plan.targets.end()});
    return code;
}

// What was planned is looked at again right before the first write: all of it, or nothing is written.
int LineApplyCommand::writeBatch(World& world, const Inventory& inventory, Unfinished& unfinished,
                                 const std::vector<LineTarget>& batch) const
{
    std::vector<ListedCamera> cameras;
    if (const int code = findLine(world, inventory, cameras))
        return code;
    QStringList names;
    for (const LineTarget& target : batch)
        names += target.wanted->name;
    const LinePlan now = planLine(inventory, unfinished, cameras, names, mayGoOn);
    bool isAsPlanned = true;
    for (const LineTarget& target : batch) {
        const QString objection = planObjection(target, now);
        if (!objection.isEmpty())
            world.console.err(printable(target.wanted->name) + ": " + objection + "; nothing was written.\n");
        isAsPlanned = isAsPlanned && objection.isEmpty();
    }
    if (!isAsPlanned)
        return Interrupt::isRequested() ? ExitInterrupted : ExitJobFailed;
    const QStringList finished = finishedBy(now.targets, unfinished);
    QString problem = unfinished.add(names);
    int code = problem.isEmpty() ? writeTargets(world, inventory, now.targets) : int(ExitInputOutput);
    if (code == ExitWell)
        problem = unfinished.remove(finished);
    if (problem.isEmpty())
        return code;
    world.console.err(problem + '\n');
    return ExitInputOutput;
}

int LineApplyCommand::writeTargets(World& world, const Inventory& inventory,
                                   const std::vector<LineTarget>& targets) const
{
    const int code = import(world.console, inventory, targets);
    if (code == ExitWell)
        return writeNames(world, targets);
    for (const LineTarget& target : targets)
        if (!target.network.isEmpty())
            world.console.err(printable(target.wanted->name) +
                              ": not begun: " + networkWords(target.network).join("; ") + ".\n");
    return code;
}

// Behind the features: a camera with another address has to be found again.
int LineApplyCommand::writeNames(World& world, const std::vector<LineTarget>& targets) const
{
    std::vector<NetworkJob> jobs;
    for (const LineTarget& target : targets)
        if (!target.network.isEmpty())
            jobs.push_back({target.camera, target.network});
    return jobs.empty() ? int(ExitWell)
                        : writeNetworks(world.console, lookOf(world), "line apply", m_audit.rule(), jobs);
}

int LineApplyCommand::import(Console& console, const Inventory& inventory,
                             const std::vector<LineTarget>& targets) const
{
    std::map<Group, std::vector<LineTarget>> groups;
    for (const LineTarget& target : targets)
        if (target.plan)
            groups[{inventory.ignoredOf(*target.wanted), target.wanted->userSet}].push_back(target);
    if (groups.empty())
        return ExitWell;
    ImportTask task;
    task.command = "line apply";
    task.snapshots = snapshotFolder(inventory);
    if (task.snapshots.isEmpty()) {
        console.err("No folder for snapshots can be made beside " + printable(inventory.path) + ".\n");
        return ExitInputOutput;
    }
    task.isVerified = true;
    task.isJson = m_json;
    task.audit = m_audit.rule();
    task.style = m_report.style();
    int code = ExitWell;
    for (const auto& [group, members] : groups) {
        if (code == ExitWell && Interrupt::isRequested())
            code = ExitInterrupted;
        if (code != ExitWell) {
            tellNotBegun(console, members);
            continue;
        }
        std::vector<ImportJob> jobs;
        for (const LineTarget& target : members)
            jobs.push_back({target.camera, target.files});
        task.ignored = group.first;
        task.userSet = {group.second, false};
        code = ImportProcedure(console, task).run(jobs);
    }
    return code;
}

} // namespace companion
