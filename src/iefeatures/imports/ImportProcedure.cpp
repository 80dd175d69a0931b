#include "iefeatures/imports/ImportProcedure.h"

#include "iefeatures/cameras/InParallel.h"
#include "iefeatures/check/EntryNature.h"
#include "iefeatures/check/ImportProof.h"
#include "iefeatures/check/KindCheck.h"
#include "iefeatures/check/WriteSafety.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ExportStage.h"
#include "iefeatures/imports/WriteReport.h"
#include "iefeatures/running/NetChanges.h"
#include "iefeatures/running/ReadingProgress.h"

#include "jobs/worker/QOperateThread.h"

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kMostNamed = 20; // in messages for people

QStringList namesOf(const std::vector<Change>& changes)
{
    QStringList names;
    for (const Change& change : changes)
        names += change.feature.isEmpty() ? "register " + hexAddress(change.address) : change.feature;
    names.removeDuplicates();
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

// Nothing is wrong with it but another camera's file.
bool isHeldBack(const CameraImport& result)
{
    return result.isRefused && result.files->input.isGood() &&
           result.check->verdict == CameraVerdict::NotStarted;
}

CheckRule ruleOf(const ImportTask& task)
{
    CheckRule rule(CheckMode::Verify, false, task.ignored);
    rule.asksCategories = task.style.isGrouped;
    return rule;
}

void markRefused(CameraImport& result, CameraVerdict verdict, const QString& error)
{
    result.isRefused = true;
    result.check = CameraCheck{result.camera, verdict, error, {}, {}};
}

ImportTraces tracesOf(const CameraImport& result)
{
    ImportTraces traces{changesOf(result), {}};
    for (const ImportOutcome& job : result.jobs) {
        const std::vector<EntryCheck> failed = failedEntries(job);
        traces.failures.insert(traces.failures.end(), failed.begin(), failed.end());
    }
    return traces;
}

} // namespace

ImportProcedure::ImportProcedure(Console& console, const ImportTask& task)
    : m_console(console), m_task(task), m_rule(ruleOf(task)), m_audit(console, task.audit)
{}

