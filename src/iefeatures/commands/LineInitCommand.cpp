#include "iefeatures/commands/LineInitCommand.h"

#include "iefeatures/commands/LineFile.h"
#include "iefeatures/commands/LineTaking.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineMatch.h"
#include "iefeatures/running/JobRun.h"

#include <CLI/CLI.hpp>

#include <QFileInfo>

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
    std::vector<CapturedCamera> cameras(1);
    if (const int code = find(world, inventory, cameras))
        return code;
    return runLogged(world.console, m_log, [&] { return take(world, inventory, cameras); });
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
        const bool isThere =
            m_refreshed.empty() || hasCameras(console, inventory, {QString::fromStdString(m_refreshed)});
        return isThere ? ExitWell : ExitUsage;
    }
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink()) {
        console.err(printable(path) + " is there already; --add or --refresh change it.\n");
        return ExitInputOutput;
    }
    inventory = newInventory(path, QString::fromStdString(m_lineName));
    return ExitWell;
}

int LineInitCommand::find(World& world, const Inventory& inventory,
                          std::vector<CapturedCamera>& cameras) const
{
    const QString refreshed = QString::fromStdString(m_refreshed);
    const int code = refreshed.isEmpty()
                         ? choose(world, inventory, cameras)
                         : findCameraOf(world, m_search, inventory, refreshed, cameras.front());
    if (code != ExitWell || !tellProblems(world.console, cameras))
        return code;
    world.console.err(std::string("Nothing was written.\n"));
    return ExitUsage;
}

int LineInitCommand::take(World& world, const Inventory& inventory,
                          std::vector<CapturedCamera>& cameras) const
{
    CaptureTask task;
    task.userSet = QString::fromStdString(m_userSet);
    task.isJson = m_json;
    task.pause = std::chrono::milliseconds(qint64(m_pause * 1000));
    task.mayGoOn = [] { return !Interrupt::isRequested(); };
    if (const int code = captureAll(world, inventory, task, cameras))
        return code;
    const Taken taken = isNew() ? Taken::AsNew : m_isAdded ? Taken::Added : Taken::Refreshed;
    return saveCaptured(world.console, inventory, cameras, taken);
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

} // namespace companion
