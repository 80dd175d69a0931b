#include "iefeatures/imports/ImportProcedure.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/Text.h"

#include "jobs/worker/QOperateThread.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kMostNamed = 20; // in messages for people

bool isIncompleteAtWorst(const ImportOutcome& outcome)
{
    return outcome.state == ImportOutcome::State::Applied ||
           outcome.state == ImportOutcome::State::Incomplete;
}

bool goesOn(const CameraImport& result)
{
    const bool isSaved = !result.snapshot || result.snapshot->snapshot;
    return isSaved && std::all_of(result.jobs.begin(), result.jobs.end(), isIncompleteAtWorst);
}

const ImportOutcome& gravest(const std::vector<ImportOutcome>& jobs)
{
    std::vector<int> codes;
    for (const ImportOutcome& job : jobs)
        codes.push_back(importExitCode(job.state));
    const auto found = std::find(codes.begin(), codes.end(), gravestExitCode(codes));
    return jobs[size_t(found - codes.begin())];
}

// One outcome for the table: the gravest of the jobs, with the effort of all.
ImportOutcome summed(const CameraImport& result)
{
    ImportOutcome sum;
    sum.record.job.camera = result.camera;
    if (!result.jobs.empty())
        sum = gravest(result.jobs);
    sum.record.tally.requests = 0;
    sum.record.job.seconds = 0;
    for (const ImportOutcome& job : result.jobs) {
        sum.record.tally.requests += job.record.tally.requests;
        sum.record.job.seconds += job.record.job.seconds;
    }
    return sum;
}

std::vector<Change> changesOf(const CameraImport& result, const CallWatch::Blocks& blocks)
{
    std::vector<Change> changes;
    for (const ImportOutcome& job : result.jobs) {
        for (Change change : job.record.findings.changes.changes()) {
            const auto block = change.isRegister ? blocks.find(change.address) : blocks.end();
            if (block != blocks.end())
                change.feature = block->second;
            changes.push_back(change);
        }
    }
    return changes;
}

QStringList namesOf(const std::vector<Change>& changes)
{
    QStringList names;
    for (const Change& change : changes)
        names += change.feature.isEmpty() ? "register " + QString::number(change.address) : change.feature;
    names.removeDuplicates();
    return names;
}

// Features of the files that no job has come to.
QStringList notReached(const CameraImport& result, const ImportedFeatures& named)
{
    QStringList names = named.names;
    const auto drop = [&names](const QString& name) { names.removeAll(name); };
    for (const ImportOutcome& job : result.jobs) {
        const ObservedChanges& observed = job.record.findings.changes;
        std::for_each(observed.seenFeatures().begin(), observed.seenFeatures().end(), drop);
        for (const int64_t address : observed.seenRegisters())
            if (const auto block = named.blocks.find(address); block != named.blocks.end())
                drop(block->second);
    }
    return names;
}

QString listed(const QStringList& names)
{
    if (names.isEmpty())
        return "nothing";
    QString text = printable(names.mid(0, kMostNamed).join(", "));
    if (names.size() > kMostNamed)
        text += QString(" and %1 more").arg(names.size() - kMostNamed);
    return text;
}

// As a POSIX shell takes it for one word.
QString quoted(QString word)
{
    return '\'' + word.replace('\'', "'\\''") + '\'';
}

ImportedFeatures namedBy(const ImportTask& task)
{
    ImportedFeatures named = featuresOfFile(task.features);
    named.names = featuresOfBag(task.bag).names + named.names;
    named.names.removeDuplicates();
    return named;
}

} // namespace

int exitCodeOf(const CameraImport& result)
{
    if (result.snapshot && !result.snapshot->snapshot)
        return ExitJobFailed;
    std::vector<int> codes{importExitCode(summed(result).state)};
    if (result.verification && !result.verification->problem.isEmpty())
        codes.push_back(ExitJobFailed);
    else if (result.verification && !result.verification->isClean())
        codes.push_back(ExitNotAllApplied);
    if (!result.userSetProblem.isEmpty())
        codes.push_back(ExitJobFailed);
    return gravestExitCode(codes);
}

