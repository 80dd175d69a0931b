#include "iefeatures/imports/CameraImport.h"

#include "iefeatures/running/NetChanges.h"

#include <algorithm>

namespace companion
{
namespace
{

bool isIncompleteAtWorst(CameraVerdict verdict)
{
    return verdict <= CameraVerdict::Incomplete;
}

bool lacksSnapshot(const CameraImport& result)
{
    return result.snapshot && !result.snapshot->snapshot;
}

// The first error of the gravest verdict is the one that is told.
void add(CameraCheck& report, CameraVerdict verdict, const QString& error)
{
    if (verdict > report.verdict || (verdict == report.verdict && report.error.isEmpty()))
        report.error = error;
    report.verdict = std::max(report.verdict, verdict);
}

CameraCheck reportOfJobs(const CameraImport& result)
{
    CameraCheck report;
    report.camera = result.camera;
    report.verdict = result.jobs.empty() ? CameraVerdict::NotStarted : CameraVerdict::Applied;
    for (const ImportOutcome& job : result.jobs) {
        add(report, job.verdict, importError(job));
        report.identity.insert(report.identity.end(), job.identity.begin(), job.identity.end());
        const std::vector<EntryCheck> failed = failedEntries(job);
        report.entries.insert(report.entries.end(), failed.begin(), failed.end());
    }
    return report;
}

// Registers with the names of their features.
void appendNamed(const std::vector<Change>& seen, const NamedFeatures::Blocks& blocks,
                 std::vector<Change>& changes)
{
    for (Change change : seen) {
        const auto block = change.isRegister ? blocks.find(change.address) : blocks.end();
        if (block != blocks.end())
            change.feature = block->second;
        changes.push_back(change);
    }
}

} // namespace

bool goesOn(const CameraImport& result)
{
    return !result.isRefused && !lacksSnapshot(result) &&
           std::all_of(result.jobs.begin(), result.jobs.end(),
                       [](const ImportOutcome& job) { return isIncompleteAtWorst(job.verdict); });
}

CameraCheck reportOf(const CameraImport& result)
{
    CameraCheck report = result.check ? *result.check : reportOfJobs(result);
    if (lacksSnapshot(result))
        report.error = result.snapshot->problems.join(' ');
    if (!result.userSetProblem.isEmpty())
        add(report, CameraVerdict::Failed, result.userSetProblem);
    const bool isUnchecked =
        result.check && !result.isRefused && result.check->verdict == CameraVerdict::NotStarted;
    if (result.isCutShort || isUnchecked)
        add(report, CameraVerdict::Interrupted, "interrupted before the last step.");
    return report;
}

ImportOutcome summed(const CameraImport& result)
{
    ImportOutcome sum;
    sum.verdict = reportOf(result).verdict;
    sum.record.job.camera = result.camera;
    for (const ImportOutcome& job : result.jobs) {
        sum.record.tally.requests += job.record.tally.requests;
        sum.record.job.seconds += job.record.job.seconds;
    }
    return sum;
}

std::vector<Change> changesOf(const CameraImport& result)
{
    std::vector<Change> changes;
    QByteArray description;
    for (const ImportOutcome& job : result.jobs) {
        const ObservedChanges& observed = job.record.findings.changes;
        if (!observed.description().isEmpty())
            description = observed.description();
        appendNamed(observed.changes(), result.files->named.blocks, changes);
    }
    return netChanges(changes, changes.empty() ? Selectors() : selectorsIn(description));
}

std::vector<Change> inDoubt(const CameraImport& result)
{
    std::vector<Change> changes;
    for (const ImportOutcome& job : result.jobs)
        appendNamed(job.record.findings.changes.inDoubt(), result.files->named.blocks, changes);
    if (result.userSet == SavedSet::State::InDoubt)
        changes.push_back({"UserSetSave", false, 0, {}, {}});
    return changes;
}

QStringList notReached(const CameraImport& result)
{
    const NamedFeatures& named = result.files->named;
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

} // namespace companion
