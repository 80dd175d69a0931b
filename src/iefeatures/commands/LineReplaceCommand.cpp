#include "iefeatures/commands/LineReplaceCommand.h"

#include "iefeatures/commands/Agreement.h"
#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/commands/LineFile.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineLock.h"
#include "iefeatures/replace/Restart.h"
#include "iefeatures/running/JobRun.h"

#include <CLI/CLI.hpp>

namespace companion
{
namespace
{

bool mayGoOn()
{
    return !Interrupt::isRequested();
}

std::string objectionToWord(const std::string& word)
{
    return cameraWord(word) ? "" : "Write serial:NUMBER, mac:MAC or address:ADDRESS.";
}

bool isFree(const ListedCamera& camera)
{
    return camera.device.nStatus != KX_AVAILABILITY_IN_USE;
}

// What a person has agreed to.
bool isUnchanged(const ListedCamera& then, const ListedCamera& now)
{
    return then.mac == now.mac && then.guid == now.guid && then.model == now.model &&
           then.serial == now.serial && then.userName == now.userName && then.address == now.address;
}

} // namespace

void LineReplaceCommand::addOptions(CLI::App& app)
{
    app.add_option("FILE", m_file, "The inventory")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a file."));
    app.add_option("--camera", m_camera, "The camera that is gone, by its name in the inventory")
        ->required()
        ->type_name("NAME")
        ->check(isGiven("Name a camera."));
    app.add_option("--with", m_with, "The new camera: serial:NUMBER, mac:MAC or address:ADDRESS")
        ->type_name("CAMERA")
        ->check(objectionToWord);
    app.add_option("--also-known", m_neighbours, "Inventories of neighbours, whose cameras are not taken")
        ->type_name("FILE")
        ->check(isGiven("Name a file."));
    app.add_flag("--take-named", m_takesNamed, "Take the camera of --with also where it has a name");
    app.add_flag("--force", m_isForced, "Go on also where the camera that is gone answers");
    app.add_flag("--accept-firmware", m_acceptsFirmware,
                 "Of a camera with another firmware: set what it knows of the bag, by name");
    app.add_flag("--no-reset", m_isNotReset, "Do not restart the new camera");
    app.add_option("--wait", m_wait,
                   "How long to wait for a camera that restarts, or whose control has to run out (120)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 86400.0));
    app.add_flag("--yes", m_isAgreed, "Do not ask");
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_audit.addOptions(app);
    m_report.addDetails(app);
    m_report.addOptions(app);
    m_log.addOptions(app);
}

std::chrono::milliseconds LineReplaceCommand::patience() const
{
    return std::chrono::milliseconds(qint64(m_wait * 1000));
}

int LineReplaceCommand::execute(World& world)
{
    if (m_takesNamed && m_with.empty()) {
        world.console.err(std::string("--take-named goes with --with.\n"));
        return ExitUsage;
    }
    Inventory inventory;
    std::vector<Inventory> neighbours;
    if (const int code = readAll(world.console, inventory, neighbours))
        return code;
    LineLock lock(inventory.path);
    if (const QString holder = lock.take(); !holder.isEmpty()) {
        world.console.err(holder + '\n');
        return ExitJobFailed;
    }
    return runLogged(world.console, m_log, [&] { return replaceLocked(world); });
}

int LineReplaceCommand::readAll(Console& console, Inventory& inventory,
                                std::vector<Inventory>& neighbours) const
{
    if (!readInventoryOrTell(console, m_file, inventory))
        return ExitInputOutput;
    for (const std::string& file : m_neighbours)
        if (!readInventoryOrTell(console, file, neighbours.emplace_back()))
            return ExitInputOutput;
    return hasCameras(console, inventory, {QString::fromStdString(m_camera)}) ? ExitWell : ExitUsage;
}

// What stands in the inventory counts from here on, where nobody else changes it.
int LineReplaceCommand::replaceLocked(World& world) const
{
    Inventory inventory;
    std::vector<Inventory> neighbours;
    if (const int code = readAll(world.console, inventory, neighbours))
        return code;
    const InventoryCamera& wanted = *inventory.find(QString::fromStdString(m_camera));
    const ReplacementJournal journal(inventory.path, wanted.name);
    QString problem;
    std::optional<ReplacementRecord> record = journal.read(problem);
    ListedCamera camera;
    if (!problem.isEmpty()) {
        world.console.err(problem + '\n');
        return ExitInputOutput;
    }
    if (const int code = choose(world, inventory, neighbours, wanted, record, camera))
        return code;
    ReplaceTask task{inventory, wanted};
    task.isRestarted = !m_isNotReset;
    task.acceptsFirmware = m_acceptsFirmware;
    task.patience = patience();
    task.audit = m_audit.rule();
    task.style = m_report.style();
    task.isJson = m_json;
    const Look look = lookOf(world);
    Replacement replacement(world.console, look, task, journal);
    if (const int code = agree(world, wanted, replacement.plan(camera), camera))
        return code;
    if (!record)
        record = recordOf(camera);
    if (problem = journal.write(*record); !problem.isEmpty()) {
        world.console.err(problem + '\n');
        return ExitInputOutput;
    }
    return replacement.run(camera, *record);
}

int LineReplaceCommand::choose(World& world, const Inventory& inventory,
                               const std::vector<Inventory>& neighbours, const InventoryCamera& wanted,
                               std::optional<ReplacementRecord>& record, ListedCamera& camera) const
{
    if (record)
        return awaitBegun(world, *record, camera);
    std::vector<ListedCamera> cameras;
    if (const int code = findLine(world, inventory, cameras))
        return code;
    CandidateRule rule;
    rule.chosen = cameraWord(m_with);
    rule.takesNamed = m_takesNamed;
    rule.isForced = m_isForced;
    const CandidateChoice choice = chooseCandidate(inventory, neighbours, wanted, cameras, rule);
    for (const QString& sentence : choice.told)
        world.console.err(sentence + '\n');
    if (!choice.camera) {
        CameraSearch::tellProblems(world.console);
        for (const QString& obstacle : hostObstacles(wanted.interfaceName))
            world.console.err("What may hide cameras: " + obstacle + ".\n");
    }
    camera = choice.camera.value_or(ListedCamera());
    return choice.refusal;
}

// It may be restarting, or under the control of the command that was stopped.
int LineReplaceCommand::awaitBegun(World& world, const ReplacementRecord& record, ListedCamera& camera) const
{
    const QString begun = record.begun.toString("yyyy-MM-dd HH:mm:ss 'UTC'");
    const QString done = record.steps.isEmpty() ? QString("nothing") : record.steps.join(", ");
    world.console.err("A replacement with " + record.title() + " was begun at " + begun + "; done: " + done +
                      ". It goes on from there.\n");
    const auto word = cameraWord(m_with);
    ListedCamera known;
    known.mac = record.mac;
    known.guid = record.guid;
    known.model = record.model;
    known.serial = record.serial;
    const auto now = awaitCamera(known, lookOf(world), patience(), mayGoOn, isFree);
    if (!now) {
        world.console.err(std::string(mayGoOn() ? "It is not there, or is controlled by somebody else.\n"
                                                : "Interrupted.\n"));
        return mayGoOn() ? ExitNoSuchCamera : ExitInterrupted;
    }
    camera = *now;
    if (!word || word->fits(camera))
        return ExitWell;
    world.console.err(
        std::string("--with means another camera: end that replacement first, or remove its journal.\n"));
    return ExitJobFailed;
}

// Who is there is looked for again behind the answer: a question may stand for hours.
int LineReplaceCommand::agree(World& world, const InventoryCamera& wanted, const QStringList& plan,
                              ListedCamera& camera) const
{
    const QString place = camera.address.isEmpty() ? QString() : " at " + camera.address;
    const QString text = recordOf(camera).title() + printable(place) + " takes the place of \"" +
                         printable(wanted.name) + "\" (" +
                         printable(wanted.model + ' ' + wanted.serial +
                                   (wanted.mac.isEmpty() ? QString() : ", " + wanted.mac)) +
                         "), and gets\n  " + plan.join("\n  ") + '\n';
    world.console.err(text);
    if (!m_isAgreed)
        if (const int code = askForAgreement(world, "Let it?"))
            return code;
    const auto now = findAgain(lookOf(world), camera);
    if (now && isUnchanged(camera, *now) && isFree(*now)) {
        camera = *now;
        return ExitWell;
    }
    world.console.err(std::string("It is not what it was any more; nothing was written.\n"));
    return ExitJobFailed;
}

} // namespace companion
