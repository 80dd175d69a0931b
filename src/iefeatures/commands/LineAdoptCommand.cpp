#include "iefeatures/commands/LineAdoptCommand.h"

#include "iefeatures/commands/Agreement.h"
#include "iefeatures/commands/LineFile.h"
#include "iefeatures/commands/LineTaking.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineLock.h"
#include "iefeatures/line/LineReport.h"
#include "iefeatures/running/JobRun.h"

#include <CLI/CLI.hpp>

#include <QDateTime>
#include <QFileInfo>

namespace companion
{
namespace
{

bool mayGoOn()
{
    return !Interrupt::isRequested();
}

// "Gate 3.20260102T030405Z.fpk": when the file was written.
QString nameUnderItsTime(const QFileInfo& file)
{
    const QString time = file.lastModified().toUTC().toString("yyyyMMdd'T'HHmmss'Z'");
    return file.path() + '/' + file.completeBaseName() + '.' + time + '.' + file.suffix();
}

// The files beside the inventory that the new ones take the place of. A sentence where one cannot be kept.
QString keepOldFiles(const Inventory& inventory, const InventoryCamera& camera)
{
    for (const QString& file : {camera.featuresFile, camera.bagFile}) {
        const QFileInfo old(inventory.resolved(file));
        if (file.isEmpty() || !old.isFile())
            continue;
        const QString kept = nameUnderItsTime(old);
        if (!QFileInfo::exists(kept) && !QFile::copy(old.filePath(), kept))
            return printable(old.filePath()) + " cannot be kept as " + printable(kept) + '.';
    }
    return {};
}

} // namespace

void LineAdoptCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "The inventory")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a file."));
    app.add_option("--camera", m_camera, "The camera, by its name in the inventory")
        ->required()
        ->type_name("NAME")
        ->check(isGiven("Name a camera."));
    m_search.addWait(app);
    app.add_flag("--yes", m_isAgreed, "Do not ask");
    app.add_option("--pause", m_pause, "Seconds between the two looks at what changes by itself (default 3)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 3600.0));
    m_report.addDetails(app);
    m_report.addWide(app);
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_log.addOptions(app);
}

int LineAdoptCommand::execute(World& world)
{
    Inventory inventory;
    if (!readInventoryOrTell(world.console, m_file, inventory))
        return ExitInputOutput;
    if (!hasCameras(world.console, inventory, {QString::fromStdString(m_camera)}))
        return ExitUsage;
    std::vector<CapturedCamera> cameras(1);
    const QString name = QString::fromStdString(m_camera);
    if (const int code = findCameraOf(world, m_search, inventory, name, cameras.front()))
        return code;
    return runLogged(world.console, m_log, [&] { return adopt(world, inventory, cameras); });
}

int LineAdoptCommand::adopt(World& world, const Inventory& inventory,
                            std::vector<CapturedCamera>& cameras) const
{
    const QString name = QString::fromStdString(m_camera);
    LineLock lock(inventory.path);
    if (const QString holder = lock.take(); !holder.isEmpty()) {
        world.console.err(holder + '\n');
        return ExitJobFailed;
    }
    if (!differs(world.console, inventory, cameras.front().camera))
        return Interrupt::isRequested() ? ExitInterrupted : ExitWell;
    if (!m_isAgreed)
        if (const int code = askForAgreement(world, "Let \"" + printable(name) + "\" be right as it is now?"))
            return code;
    if (const QString problem = keepOldFiles(inventory, *inventory.find(name)); !problem.isEmpty()) {
        world.console.err(problem + '\n');
        return ExitInputOutput;
    }
    CaptureTask task;
    task.isJson = m_json;
    task.pause = std::chrono::milliseconds(qint64(m_pause * 1000));
    task.mayGoOn = mayGoOn;
    if (const int code = captureAll(world, inventory, task, cameras))
        return code;
    return saveCaptured(world.console, inventory, cameras, Taken::Refreshed);
}

// Tells what differs; what is as it should be needs no more.
bool LineAdoptCommand::differs(Console& console, const Inventory& inventory, const ListedCamera& camera) const
{
    Inventory alone = inventory;
    alone.cameras = {*inventory.find(QString::fromStdString(m_camera))};
    const LineCheck check = checkLine(console, alone, {camera}, false, askCameras(mayGoOn));
    console.object("line", lineJson(check.cameras.front()));
    if (!m_json)
        console.err(lineText(check, m_report.style()));
    if (check.gravest() != LineState::InOrder)
        return mayGoOn();
    const QString rest = check.cameras.front().lacksComparison()
                             ? "; its features are not compared, and \"line init --refresh\" takes them again"
                             : "";
    console.err(printable(QString::fromStdString(m_camera)) + " is as the inventory says" + rest + ".\n");
    return false;
}

} // namespace companion
