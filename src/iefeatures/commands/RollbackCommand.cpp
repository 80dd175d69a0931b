#include "iefeatures/commands/RollbackCommand.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/CheckReport.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/OptionChecks.h"
#include "iefeatures/console/Text.h"

#include "jobs/rules/DeviceNames.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstring>

namespace companion
{
namespace
{

// What is taken of it, and in `remark` what is not there; a sentence, or an empty text.
SharedImportFiles filesOf(const Snapshot& snapshot, QString& remark)
{
    const QString& file = snapshot.featuresFile;
    const QString& bag = snapshot.bagFile;
    if (file.isEmpty())
        remark = "The snapshot has no features file; its feature bag alone is taken.";
    else if (bag.isEmpty())
        remark = "The snapshot has no feature bag; its features file alone is taken.";
    SharedImportFiles files = readImportFiles(bag, file);
    if (file.isEmpty() || bag.isEmpty() || !files->input.isGood() || !namedByBag(bag).names.isEmpty())
        return files;
    remark = "The snapshot's feature bag is empty; its features file alone is taken.";
    return readImportFiles({}, file);
}

// As the import of the features file would, when the feature bag is loaded already.
CameraCheck proofOf(const ListedCamera& camera, const ie::FeaturesContent& content)
{
    ie::FeaturesContent head;
    head.header = content.header;
    head.hasFeatures = true;
    if (!content.hasFeatures)
        return {camera, CameraVerdict::Ready, {}, {}, {}};
    return checkCamera(camera, head, CheckMode::Plan, [] { return !Interrupt::isRequested(); });
}

} // namespace

void RollbackCommand::addOptions(CLI::App& app)
{
    app.add_option("SNAPSHOT", m_folder,
                   "Folder of one snapshot, or the one that --snapshot has named, for all of an import")
        ->required()
        ->type_name("")
        ->check(isGiven("Name a folder."));
    app.add_option("--at", m_time,
                   "Of several imports the one of this time, as its snapshots are called; else the newest")
        ->type_name("TIME")
        ->check(isGiven("Name a time."));
    m_selection.addOptions(app);
    m_search.addWait(app);
    m_search.addKeepGoing(app);
    app.add_flag("--force", m_isForced,
                 "Take the snapshot of another camera of the same model, and write all that it names");
    app.add_flag("--json", m_json, "JSON lines instead of text");
    m_options.addAudit(app);
    m_options.addReport(app);
    m_options.addIgnored(app);
    m_log.addOptions(app);
}

int RollbackCommand::execute(World& world)
{
    if (const int code = readSources(world.console))
        return code;
    CameraSearch search(world, m_search, {true, m_selection.isOpen()});
    if (const int code = search.run([&](const auto& found) { return choose(found); }))
        return code;
    int objection = ExitWell;
    for (const Job& job : m_jobs)
        objection = std::max(objection, objectTo(world.console, job));
    if (objection != ExitWell)
        return objection;
    return search.codeOf(runLogged(world.console, m_log, [&] { return rollBack(world.console); }));
}

// All files, before anything is done: what one has written would otherwise stay when the next is none.
int RollbackCommand::readSources(Console& console)
{
    QString problem;
    const QString folder = QString::fromStdString(m_folder);
    const auto one = findSnapshot(folder, problem);
    m_isOne = one.has_value();
    QString none;
    const std::vector<Snapshot> snapshots =
        m_isOne ? std::vector<Snapshot>{*one} : findSnapshots(folder, QString::fromStdString(m_time), none);
    if (snapshots.empty()) {
        console.err(
            (none.startsWith(printable(folder) + " has no snapshot") && m_time.empty() ? problem : none) +
            '\n');
        return ExitInputOutput;
    }
    CameraVerdict verdict = CameraVerdict::Ready;
    for (const Snapshot& snapshot : snapshots) {
        QString remark;
        m_sources.push_back({snapshot, filesOf(snapshot, remark)});
        const FeaturesFileInput& input = m_sources.back().files->input;
        if (!input.isGood())
            tellError(console, input, m_json);
        else if (!remark.isEmpty())
            console.err((m_isOne ? QString() : printable(snapshot.folder) + ": ") + remark + '\n');
        verdict = std::max(verdict, input.verdict);
    }
    return exitCodeOf(verdict);
}

// With --all whoever was imported into is meant, and not whoever is there.
CameraSelection::Choice RollbackCommand::choose(const std::vector<ListedCamera>& found)
{
    CameraSelection::Choice choice = m_selection.choose(found);
    const std::vector<ListedCamera> chosen = std::move(choice.cameras);
    choice.cameras.clear();
    m_jobs.clear();
    for (const ListedCamera& camera : chosen)
        pair(camera, choice);
    for (const Source& source : m_sources)
        if (!m_isOne && m_selection.takesAll() &&
            std::none_of(found.begin(), found.end(),
                         [&](const ListedCamera& camera) { return isOf(source.snapshot, camera); }))
            choice.misses += "No camera is there for the snapshot " + printable(source.snapshot.folder) + '.';
    choice.refusals.removeDuplicates();
    return choice;
}

void RollbackCommand::pair(const ListedCamera& camera, CameraSelection::Choice& choice)
{
    std::vector<const Source*> own;
    for (const Source& source : m_sources)
        if (m_isOne || isOf(source.snapshot, camera))
            own.push_back(&source);
    if (own.size() > 1 || (own.size() == 1 && !m_isOne && camera.hasTwin))
        choice.refusals += camera.title() + ": there are more cameras or snapshots of its model and serial "
                                            "number; name one snapshot and one camera.";
    else if (own.size() == 1) {
        choice.cameras.push_back(camera);
        m_jobs.push_back({camera, own.front()});
    } else if (!m_selection.takesAll())
        choice.lacks += camera.title() + ": there is no snapshot of it.";
}

int RollbackCommand::rollBack(Console& console) const
{
    if (const int code = proveCameras(console, m_jobs))
        return code;
    std::vector<ImportJob> jobs;
    for (const Job& job : m_jobs)
        jobs.push_back({job.camera, job.source->files});
    return ImportProcedure(console, task()).run(jobs);
}

// All cameras, before the first of them is written to.
int RollbackCommand::proveCameras(Console& console, const std::vector<Job>& jobs) const
{
    std::vector<CameraCheck> checks(jobs.size());
    inParallel(jobs.size(),
               [&](size_t i) { checks[i] = proofOf(jobs[i].camera, jobs[i].source->files->input.content); });
    if (Interrupt::isRequested())
        return ExitInterrupted;
    const CameraVerdict verdict = gravestOf(checks);
    if (verdict == CameraVerdict::Ready)
        return ExitWell;
    console.err(checkText(checks, m_options.style()) + "Nothing was written.\n");
    for (const CameraCheck& check : checks)
        console.object("result", checkJson(check));
    return exitCodeOf(verdict);
}

ImportTask RollbackCommand::task() const
{
    ImportTask task;
    m_options.fill(task);
    task.command = name();
    task.isVerified = true;
    task.tellsChanges = true;
    task.isForced = m_isForced;
    task.isJson = m_json;
    return task;
}

// The feature bag is loaded without a look at whom it belongs to, so that has to come before. A bag alone
// tells that by its name.
int RollbackCommand::objectTo(Console& console, const Job& job) const
{
    const ListedCamera& camera = job.camera;
    const bool hasFile = !job.source->snapshot.featuresFile.isEmpty();
    const QString header = job.source->files->input.content.header.model;
    const QString model = ie::modelNameAsUtf8(camera.device.stDeviceInfo);
    const QString file = snapshotName(job.source->snapshot);
    const bool isOwn = isOf(job.source->snapshot, camera);
    if (hasFile ? header != model : !isOwn && !file.startsWith(model + '_')) {
        console.err(camera.title() + ": the snapshot is of another model, " +
                    printable(hasFile ? header : file.section('_', 0, -2)) + ".\n");
        return ExitIncompatible;
    }
    if (m_isForced || isOwn)
        return ExitWell;
    console.err(camera.title() + ": the snapshot is of another camera, " +
                printable(file.chopped(int(std::strlen(".fpk")))) + "; --force takes it all the same.\n");
    return ExitIncompatible;
}

} // namespace companion
