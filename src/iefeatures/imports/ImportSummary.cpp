#include "iefeatures/imports/ImportSummary.h"

#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Text.h"

#include "jobs/worker/QOperateThread.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace companion
{
namespace
{

using State = ImportOutcome::State;

constexpr size_t kMostNamed = 20; // in messages for people

bool hasLineFailed(const std::vector<FailedCall>& failures)
{
    return std::any_of(failures.begin(), failures.end(),
                       [](const FailedCall& failure) { return KX_IS_LINE_FAILURE(failure.status); });
}

State stateOfBag(const JobRecord& record)
{
    switch (record.findings.bagStatus) {
    case KX_OK:
        return State::Applied;
    case KX_E_INCOMPLETE:
        return State::Incomplete;
    case KX_E_FILE:
    case KX_E_FILE_FORMAT:
        return State::BadFile;
    default:
        return State::Failed;
    }
}

State stateOfFeaturesFile(const JobRecord& record)
{
    const bool isLineSound = !hasLineFailed(record.findings.failures);
    switch (record.job.errorCode) {
    case IMPORT_OK:
        if (record.job.hasFailed)
            return State::BadFile;
        break;
    case IMPORT_ERR_VERSION: // another version is no failure, none at all is one
    case IMPORT_ERR_MODEL:
        if (record.job.hasFailed)
            return isLineSound ? State::Incompatible : State::Failed;
        break;
    default: // silent
        return State::Failed;
    }
    if (record.findings.failures.empty())
        return State::Applied;
    return isLineSound ? State::Incomplete : State::Failed;
}

State stateOf(const JobRecord& record)
{
    if (!record.job.hasStarted)
        return State::NotStarted;
    if (!record.tally.wasOpened || record.tally.wasRefused)
        return State::Failed;
    return record.job.type == JOB_FEATURE_BAG_IMPORT ? stateOfBag(record) : stateOfFeaturesFile(record);
}

QString nameOf(const FailedCall& failure)
{
    if (!failure.isRegister)
        return failure.feature;
    const QString address = "register " + QString::number(failure.address);
    return failure.feature.isEmpty() ? address : failure.feature + " (" + address + ')';
}

// Why a job failed that did not say so itself.
QString silentReason(const JobRecord& record)
{
    if (!record.tally.wasOpened)
        return openRemark(record.findings);
    if (record.tally.wasRefused)
        return "interrupted; a part of the file may have been applied.";
    if (record.job.errorCode == IMPORT_ERR_NO_FEATURES)
        return "the file has no features; nothing was written.";
    if (record.job.errorCode == IMPORT_ERR_APPLY)
        return "the file has a broken register block; what comes before it was applied.";
    return "the line failed; a part of the file may have been applied.";
}

QStringList failureSentences(const std::vector<FailedCall>& failures)
{
    QStringList sentences;
    for (size_t i = 0; i < failures.size() && i < kMostNamed; ++i)
        sentences += printable(nameOf(failures[i])) +
                     " did not take its value: " + KX_CC_StatusText(failures[i].status);
    if (failures.size() > kMostNamed)
        sentences += QString("%1 more did not take their values.").arg(failures.size() - kMostNamed);
    return sentences;
}

auto countOf(const std::vector<ImportOutcome>& results, State state)
{
    return std::count_if(results.begin(), results.end(),
                         [state](const ImportOutcome& result) { return result.state == state; });
}

} // namespace

QString importWord(State state)
{
    switch (state) {
    case State::Applied:
        return "applied";
    case State::Incomplete:
        return "incomplete";
    case State::Incompatible:
        return "incompatible";
    case State::BadFile:
        return "bad file";
    case State::Failed:
        return "failed";
    case State::NotStarted:
        break;
    }
    return "not started";
}

// Names. The text about a feature bag is a summary and then a line for each: "name = value: reason".
QStringList notApplied(const CallWatch::Findings& findings)
{
    QStringList names;
    for (const FailedCall& failure : findings.failures)
        names += nameOf(failure);
    if (findings.bagStatus == KX_E_INCOMPLETE)
        for (const QString& line : findings.bagText.split('\n').mid(1))
            names += line.section(" = ", 0, 0);
    return names;
}

ImportOutcome examineImport(const JobRecord& record)
{
    return {record, stateOf(record)};
}

void nameRegisters(const CallWatch::Blocks& names, std::vector<ImportOutcome>& results)
{
    for (ImportOutcome& result : results) {
        for (FailedCall& failure : result.record.findings.failures) {
            if (!failure.isRegister)
                continue;
            const auto name = names.find(failure.address);
            if (name != names.end())
                failure.feature = name->second;
        }
    }
}

QStringList importRemarks(const ImportOutcome& result)
{
    const JobRecord& record = result.record;
    QStringList remarks;
    if (result.state == State::Failed && (!record.job.hasFailed || !record.tally.wasOpened))
        remarks += silentReason(record);
    if (record.tally.wasOpened && !record.tally.wasRefused &&
        (result.state == State::Incomplete || result.state == State::Failed))
        remarks += failureSentences(record.findings.failures);
    if (record.job.errorCode == IMPORT_ERR_VERSION && !record.job.hasFailed)
        remarks += "the file was written by another version of the suite.";
    return remarks + printableLines(record.findings.bagText);
}

QString importTable(const std::vector<ImportOutcome>& results)
{
    QList<QStringList> rows = {{"MODEL", "SERIAL", "REQUESTS", "SECONDS", "RESULT"}};
    for (const ImportOutcome& result : results) {
        const JobOutcome& job = result.record.job;
        rows += {printable(job.camera.model), printable(job.camera.serial),
                 QString::number(result.record.tally.requests), QString::number(job.seconds, 'f', 2),
                 importWord(result.state)};
    }
    QString text = alignedRows({Align::Left, Align::Left, Align::Right, Align::Right, Align::Left}, rows);
    text += QString("%1 applied, %2 incomplete, %3 incompatible, %4 failed")
                .arg(countOf(results, State::Applied))
                .arg(countOf(results, State::Incomplete))
                .arg(countOf(results, State::Incompatible))
                .arg(countOf(results, State::Failed) + countOf(results, State::BadFile));
    if (const auto waiting = countOf(results, State::NotStarted))
        text += QString(", %1 not started").arg(waiting);
    return text + '\n';
}

std::string importJson(const std::vector<ImportOutcome>& results)
{
    std::string text;
    for (const ImportOutcome& result : results) {
        auto names = nlohmann::ordered_json::array();
        for (const QString& name : notApplied(result.record.findings))
            names.push_back(name.toStdString());
        const nlohmann::ordered_json line = {{"result", importWord(result.state).toStdString()},
                                             {"device", result.record.job.camera.device.nDeviceID},
                                             {"notApplied", names}};
        text += line.dump() + "\n";
    }
    return text;
}

int importExitCode(State state)
{
    switch (state) {
    case State::Applied:
        return ExitWell;
    case State::Incomplete:
        return ExitNotAllApplied;
    case State::Incompatible:
        return ExitIncompatible;
    case State::BadFile:
        return ExitInputOutput;
    case State::Failed:
    case State::NotStarted:
        break;
    }
    return ExitJobFailed;
}

} // namespace companion