int ImportProcedure::run(const std::vector<ImportJob>& jobs)
{
    m_results.clear();
    for (const ImportJob& job : jobs) {
        CameraImport& result = m_results.emplace_back();
        result.camera = job.camera;
        result.files = job.files;
    }
    const bool isGood =
        std::all_of(jobs.begin(), jobs.end(), [](const ImportJob& job) { return job.files->input.isGood(); });
    if (!isGood)
        refuse();
    else
        refuseOtherKinds();
    if (isGood && !m_task.isForced)
        refuseDangers();
    if (!beginAudit())
        return ExitInputOutput;
    if (isGood)
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

// No camera is asked when one of the files is none.
void ImportProcedure::refuse()
{
    QStringList errors;
    for (CameraImport& result : m_results) {
        const FeaturesFileInput& input = result.files->input;
        markRefused(result, input.isGood() ? CameraVerdict::NotStarted : input.verdict,
                    input.isGood() ? "nothing was written, since another camera's file is none."
                                   : input.error);
        errors += input.error;
    }
    errors.removeAll({});
    errors.removeDuplicates();
    for (const QString& error : errors)
        m_console.err(error + '\n');
}

void ImportProcedure::refuseOtherKinds()
{
    if (!m_task.source)
        return;
    for (CameraImport& result : m_results) {
        result.check = refusalOfOtherKind(result.camera, *m_task.source);
        result.isRefused = result.check.has_value();
    }
}

// Over connections that only read. A camera that cannot be asked is told by its job.
void ImportProcedure::refuseDangers()
{
    inParallel(m_results.size(), [&](size_t i) {
        const ie::FeaturesContent& content = m_results[i].files->input.content;
        if (m_results[i].isRefused || !mayHoldDangers(content))
            return;
        const auto refused = refusal(m_results[i].camera, content);
        if (!refused)
            return;
        m_results[i].isRefused = true;
        m_results[i].check = refused;
    });
}

std::vector<AuditFile> ImportProcedure::auditFilesOf(const ImportFiles& files)
{
    if (m_task.source && !files.features.isEmpty())
        return {m_audit.keep(files.features)};
    std::vector<AuditFile> found;
    for (const QString& file : {files.bag, files.original.isEmpty() ? files.features : files.original})
        if (!file.isEmpty())
            found.push_back(auditFile(file));
    return found;
}

// Snapshots write as well: they move selectors.
bool ImportProcedure::beginAudit()
{
    for (const CameraImport& result : m_results)
        if (const auto [known, isNew] = m_auditFiles.try_emplace(result.files); isNew)
            known->second = auditFilesOf(*result.files);
    std::vector<AuditEntry> entries;
    for (const CameraImport* result : going())
        entries.push_back(auditEntryOf(*result));
    return entries.empty() || m_audit.begin(entries);
}

void ImportProcedure::doAllSteps()
{
    if (!m_task.snapshots.isEmpty())
        takeSnapshots();
    import(JOB_FEATURE_BAG_IMPORT, &ImportFiles::bag);
    import(JOB_FEATURE_XML_IMPORT, &ImportFiles::features);
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
    for (CameraImport* result : going()) {
        result->isCutShort = !result->files->features.isEmpty();
        if (result->isCutShort && !result->check)
            tellFailures(*result);
    }
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

// Those that have such a file.
void ImportProcedure::import(unsigned type, QString ImportFiles::*file)
{
    std::map<int, CameraImport*> results; // by device
    std::vector<ListedCamera> cameras;
    for (CameraImport* result : going()) {
        if ((*result->files.*file).isEmpty())
            continue;
        results[result->camera.device.nDeviceID] = result;
        cameras.push_back(result->camera);
    }
    const auto setUp = [&](QOperateThread& worker, const StructDeviceInfo& device) {
        const QString& path = *results.at(device.nDeviceID)->files.*file;
        if (type == JOB_FEATURE_BAG_IMPORT)
            worker.SetFeatureBagImportJob(device, path);
        else
            worker.SetXmlImportJob(device, path);
    };
    const auto expected = [&](const ListedCamera& camera) {
        return &results.at(camera.device.nDeviceID)->files->named;
    };
    std::vector<ImportOutcome> outcomes;
    for (const JobRecord& record :
         runJobs(m_console, cameras, {setUp, m_task.isJson, CallWatch::Refusal::BehindFeature, expected}))
        outcomes.push_back(examineImport(record));
    inParallel(cameras.size(),
               [&](size_t i) { tellFailuresApart(*results.at(cameras[i].device.nDeviceID), outcomes[i]); });
    for (size_t i = 0; i < cameras.size(); ++i)
        settleOutcome(*results.at(cameras[i].device.nDeviceID), outcomes[i]);
}

// Before anything is said of them. Only cameras that have refused something are asked.
void ImportProcedure::tellFailuresApart(const CameraImport& result, ImportOutcome& outcome)
{
    nameRegisters(result.files->named.blocks, outcome);
    std::vector<EntryCheck> failures = failedEntries(outcome);
    if (outcome.verdict != CameraVerdict::Incomplete || failures.empty())
        return;
    tellApart(result.camera, result.files->named.values, m_rule, failures);
    settle(outcome, failures);
}

// A second job that an interrupt has kept from its start leaves the camera half done.
void ImportProcedure::settleOutcome(CameraImport& result, ImportOutcome outcome)
{
    identify(outcome, result.files->input.content.header);
    if (outcome.verdict == CameraVerdict::NotStarted && !result.jobs.empty())
        outcome.verdict = CameraVerdict::Interrupted;
    result.jobs.push_back(outcome);
    QStringList remarks = importRemarks(outcome);
    if (!m_task.isVerified || result.files->features.isEmpty())
        remarks += failureRemarks(outcome);
    for (const QString& remark : remarks)
        tell(result.camera, remark);
}

// Who was to be checked is told by that, once; where it could not be, what the jobs have seen is all there
// is.
void ImportProcedure::tellFailures(const CameraImport& result)
{
    for (const ImportOutcome& job : result.jobs)
        for (const QString& remark : failureRemarks(job))
            tell(result.camera, remark);
}

void ImportProcedure::verify()
{
    Cameras results = going();
    results.erase(
        std::remove_if(results.begin(), results.end(),
                       [](const CameraImport* result) { return result->files->features.isEmpty(); }),
        results.end());
    std::vector<ListedCamera> cameras;
    for (const CameraImport* result : results)
        cameras.push_back(result->camera);
    ReadingProgress progress(m_console, cameras, "verifying");
    inParallel(results.size(), [&](size_t i) {
        const ie::FeaturesContent& file = results[i]->files->input.content;
        CameraCheck check = checkCamera(
            cameras[i], file, m_rule, [] { return !Interrupt::isRequested(); },
            [&] { progress.advance(i, int(file.entries.size())); });
        progress.end(i);
        layOver(check, tracesOf(*results[i]));
        results[i]->check = check;
    });
    for (const CameraImport* result : results)
        if (result->check->verdict > CameraVerdict::Incomplete)
            tellFailures(*result);
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
    std::vector<SavedSet> saved(clean.size());
    inParallel(clean.size(), [&](size_t i) { saved[i] = saveUserSet(clean[i]->camera, m_task.userSet); });
    for (size_t i = 0; i < clean.size(); ++i) {
        const QString text = savingText(m_task.userSet.name, saved[i]);
        clean[i]->userSet = saved[i].state;
        clean[i]->userSetProblem = saved[i].problem.isEmpty() ? QString() : text;
        tell(clean[i]->camera, text);
    }
}

void ImportProcedure::tellInterrupted(const CameraImport& result)
{
    if (goesOn(result) && !result.jobs.empty())
        return;
    tell(result.camera, "written: " + listed(namesOf(changesOf(result))));
    tell(result.camera, "not reached: " + listed(notReached(result)));
}

// Empty where there is nothing to undo.
QString ImportProcedure::undoCommand(const CameraImport& result) const
{
    if (!result.snapshot || !result.snapshot->snapshot ||
        (changesOf(result).empty() && inDoubt(result).empty()))
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
        if (const auto doubts = inDoubt(result); !doubts.empty())
            tell(result.camera, doubtText(listed(titlesOf(doubts))));
        if (m_task.tellsChanges && !result.jobs.empty() && !m_task.isJson)
            tell(result.camera, "changed: " + listed(titlesOf(changesOf(result))));
        if (result.check)
            reports.push_back(reportOf(result));
        m_console.object("result", resultJson(result));
    }
    if (!m_task.isJson)
        m_console.out((m_task.isSummedUp ? QString() : importTable(rows)) + checkText(reports, m_task.style));
}

Json ImportProcedure::resultJson(const CameraImport& result) const
{
    const ImportOutcome sum = summed(result);
    CameraCheck report = reportOf(result);
    report.changed = titlesOf(changesOf(result));
    report.inDoubt = titlesOf(inDoubt(result));
    Json object = checkJson(report);
    object["requests"] = sum.record.tally.requests;
    object["seconds"] = sum.record.job.seconds;
    object["snapshot"] =
        result.snapshot && result.snapshot->snapshot ? json(result.snapshot->folder) : Json();
    object["undo"] = jsonUnlessEmpty(undoCommand(result));
    object["user_set"] = Json();
    if (!m_task.userSet.name.isEmpty())
        object["user_set"] = {{"name", json(m_task.userSet.name)},
                              {"saved", result.userSet == SavedSet::State::InDoubt
                                            ? Json()
                                            : Json(result.userSet == SavedSet::State::Saved)},
                              {"error", jsonUnlessEmpty(result.userSetProblem)}};
    return object;
}

AuditEntry ImportProcedure::auditEntryOf(const CameraImport& result) const
{
    const CameraCheck report = reportOf(result);
    AuditEntry entry;
    entry.command = m_task.command;
    entry.source = m_task.source;
    if (const auto files = m_auditFiles.find(result.files); files != m_auditFiles.end())
        entry.files = files->second;
    entry.only = m_task.only;
    entry.camera = result.camera;
    for (const ImportOutcome& job : result.jobs) {
        const ObservedChanges& observed = job.record.findings.changes;
        entry.descriptionHash = observed.descriptionHash();
        if (!observed.firmware().isEmpty())
            entry.firmware = observed.firmware();
    }
    entry.changes = changesOf(result);
    entry.inDoubt = inDoubt(result);
    entry.notApplied = report.notApplied();
    if (result.snapshot && result.snapshot->snapshot)
        entry.snapshot = result.snapshot->folder;
    if (result.userSet == SavedSet::State::Saved)
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
        if (!isHeldBack(result))
            verdicts.push_back(reportOf(result).verdict);
    return exitCodeOf(gravest(verdicts));
}

std::vector<CameraVerdict> ImportProcedure::verdicts() const
{
    std::vector<CameraVerdict> verdicts;
    for (const CameraImport& result : m_results)
        verdicts.push_back(reportOf(result).verdict);
    return verdicts;
}

void ImportProcedure::tell(const ListedCamera& camera, const QString& text)
{
    m_console.err(camera.title() + ": " + printable(text) + '\n');
}

} // namespace companion
