#include "iefeatures/commands/CloneCommand.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/WholeExport.h"
#include "iefeatures/files/FeaturesFileInput.h"

#include <CLI/CLI.hpp>

#include <QTemporaryDir>

#include <algorithm>

namespace companion
{
namespace
{

// To people on the message stream: what it looks like is theirs to judge, the results come later.
void tellPlan(Console& console, const std::vector<ListedCamera>& targets, const ie::FeaturesContent& content)
{
    const auto plan =
        checkCameras(targets, content, CheckMode::Plan, [] { return !Interrupt::isRequested(); });
    for (const CameraCheck& check : plan)
        console.object("plan", checkJson(check));
    if (!console.isJson())
        console.err(checkText(plan));
}

} // namespace

void CloneCommand::addOptions(CLI::App& app)
{
    app.add_option("--from", m_source, "Serial number of the camera to copy")->required()->type_name("S");
    app.add_option("--to", m_targets, "Serial numbers of the cameras to set")->required()->type_name("S");
    app.add_flag("--yes", m_isAgreed, "Do not ask");
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_options.addSnapshot(app);
    m_options.addUserSet(app);
    m_options.addAudit(app);
    m_options.addDetails(app);
    m_log.addOptions(app);
}

int CloneCommand::execute(World& world)
{
    Roles roles;
    if (const int code = assign(world, roles))
        return code;
    return runLogged(world.console, m_log, [&] { return clone(world, roles); });
}

int CloneCommand::assign(World& world, Roles& roles) const
{
    if (std::find(m_targets.begin(), m_targets.end(), m_source) != m_targets.end()) {
        world.console.err("--from and --to name one camera: " + m_source + '\n');
        return ExitUsage;
    }
    std::vector<ListedCamera> cameras;
    if (!findCameras(world, cameras))
        return ExitInputOutput;
    const auto source = CameraSelection::bySerial({m_source}, cameras);
    const auto targets = CameraSelection::bySerial(m_targets, cameras);
    const QStringList misses = source.misses + targets.misses;
    if (!misses.isEmpty()) {
        world.console.err(misses.join('\n') + '\n');
        return ExitNoSuchCamera;
    }
    if (source.cameras.size() > 1) {
        world.console.err("More than one camera has the serial number \"" + m_source + "\".\n");
        return ExitUsage;
    }
    roles = {source.cameras.front(), targets.cameras};
    return ExitWell;
}

int CloneCommand::clone(World& world, const Roles& roles) const
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        world.console.err("No temporary folder can be made: " + folder.errorString() + '\n');
        return ExitInputOutput;
    }
    const QString file = exportSource(world.console, roles.source, folder.path());
    if (file.isEmpty())
        return Interrupt::isRequested() ? ExitInterrupted : ExitJobFailed;
    const FeaturesFileInput input = readFeaturesFile(file);
    if (!input.isGood()) {
        world.console.err(roles.source.title() + ": its export cannot be read as a features file.\n");
        return ExitJobFailed;
    }
    tellPlan(world.console, roles.targets, input.content);
    int code = ExitWell;
    if (!m_isAgreed && !isAgreedTo(world, roles, code))
        return code;

    ImportTask task;
    task.command = name();
    task.features = file;
    task.source = roles.source.serial;
    task.isJson = m_json;
    m_options.fill(task);
    task.isVerified = true;
    return ImportProcedure(world.console, task).run(roles.targets);
}

// The file's path; empty when there is none.
QString CloneCommand::exportSource(Console& console, const ListedCamera& source, const QString& folder) const
{
    const auto into = [&](const StructDeviceInfo&) { return folder; };
    const CameraExport done =
        runExports(console, {source}, {ExportTask::Format::FeaturesFile, into, m_json}).front();
    tellRemarks(console, done);
    if (!done.isWhole())
        console.err(source.title() + ": could not be exported, so no camera was set.\n");
    return done.isWhole() ? done.result.job.path : QString();
}

bool CloneCommand::isAgreedTo(World& world, const Roles& roles, int& code) const
{
    if (Interrupt::isRequested()) {
        code = ExitInterrupted;
        return false;
    }
    const QString question =
        QString("Set %1 camera(s) as %2 is set? [y/N] ").arg(roles.targets.size()).arg(roles.source.title());
    const std::optional<std::string> answer = world.ask(world.console, question.toStdString());
    if (!answer) {
        world.console.err(std::string("There is no terminal to ask on; --yes goes on without.\n"));
        code = ExitUsage;
        return false;
    }
    const bool isYes = *answer == "y" || *answer == "Y" || *answer == "yes";
    if (!isYes)
        world.console.err(std::string("Nothing was written.\n"));
    code = Interrupt::isRequested() ? ExitInterrupted : isYes ? ExitWell : ExitJobFailed;
    return isYes && !Interrupt::isRequested();
}

} // namespace companion
