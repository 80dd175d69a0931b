#include "iefeatures/commands/LineInitCommand.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/commands/LineCheckCommand.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/InventoryEdit.h"
#include "iefeatures/line/LineMatch.h"
#include "iefeatures/running/JobRun.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

#include <algorithm>

namespace companion
{
namespace
{

LineNaming namingOf(const std::string& word)
{
    return word == "serial"    ? LineNaming::Serial
           : word == "address" ? LineNaming::Address
           : word == "order"   ? LineNaming::Order
                               : LineNaming::Name;
}

// False: none has.
bool tellProblems(Console& console, const std::vector<CapturedCamera>& cameras)
{
    bool hasAny = false;
    for (const CapturedCamera& one : cameras)
        for (const QString& problem : one.problems) {
            console.err(one.camera.title() + ": " + printable(problem) + '\n');
            hasAny = true;
        }
    return hasAny;
}

// Who goes by another name, or is at another address, than at the first look.
void compareLooks(const std::vector<ListedCamera>& now, std::vector<CapturedCamera>& cameras)
{
    for (CapturedCamera& one : cameras) {
        const ListedCamera& before = one.camera;
        const bool isAlike = std::any_of(now.begin(), now.end(), [&](const ListedCamera& camera) {
            return camera.mac == before.mac && camera.guid == before.guid && camera.serial == before.serial &&
                   camera.userName == before.userName && camera.address == before.address;
        });
        if (!isAlike)
            one.problems += "its name or address was another one at the second look, or it was gone.";
    }
}

} // namespace

void LineInitCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "The inventory that is written")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a file."));
    m_selection.addOptional(app);
    m_search.addWait(app);
    app.add_option("--line", m_lineName, "What the line is called (default: as the file)")
        ->type_name("NAME")
        ->check(isGiven("Name the line."));
    app.add_option("--name-by", m_naming,
                   "What cameras are called there: serial, address or order; else their names")
        ->check(CLI::IsMember({"serial", "address", "order"}))
        ->type_name("BY");
    app.add_option("--user-set", m_userSet,
                   "The user set that keeps their state (default: UserSet1, where there is one)")
        ->type_name("SET")
        ->check(isGiven("Name a user set."));
    auto* add = app.add_flag("--add", m_isAdded, "Add the cameras to an inventory that is there");
    app.add_option("--refresh", m_refreshed, "Take this camera of the inventory again as it is now")
        ->type_name("CAMERA")
        ->check(isGiven("Name a camera."))
        ->excludes(add);
    app.add_option("--pause", m_pause, "Seconds between the two looks at what changes by itself (default 3)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0));
    app.add_flag("--json", m_json, "JSON lines instead of text: the jobs' signals, then each camera");
    m_log.addOptions(app);
}

int LineInitCommand::execute(World& world)
{
    Inventory inventory;
    if (const int code = prepare(world.console, inventory))
        return code;
    return runLogged(world.console, m_log, [&] { return take(world, inventory); });
}

// Before any camera is asked.
int LineInitCommand::prepare(Console& console, Inventory& inventory) const
{
    if (m_selection.isEmpty() == m_refreshed.empty()) {
        console.err(std::string("Choose cameras, by --all or otherwise, or name one to --refresh.\n"));
        return ExitUsage;
    }
    const QString path = QString::fromStdString(m_file);
    if (!isNew()) {
        if (!readInventoryOrTell(console, m_file, inventory))
            return ExitInputOutput;
        if (m_refreshed.empty() || inventory.find(QString::fromStdString(m_refreshed)))
            return ExitWell;
        console.err(printable(path) + " has no camera \"" + printable(QString::fromStdString(m_refreshed)) +
                    "\".\n");
        return ExitUsage;
    }
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink()) {
        console.err(printable(path) + " is there already; --add or --refresh change it.\n");
        return ExitInputOutput;
    }
    inventory = newInventory(path, QString::fromStdString(m_lineName));
    return ExitWell;
}

int LineInitCommand::take(World& world, const Inventory& inventory) const
{
    std::vector<CapturedCamera> cameras;
    const int chosen = isNew() || m_isAdded ? choose(world, inventory, cameras)
                                            : chooseForRefresh(world, inventory, cameras);
    if (chosen != ExitWell)
        return chosen;
    if (tellProblems(world.console, cameras)) {
        world.console.err(std::string("Nothing was written.\n"));
        return ExitUsage;
    }
    if (const int code = captureAll(world, inventory, cameras))
        return code;
    return write(world.console, inventory, cameras);
}

