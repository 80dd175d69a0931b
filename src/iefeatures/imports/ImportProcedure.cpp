#include "iefeatures/imports/ImportProcedure.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/EntryNature.h"
#include "iefeatures/check/ImportProof.h"
#include "iefeatures/check/WriteSafety.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ExportStage.h"
#include "iefeatures/files/FeatureBagInput.h"
#include "iefeatures/running/NetChanges.h"

#include "jobs/worker/QOperateThread.h"

namespace companion
{
namespace
{

constexpr int kMostNamed = 20; // in messages for people

QStringList namesOf(const std::vector<Change>& changes)
{
    QStringList names;
    for (const Change& change : changes)
        names += change.feature.isEmpty() ? "register " + QString::number(change.address) : change.feature;
    names.removeDuplicates();
    return names;
}

QStringList titlesOf(const std::vector<Change>& changes)
{
    QStringList titles;
    for (const Change& change : changes)
        titles += titleOf(change);
    return titles;
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

// Of two files the first that is none makes the verdict.
FeaturesFileInput inputOf(const ImportTask& task)
{
    const FeaturesFileInput bag = task.bag.isEmpty() ? FeaturesFileInput() : lookAtFeatureBag(task.bag);
    if (!bag.isGood() || task.features.isEmpty())
        return bag;
    return readFeaturesFile(task.features);
}

NamedFeatures namedByBoth(const ImportTask& task, const FeaturesFileInput& input)
{
    NamedFeatures named = namedByBag(task.bag);
    named.add(namedBy(input.content));
    return named;
}

void markRefused(CameraImport& result, CameraVerdict verdict, const QString& error)
{
    result.isRefused = true;
    result.check = CameraCheck{result.camera, verdict, error, {}, {}};
}

ImportTraces tracesOf(const CameraImport& result, const NamedFeatures& named)
{
    ImportTraces traces{changesOf(result, named), {}};
    for (const ImportOutcome& job : result.jobs) {
        const std::vector<EntryCheck> failed = failedEntries(job);
        traces.failures.insert(traces.failures.end(), failed.begin(), failed.end());
    }
    return traces;
}

} // namespace

ImportProcedure::ImportProcedure(Console& console, const ImportTask& task)
    : m_console(console), m_task(task), m_input(inputOf(task)), m_named(namedByBoth(task, m_input)),
      m_audit(console, task.audit)
{}

int ImportProcedure::run(const std::vector<ListedCamera>& cameras)
{
    m_results.clear();
    for (const ListedCamera& camera : cameras)
        m_results.emplace_back().camera = camera;
    if (!m_input.isGood())
        refuse();
    else if (!m_task.isForced)
        refuseDangers();
    if (!beginAudit())
        return ExitInputOutput;
    if (m_input.isGood())
        doAllSteps();
    if (Interrupt::isRequested())
        m_console.err(std::string("Interrupted.\n"));
    for (const CameraImport& result : m_results) {
        if (Interrupt::isRequested())
            tellInterrupted(result);
        offerRollback(result);
    }
    tellResults();
    audit();
    return exitCode();
}

// No camera is asked about a file that is none.
void ImportProcedure::refuse()
{
    m_console.err(m_input.error + '\n');
    for (CameraImport& result : m_results)
        markRefused(result, m_input.verdict, m_input.error);
}

// Over connections that only read. A camera that cannot be asked is told by its job.
void ImportProcedure::refuseDangers()
{
    if (m_task.features.isEmpty() || !mayHoldDangers(m_input.content))
        return;
    inParallel(m_results.size(), [&](size_t i) {
        const std::vector<EntryCheck> dangers = dangersOn(m_results[i].camera, m_input.content);
        if (dangers.empty())
            return;
        markRefused(m_results[i], CameraVerdict::BadFile, dangerText(dangers));
        m_results[i].check->entries = dangers;
    });
}

// Snapshots write as well: they move selectors.
bool ImportProcedure::beginAudit()
{
    if (m_task.source && !m_task.features.isEmpty())
        m_files.push_back(m_audit.keep(m_task.features));
    else
        for (const QString& file : {m_task.bag, m_task.only.isEmpty() ? m_task.features : m_task.original})
            if (!file.isEmpty())
                m_files.push_back(auditFile(file));
    std::vector<AuditEntry> entries;
    for (const CameraImport* result : going())
        entries.push_back(auditEntryOf(*result));
    return entries.empty() || m_audit.begin(entries);
}

void ImportProcedure::doAllSteps()
{
    if (!m_task.snapshots.isEmpty())
        takeSnapshots();
    if (!m_task.bag.isEmpty())
        import(JOB_FEATURE_BAG_IMPORT, m_task.bag);
    if (!m_task.features.isEmpty())
        import(JOB_FEATURE_XML_IMPORT, m_task.features);
    if (m_task.isVerified && Interrupt::isRequested())
        return cutShort();
    if (m_task.isVerified)
        verify();
    if (m_task.userSet.name.isEmpty())
        return;
    if (Interrupt::isRequested())
        return cutShort();
    saveUserSets();
}

// What was left of the steps is what cameras that have come so far do not get.
void ImportProcedure::cutShort()
{
    for (CameraImport* result : going())
        result->isCutShort = true;
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
    const Cameras results = going();
    for (const CameraImport* result : results)
        cameras.push_back(result->camera);
    if (const QString warning = sharedFolderWarning(m_task.snapshots); !warning.isEmpty())
        m_console.err(warning + '\n');
    const auto snapshots =
        companion::takeSnapshots(m_console, cameras, {m_task.snapshots, m_task.isJson, m_task.unreadable});
    for (size_t i = 0; i < results.size(); ++i) {
        results[i]->snapshot = snapshots[i];
        for (const QString& sentence : snapshots[i].untold)
            tell(cameras[i], sentence);
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
    tellFailuresApart(outcomes);
    for (size_t i = 0; i < results.size(); ++i) {
        // A second job that an interrupt has kept from its start leaves the camera half done.
        if (outcomes[i].verdict == CameraVerdict::NotStarted && !results[i]->jobs.empty())
            outcomes[i].verdict = CameraVerdict::Interrupted;
        results[i]->jobs.push_back(outcomes[i]);
        for (const QString& remark : importRemarks(outcomes[i]))
            tell(cameras[i], remark);
    }
}

// Before anything is said of them. Only cameras that have refused something are asked.
void ImportProcedure::tellFailuresApart(std::vector<ImportOutcome>& outcomes)
{
    inParallel(outcomes.size(), [&](size_t i) {
        std::vector<EntryCheck> failures = failedEntries(outcomes[i]);
        if (outcomes[i].verdict != CameraVerdict::Incomplete || failures.empty())
            return;
        tellApart(outcomes[i].record.job.camera, m_named.values, failures);
        settle(outcomes[i], failures);
    });
}

void ImportProcedure::verify()
{
    const Cameras results = going();
    inParallel(results.size(), [&](size_t i) {
        CameraCheck check = checkCamera(results[i]->camera, m_input.content, CheckMode::Verify,
                                        [] { return !Interrupt::isRequested(); });
        layOver(check, tracesOf(*results[i], m_named));
        results[i]->check = check;
    });
}

// What is not as it should be must not become what the camera starts with.
void ImportProcedure::saveUserSets()
{
    const QString set = printable(m_task.userSet.name);
    Cameras clean;
    for (CameraImport& result : m_results)
        if (result.check && reportOf(result).verdict == CameraVerdict::Applied)
            clean.push_back(&result);
        else
            tell(result.camera, set + " was not saved: not all was applied.");
    inParallel(clean.size(), [&](size_t i) {
        const QString problem = saveUserSet(clean[i]->camera, m_task.userSet);
        clean[i]->isUserSetSaved = problem.isEmpty();
        if (!problem.isEmpty())
            clean[i]->userSetProblem = set + " was not saved: " + problem;
    });
    for (const CameraImport* result : clean)
        tell(result->camera, result->isUserSetSaved ? "saved into " + set + '.' : result->userSetProblem);
}

void ImportProcedure::tellInterrupted(const CameraImport& result)
{
    if (goesOn(result) && !result.jobs.empty())
        return;
    tell(result.camera, "written: " + listed(namesOf(changesOf(result, m_named))));
    tell(result.camera, "not reached: " + listed(notReached(result, m_named)));
}

// Empty where there is nothing to undo.
QString ImportProcedure::undoCommand(const CameraImport& result) const
{
    if (!result.snapshot || !result.snapshot->snapshot || changesOf(result, m_named).empty())
        return {};
    return "iefeatures rollback " + quoted(result.snapshot->folder) + " --serial " +
           quoted(result.camera.serial);
}

void ImportProcedure::offerRollback(const CameraImport& result)
{
    const QString command = undoCommand(result);
    if (!command.isEmpty() && reportOf(result).verdict != CameraVerdict::Applied)
        tell(result.camera, "to undo: " + command);
}

void ImportProcedure::tellResults()
{
    std::vector<ImportOutcome> rows;
    std::vector<CameraCheck> reports;
    for (const CameraImport& result : m_results) {
        rows.push_back(summed(result));
        if (m_task.tellsChanges && !result.jobs.empty() && !m_task.isJson)
            tell(result.camera, "changed: " + listed(titlesOf(changesOf(result, m_named))));
        if (result.check)
            reports.push_back(reportOf(result));
        m_console.object("result", resultJson(result));
    }
    if (!m_task.isJson)
        m_console.out(importTable(rows) + checkText(reports, m_task.detail));
}

Json ImportProcedure::resultJson(const CameraImport& result) const
{
    const ImportOutcome sum = summed(result);
    CameraCheck report = reportOf(result);
    report.changed = titlesOf(changesOf(result, m_named));
    Json object = checkJson(report);
    object["requests"] = sum.record.tally.requests;
    object["seconds"] = sum.record.job.seconds;
    object["snapshot"] =
        result.snapshot && result.snapshot->snapshot ? json(result.snapshot->folder) : Json();
    object["undo"] = jsonUnlessEmpty(undoCommand(result));
    object["user_set"] = Json();
    if (!m_task.userSet.name.isEmpty())
        object["user_set"] = {{"name", json(m_task.userSet.name)},
                              {"saved", result.isUserSetSaved},
                              {"error", jsonUnlessEmpty(result.userSetProblem)}};
    return object;
}

AuditEntry ImportProcedure::auditEntryOf(const CameraImport& result) const
{
    const CameraCheck report = reportOf(result);
    AuditEntry entry;
    entry.command = m_task.command;
    entry.source = m_task.source;
    entry.files = m_files;
    entry.only = m_task.only;
    entry.camera = result.camera;
    for (const ImportOutcome& job : result.jobs) {
        const ObservedChanges& observed = job.record.findings.changes;
        entry.descriptionHash = observed.descriptionHash();
        if (!observed.firmware().isEmpty())
            entry.firmware = observed.firmware();
    }
    entry.changes = changesOf(result, m_named);
    entry.notApplied = report.notApplied();
    if (result.snapshot && result.snapshot->snapshot)
        entry.snapshot = result.snapshot->folder;
    if (result.isUserSetSaved)
        entry.userSet = m_task.userSet.name;
    entry.outcome = report.verdict;
    return entry;
}

void ImportProcedure::audit()
{
    std::vector<AuditEntry> entries;
    for (const CameraImport& result : m_results)
        entries.push_back(auditEntryOf(result));
    m_audit.end(entries);
}

int ImportProcedure::exitCode() const
{
    if (Interrupt::isRequested())
        return ExitInterrupted;
    std::vector<CameraVerdict> verdicts;
    for (const CameraImport& result : m_results)
        verdicts.push_back(reportOf(result).verdict);
    return exitCodeOf(gravest(verdicts));
}

void ImportProcedure::tell(const ListedCamera& camera, const QString& text)
{
    m_console.err(camera.title() + ": " + text + '\n');
}

} // namespace companion
