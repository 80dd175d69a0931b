#include "iefeatures/commands/CloneCommand.h"

#include "iefeatures/check/CheckReport.h"
#include "iefeatures/check/KindCheck.h"
#include "iefeatures/commands/Agreement.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
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
void tellPlan(Console& console, const ListedCamera& source, const std::vector<ListedCamera>& targets,
              const ie::FeaturesContent& content, const ImportOptions& options)
{
    std::vector<ListedCamera> alike;
    std::vector<CameraCheck> refused;
    for (const ListedCamera& target : targets)
        if (const auto refusal = refusalOfOtherKind(target, source))
            refused.push_back(*refusal);
        else
            alike.push_back(target);
    auto plan = checkCameras(console, alike, content, {CheckMode::Plan, false, options.ignored()},
                             [] { return !Interrupt::isRequested(); });
    plan.insert(plan.end(), refused.begin(), refused.end());
    for (const CameraCheck& check : plan)
        console.object("plan", checkJson(check));
    if (!console.isJson())
        console.err(checkText(plan, options.style()));
}

} // namespace

void CloneCommand::addOptions(CLI::App& app)
{
    app.add_option("--from", m_source,
                   "The camera to copy: its serial number, or name:NAME, address:ADDRESS, mac:MAC")
        ->required()
        ->type_name("S")
        ->check(isGiven("Name a camera."));
    m_targets.addOptions(app, "--to", "The cameras to set, by the same words");
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_flag("--yes", m_isAgreed, "Do not ask");
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_options.addSnapshot(app);
    m_options.addUserSet(app);
    m_options.addAudit(app);
    m_options.addReport(app);
    m_options.addIgnored(app);
    m_log.addOptions(app);
}

int CloneCommand::execute(World& world)
{
    if (const QString problem = m_options.outputProblem(); !problem.isEmpty()) {
        world.console.err(problem + '\n');
        return ExitInputOutput;
    }
    Roles roles;
    CameraSearch search(world, m_search, {true, m_targets.isOpen()});
    if (const int code = search.run([&](const auto& cameras) { return assign(cameras, roles); }))
        return code;
    if (const int code = objectTo(world.console, roles))
        return code;
    return search.codeOf(runLogged(world.console, m_log, [&] { return clone(world, roles); }));
}

CameraWord CloneCommand::sourceWord() const
{
    return cameraWordOrSerial(m_source);
}

// Whoever is there is set as the source is, but for the source.
CameraSearch::Choice CloneCommand::assign(const std::vector<ListedCamera>& cameras, Roles& roles) const
{
    const CameraWord word = sourceWord();
    const auto isSource = [&](const ListedCamera& camera) { return word.fits(camera); };
    roles = {};
    std::vector<ListedCamera> others;
    std::partition_copy(cameras.begin(), cameras.end(), std::back_inserter(roles.sources),
                        std::back_inserter(others), isSource);
    CameraSearch::Choice choice = m_targets.choose(m_targets.isOpen() ? others : cameras);
    roles.targets = choice.cameras;
    choice.cameras.insert(choice.cameras.end(), roles.sources.begin(), roles.sources.end());
    if (roles.sources.empty())
        choice.misses.prepend(word.missing());
    choice.misses.removeDuplicates();
    return choice;
}

int CloneCommand::objectTo(Console& console, const Roles& roles) const
{
    const CameraWord word = sourceWord();
    if (roles.sources.size() > 1) {
        console.err(word.ambiguous(roles.sources) + '\n');
        return ExitUsage;
    }
    if (std::any_of(roles.targets.begin(), roles.targets.end(),
                    [&](const ListedCamera& target) { return word.fits(target); })) {
        console.err("--from and --to name one camera: " + m_source + '\n');
        return ExitUsage;
    }
    return roles.sources.empty() || roles.targets.empty() ? ExitNoSuchCamera : ExitWell;
}

int CloneCommand::clone(World& world, const Roles& roles) const
{
    const QTemporaryDir folder;
    if (!folder.isValid()) {
        world.console.err("No temporary folder can be made: " + folder.errorString() + '\n');
        return ExitInputOutput;
    }
    const QString file = exportSource(world.console, roles.source(), folder.path());
    if (file.isEmpty())
        return Interrupt::isRequested() ? ExitInterrupted : ExitJobFailed;
    const FeaturesFileInput input = readFeaturesFile(file);
    if (!input.isGood()) {
        world.console.err(roles.source().title() + ": its export cannot be read as a features file.\n");
        return ExitJobFailed;
    }
    tellPlan(world.console, roles.source(), roles.targets, input.content, m_options);
    if (!m_isAgreed) {
        const QString question =
            QString("Set %1 camera(s) as %2 is set?").arg(roles.targets.size()).arg(roles.source().title());
        if (const int code = askForAgreement(world, question))
            return code;
    }

    ImportTask task;
    task.command = name();
    task.source = roles.source();
    task.isJson = m_json;
    m_options.fill(task);
    task.isVerified = true;
    return ImportProcedure(world.console, task).run(importJobs(roles.targets, readImportFiles({}, file)));
}

// The file's path; empty when there is none.
QString CloneCommand::exportSource(Console& console, const ListedCamera& source, const QString& folder) const
{
    const auto into = [&](const StructDeviceInfo&) { return folder; };
    const CameraExport done =
        runExports(console, {source},
                   {ExportTask::Format::FeaturesFile, into, m_json, m_options.unreadable()})
            .front();
    tellRemarks(console, done);
    if (!done.isWhole())
        console.err(source.title() + ": could not be exported, so no camera was set.\n");
    return done.isWhole() ? done.result.job.path : QString();
}

} // namespace companion