// Those that an inventory has already have to be left out by whoever adds to it.
int LineInitCommand::choose(World& world, const Inventory& inventory,
                            std::vector<CapturedCamera>& cameras) const
{
    CameraSearch search(world, m_search, {true, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& found) { return m_selection.choose(found); }))
        return code;
    QStringList known;
    for (const InventoryCamera& camera : inventory.cameras)
        known += camera.name;
    cameras = nameCameras(search.cameras(), namingOf(m_naming), known);
    for (const LineMatch& match : matchLine(inventory, search.cameras()))
        if (match.wanted && match.camera && !match.isOther)
            for (CapturedCamera& one : cameras)
                if (one.camera.device.nDeviceID == match.camera->device.nDeviceID)
                    one.problems = QStringList("it is in the inventory, as \"" + match.wanted->name +
                                               "\"; --refresh takes it again.");
    return ExitWell;
}

int LineInitCommand::chooseForRefresh(World& world, const Inventory& inventory,
                                      std::vector<CapturedCamera>& cameras) const
{
    const QString name = QString::fromStdString(m_refreshed);
    std::optional<ListedCamera> meant;
    CameraSearch search(world, m_search, {true, false});
    const int code = search.run([&](const std::vector<ListedCamera>& found) {
        CameraSearch::Choice choice;
        for (const LineMatch& match : matchLine(inventory, found))
            if (match.wanted && match.wanted->name == name && match.camera && !match.isOther)
                choice.cameras.push_back(*match.camera);
        if (choice.cameras.empty())
            choice.misses += "The camera \"" + printable(name) + "\" of the inventory is not there.";
        return choice;
    });
    if (code != ExitWell)
        return code;
    cameras = nameCameras(search.cameras(), LineNaming::Name, {});
    CapturedCamera& one = cameras.front();
    one.entry.name = name;
    one.entry.userName = one.camera.userName;
    one.problems.clear();
    return ExitWell;
}

int LineInitCommand::captureAll(World& world, const Inventory& inventory,
                                std::vector<CapturedCamera>& cameras) const
{
    const Interrupt interrupt;
    CaptureTask task;
    task.userSet = QString::fromStdString(m_userSet);
    task.isJson = m_json;
    task.pause = std::chrono::milliseconds(qint64(m_pause * 1000));
    task.mayGoOn = [] { return !Interrupt::isRequested(); };
    capture(world.console, inventory, task, cameras);
    if (!Interrupt::isRequested()) {
        std::vector<ListedCamera> now;
        if (const int code = CameraSearch::findAll(world, now))
            return code;
        compareLooks(now, cameras);
    }
    const bool hasProblems = tellProblems(world.console, cameras);
    if (!hasProblems && !Interrupt::isRequested())
        return ExitWell;
    world.console.err(std::string("The inventory was not written.\n"));
    return Interrupt::isRequested() ? ExitInterrupted : ExitJobFailed;
}

int LineInitCommand::write(Console& console, const Inventory& inventory,
                           const std::vector<CapturedCamera>& cameras) const
{
    QString problem;
    const QByteArray text = m_refreshed.empty() ? withCaptured(inventory, cameras, problem)
                                                : withRefreshed(inventory, cameras.front(), problem);
    if (problem.isEmpty())
        problem = saveInventory(inventory, text, isNew());
    if (!problem.isEmpty()) {
        console.err(problem + '\n');
        return ExitInputOutput;
    }
    for (const CapturedCamera& one : cameras) {
        console.object("line_camera", {{"name", json(one.entry.name)},
                                       {"camera", cameraJson(one.camera)},
                                       {"features", json(one.entry.featuresFile)},
                                       {"bag", json(one.entry.bagFile)},
                                       {"moved", json(QStringList(one.entry.remarks.keys()))}});
        for (auto it = one.entry.remarks.cbegin(); it != one.entry.remarks.cend(); ++it)
            console.err(one.camera.title() + ": " + printable(it.key() + ' ' + it.value()) +
                        (m_refreshed.empty() ? "; it is proposed as ignored.\n" : ".\n"));
    }
    if (!m_json)
        console.out(QString("%1 camera%2 in %3\n")
                        .arg(cameras.size())
                        .arg(cameras.size() == 1 ? "" : "s")
                        .arg(printable(inventory.path)));
    return ExitWell;
}

} // namespace companion
