#include "iefeatures/imports/ImportSummary.h"

#include "iefeatures/check/ImportProof.h"
#include "iefeatures/console/Text.h"

#include "jobs/worker/QOperateThread.h"

#include <algorithm>

namespace companion
{
namespace
{

constexpr int kMostNamed = 20; // in messages for people

const QStringList kIdentity = {"BoardDeviceType", "DeviceFirmwareVersion"}; // read from the camera

bool hasLineFailed(const std::vector<FailedCall>& failures)
{
    return std::any_of(failures.begin(), failures.end(),
                       [](const FailedCall& failure) { return KX_IS_LINE_FAILURE(failure.status); });
}

CameraVerdict verdictOnBag(const JobRecord& record)
{
    switch (record.findings.bagStatus) {
    case KX_OK:
        return CameraVerdict::Applied;
    case KX_E_INCOMPLETE:
        return CameraVerdict::Incomplete;
    case KX_E_FILE:
        return CameraVerdict::UnreadableFile;
    case KX_E_FILE_FORMAT:
        return CameraVerdict::BadFile;
    default:
        return CameraVerdict::Failed;
    }
}

// The worker's results reach its signals only in part.
CameraVerdict verdictOnFeaturesFile(const JobRecord& record)
{
    const bool isTold = record.job.hasFailed;
    switch (record.job.errorCode) {
    case IMPORT_OK:
        if (isTold) // the file has changed since it was looked at
            return CameraVerdict::UnreadableFile;
        break;
    case IMPORT_ERR_NO_FEATURES:
        return CameraVerdict::BadFile;
    case IMPORT_ERR_VERSION: // another version is no failure, none at all is one
    case IMPORT_ERR_MODEL:
        if (isTold)
            return CameraVerdict::Incompatible;
        break;
    case IMPORT_ERR_APPLY: // a block that is broken; what comes before it was applied
        return CameraVerdict::Incomplete;
    default:
        return CameraVerdict::Failed;
    }
    return record.findings.failures.empty() ? CameraVerdict::Applied : CameraVerdict::Incomplete;
}

bool hasRunOutOfMemory(const JobRecord& record)
{
    return record.job.errorCode == IMPORT_ERR_ABANDONED || record.tally.wasShort;
}

CameraVerdict verdictOn(const JobRecord& record)
{
    if (!record.job.hasStarted)
        return CameraVerdict::NotStarted;
    if (hasRunOutOfMemory(record))
        return CameraVerdict::Failed;
    if (record.tally.wasRefused)
        return CameraVerdict::Interrupted;
    if (!record.tally.wasOpened)
        return CameraVerdict::Failed;
    if (record.job.type == JOB_FEATURE_BAG_IMPORT)
        return verdictOnBag(record);
    // A firmware that could not be asked is no other firmware.
    const bool isUnknown =
        record.job.errorCode == IMPORT_ERR_MODEL && !unreadableRemark(record.findings, kIdentity).isEmpty();
    return hasLineFailed(record.findings.failures) || isUnknown ? CameraVerdict::Failed
                                                                : verdictOnFeaturesFile(record);
}

std::vector<EntryCheck> failedCalls(const JobRecord& record)
{
    std::vector<EntryCheck> entries;
    for (const FailedCall& failure : record.findings.failures)
        entries.push_back(failedEntry(failure));
    return entries;
}

QStringList failureSentences(const std::vector<EntryCheck>& entries)
{
    QStringList sentences;
    for (const EntryCheck& entry : entries)
        if (isAmiss(entry))
            sentences += printable(entry.title()) + " did not take its value: " + printable(entry.reason);
    const int more = sentences.size() - kMostNamed;
    if (more > 0)
        sentences = sentences.mid(0, kMostNamed) << QString("%1 more did not take their values.").arg(more);
    return sentences;
}

// The text about a feature bag is a summary and then a line for each: "name = value: reason".
EntryCheck bagEntry(const QString& line)
{
    EntryCheck entry;
    entry.feature = line.section(" = ", 0, 0);
    const QString rest = line.section(" = ", 1);
    entry.fileValue = rest.section(": ", 0, -2);
    entry.judge(EntryVerdict::NotApplied, rest.section(": ", -1));
    return entry;
}

auto countOf(const std::vector<ImportOutcome>& results, const std::vector<CameraVerdict>& verdicts)
{
    return std::count_if(results.begin(), results.end(), [&](const ImportOutcome& result) {
        return std::find(verdicts.begin(), verdicts.end(), result.verdict) != verdicts.end();
    });
}

QString causeOfFailure(const CallWatch::Findings& findings)
{
    const QString unread = unreadableRemark(findings, kIdentity);
    if (!unread.isEmpty() && !findings.lineFailure)
        return unread + " Nothing was written.";
    const QString line = lineRemark(findings);
    return (line.isEmpty() ? QString("the line failed.") : line) +
           " A part of the file may have been applied.";
}

} // namespace

std::vector<EntryCheck> failedEntries(const ImportOutcome& result)
{
    if (!result.judged.empty())
        return result.judged;
    std::vector<EntryCheck> entries = failedCalls(result.record);
    if (result.record.findings.bagStatus == KX_E_INCOMPLETE)
        for (const QString& line : result.record.findings.bagText.split('\n').mid(1))
            entries.push_back(bagEntry(line));
    return entries;
}

ImportOutcome examineImport(const JobRecord& record)
{
    return {record, verdictOn(record)};
}

void identify(ImportOutcome& result, const ie::FeaturesHeader& file)
{
    if (result.verdict != CameraVerdict::Incompatible)
        return;
    const ObservedChanges& observed = result.record.findings.changes;
    const auto read = [&](ie::FeatureKind, const QString& name) {
        ie::FeatureReading reading;
        reading.text = observed.value(name);
        return reading;
    };
    result.identity = ie::compareIdentity(file, result.record.job.camera.device.stDeviceInfo, read,
                                          ie::IdentityDepth::UpToTheFirstBad);
}

// A broken block has kept the job from what comes behind it.
void settle(ImportOutcome& result, const std::vector<EntryCheck>& judged)
{
    result.judged = judged;
    const bool isByEntries =
        result.verdict == CameraVerdict::Incomplete && result.record.job.errorCode != IMPORT_ERR_APPLY;
    if (isByEntries && !judged.empty())
        result.verdict = verdictOn(judged, CameraVerdict::Applied);
}

void nameRegisters(const NamedFeatures::Blocks& names, ImportOutcome& result)
{
    for (FailedCall& failure : result.record.findings.failures) {
        if (!failure.isRegister)
            continue;
        const auto name = names.find(failure.address);
        if (name != names.end())
            failure.feature = name->second;
    }
}

QString importError(const ImportOutcome& result)
{
    const JobRecord& record = result.record;
    if (result.verdict == CameraVerdict::NotStarted)
        return {};
    if (result.verdict == CameraVerdict::Interrupted)
        return "interrupted; a part of the file may have been applied.";
    if (hasRunOutOfMemory(record))
        return "memory ran out. A part of the file may have been applied, and not all of it told.";
    if (!record.tally.wasOpened)
        return openRemark(record.findings);
    if (record.job.errorCode == IMPORT_ERR_APPLY)
        return "the file has a broken register block; what comes before it was applied.";
    switch (result.verdict) {
    case CameraVerdict::Incompatible:
        return incompatibleText(result.identity);
    case CameraVerdict::BadFile:
        return "the file is no such file; nothing was written.";
    case CameraVerdict::UnreadableFile:
        return "the file cannot be read; nothing was written.";
    case CameraVerdict::Failed:
        return causeOfFailure(record.findings);
    default:
        return {};
    }
}

QStringList failureRemarks(const ImportOutcome& result)
{
    const JobRecord& record = result.record;
    const bool isBag = record.job.type == JOB_FEATURE_BAG_IMPORT; // its text names them
    const bool isPartial = record.tally.wasOpened && (result.verdict == CameraVerdict::Incomplete ||
                                                      result.verdict == CameraVerdict::Failed);
    return isPartial ? failureSentences(isBag ? failedCalls(record) : failedEntries(result)) : QStringList();
}

QStringList importRemarks(const ImportOutcome& result)
{
    const JobRecord& record = result.record;
    const bool isSilent = !record.job.hasFailed || !record.tally.wasOpened;
    QStringList remarks;
    const bool hasCause =
        result.verdict == CameraVerdict::Incompatible || result.verdict == CameraVerdict::Failed;
    if (isSilent || hasCause)
        remarks += importError(result);
    if (record.job.errorCode == IMPORT_ERR_VERSION && !record.job.hasFailed)
        remarks += "the file was written by another version of the suite.";
    remarks.removeAll({});
    return remarks + printableLines(record.findings.bagText);
}

QString importTable(const std::vector<ImportOutcome>& results)
{
    QList<QStringList> rows = {{"MODEL", "SERIAL", "REQUESTS", "SECONDS", "RESULT"}};
    for (const ImportOutcome& result : results) {
        const JobOutcome& job = result.record.job;
        rows += {printable(job.camera.model), printable(job.camera.serial),
                 QString::number(result.record.tally.requests), QString::number(job.seconds, 'f', 2),
                 verdictWord(result.verdict)};
    }
    QString text = alignedRows({Align::Left, Align::Left, Align::Right, Align::Right, Align::Left}, rows);
    using V = CameraVerdict;
    text += QString("%1 applied, %2 incomplete, %3 incompatible, %4 failed")
                .arg(countOf(results, {V::Applied}))
                .arg(countOf(results, {V::Incomplete}))
                .arg(countOf(results, {V::Incompatible}))
                .arg(countOf(results, {V::Failed, V::BadFile, V::UnreadableFile}));
    for (const V verdict : {V::Interrupted, V::NotStarted})
        if (const auto count = countOf(results, {verdict}))
            text += QString(", %1 %2").arg(count).arg(verdictWord(verdict));
    return text + '\n';
}

} // namespace companion