ImportProcedure::ImportProcedure(Console& console, const ImportTask& task)
    : m_console(console), m_task(task), m_named(namedBy(task))
{}

int ImportProcedure::run(const std::vector<ListedCamera>& cameras)
{
    m_results.clear();
    for (const ListedCamera& camera : cameras)
        m_results.emplace_back().camera = camera;
    if (!m_task.snapshots.isEmpty())
        takeSnapshots();
    if (!m_task.bag.isEmpty())
        import(JOB_FEATURE_BAG_IMPORT, m_task.bag);
    if (!m_task.features.isEmpty())
        import(JOB_FEATURE_XML_IMPORT, m_task.features);
    if (m_task.isVerified && !Interrupt::isRequested())
        verify();
    if (!m_task.userSet.name.isEmpty() && !Interrupt::isRequested())
        saveUserSets();
    if (Interrupt::isRequested())
        m_console.err(std::string("Interrupted.\n"));
    for (const CameraImport& result : m_results) {
        if (Interrupt::isRequested())
            tellInterrupted(result);
        offerRollback(result);
    }
    tellResults();
    if (m_task.isAudited)
        audit();
    return exitCode();
}

ImportProcedure::Cameras ImportProcedure::going()
{
    Cameras cameras;
    for (CameraImport& result : m_results)
        if (goesOn(result))
            cameras.push_back(&result);
    return cameras;
}

void ImportProcedure::takeSnapshots()
{
    std::vector<ListedCamera> cameras;
    for (const CameraImport& result : m_results)
        cameras.push_back(result.camera);
    const auto snapshots = companion::takeSnapshots(m_console, cameras, m_task.snapshots, m_task.isJson);
    for (size_t i = 0; i < m_results.size(); ++i) {
        m_results[i].snapshot = snapshots[i];
        for (const QString& problem : snapshots[i].problems)
            tell(cameras[i], problem);
        if (!snapshots[i].snapshot)
            tell(cameras[i], "there is no snapshot, so nothing was written to the camera.");
        else if (!m_task.isJson)
            tell(cameras[i], "snapshot " + printable(snapshots[i].folder));
    }
}

void ImportProcedure::import(unsigned type, const QString& file)
{
    const Cameras results = going();
    std::vector<ListedCamera> cameras;
    for (const CameraImport* result : results)
        cameras.push_back(result->camera);
    const auto setUp = [&](QOperateThread& worker, const StructDeviceInfo& device) {
        if (type == JOB_FEATURE_BAG_IMPORT)
            worker.SetFeatureBagImportJob(device, file);
        else
            worker.SetXmlImportJob(device, file);
    };
    const JobRun run{setUp, m_task.isJson, CallWatch::Refusal::BehindFeature, m_named.blocks, m_named.names};
    std::vector<ImportOutcome> outcomes;
    for (const JobRecord& record : runJobs(m_console, cameras, run))
        outcomes.push_back(examineImport(record));
    nameRegisters(m_named.blocks, outcomes);
    for (size_t i = 0; i < results.size(); ++i) {
        results[i]->jobs.push_back(outcomes[i]);
        for (const QString& remark : importRemarks(outcomes[i]))
            tell(cameras[i], remark);
    }
}

void ImportProcedure::verify()
{
    const Cameras results = going();
    inParallel(results.size(), [&](size_t i) {
        ImportTraces traces;
        traces.changes = changesOf(*results[i], m_named.blocks);
        for (const ImportOutcome& job : results[i]->jobs)
            traces.failures.insert(traces.failures.end(), job.record.findings.failures.begin(),
                                   job.record.findings.failures.end());
        results[i]->verification = companion::verify(results[i]->camera, m_task.features, traces);
    });
}

