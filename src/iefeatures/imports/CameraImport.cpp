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
    const NamedFeatures::Blocks& blocks = result.files->named.blocks;
    std::vector<Change> changes;
    QByteArray description;
    for (const ImportOutcome& job : result.jobs) {
        if (!job.record.findings.changes.description().isEmpty())
            description = job.record.findings.changes.description();
        for (Change change : job.record.findings.changes.changes()) {
            const auto block = change.isRegister ? blocks.find(change.address) : blocks.end();
            if (block != blocks.end())
                change.feature = block->second;
            changes.push_back(change);
        }
    }
    return netChanges(changes, changes.empty() ? Selectors() : selectorsIn(description));
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