// What is not as it should be must not become what the camera starts with.
void ImportProcedure::saveUserSets()
{
    Cameras clean;
    for (CameraImport& result : m_results)
        if (exitCodeOf(result) == ExitWell && result.verification)
            clean.push_back(&result);
        else
            tell(result.camera, printable(m_task.userSet.name) + " was not saved: not all was applied.");
    inParallel(clean.size(), [&](size_t i) {
        clean[i]->userSetProblem = saveUserSet(clean[i]->camera, m_task.userSet);
        clean[i]->isUserSetSaved = clean[i]->userSetProblem.isEmpty();
    });
    for (const CameraImport* result : clean)
        tell(result->camera, result->isUserSetSaved ? "saved into " + printable(m_task.userSet.name) + '.'
                                                    : printable(m_task.userSet.name) +
                                                          " was not saved: " + result->userSetProblem);
}

void ImportProcedure::tellInterrupted(const CameraImport& result)
{
    if (goesOn(result) && !result.jobs.empty())
        return;
    const std::vector<Change> changes = changesOf(result, m_named.blocks);
    tell(result.camera, "written: " + listed(namesOf(changes)));
    tell(result.camera, "not reached: " + listed(notReached(result, m_named)));
}

// Only where there is something to undo.
void ImportProcedure::offerRollback(const CameraImport& result)
{
    if (!result.snapshot || !result.snapshot->snapshot || exitCodeOf(result) == ExitWell ||
        changesOf(result, m_named.blocks).empty())
        return;
    tell(result.camera, "to undo: iefeatures rollback " + quoted(result.snapshot->folder) + " --serial " +
                            quoted(result.camera.serial));
}

void ImportProcedure::tellResults()
{
    std::vector<ImportOutcome> outcomes;
    for (const CameraImport& result : m_results)
        outcomes.push_back(summed(result));
    m_console.out(m_task.isJson ? importJson(outcomes) : importTable(outcomes).toStdString());
    for (const CameraImport& result : m_results) {
        if (!result.verification)
            continue;
        m_console.out(m_task.isJson ? verificationJson(*result.verification)
                                    : verificationText(*result.verification).toStdString());
    }
}

void ImportProcedure::audit()
{
    std::vector<AuditFile> files;
    for (const QString& file : {m_task.bag, m_task.features})
        if (!file.isEmpty())
            files.push_back(auditFile(file));
    std::vector<AuditEntry> entries;
    for (const CameraImport& result : m_results) {
        AuditEntry& entry = entries.emplace_back();
        entry.command = m_task.command;
        entry.source = m_task.source;
        entry.files = files;
        entry.camera = result.camera;
        for (const ImportOutcome& job : result.jobs) {
            const ObservedChanges& observed = job.record.findings.changes;
            entry.descriptionHash = observed.descriptionHash();
            if (!observed.firmware().isEmpty())
                entry.firmware = observed.firmware();
            entry.notApplied += notApplied(job.record.findings);
        }
        entry.changes = changesOf(result, m_named.blocks);
        if (result.snapshot && result.snapshot->snapshot)
            entry.snapshot = result.snapshot->folder;
        if (result.verification)
            entry.notApplied += result.verification->missing();
        entry.notApplied.removeDuplicates();
        if (result.isUserSetSaved)
            entry.userSet = m_task.userSet.name;
        entry.outcome = importWord(summed(result).state);
        entry.exitCode = Interrupt::isRequested() ? int(ExitInterrupted) : exitCodeOf(result);
    }
    const QString problem = appendToAudit(entries);
    if (!problem.isEmpty())
        m_console.err(problem + '\n');
}

int ImportProcedure::exitCode() const
{
    if (Interrupt::isRequested())
        return ExitInterrupted;
    std::vector<int> codes;
    for (const CameraImport& result : m_results)
        codes.push_back(exitCodeOf(result));
    return gravestExitCode(codes);
}

void ImportProcedure::tell(const ListedCamera& camera, const QString& text)
{
    m_console.err(camera.title() + ": " + text + '\n');
}

} // namespace companion
