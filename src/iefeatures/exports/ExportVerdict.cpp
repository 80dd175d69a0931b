#include "iefeatures/exports/ExportVerdict.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Interrupt.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/exports/ReadBack.h"

#include "jobs/file/WholeFile.h"
#include "jobs/worker/QOperateThread.h"

#include <QFile>

#include <algorithm>

namespace companion
{
namespace
{

using State = ExportResult::State;

constexpr int kMostNamed = 20; // in messages for people

int countFeatures(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    int count = 0;
    for (const QByteArray& line : file.readAll().split('\n'))
        count += line == "<Feature>\r" || line.startsWith("<ComplexFeature ");
    return count;
}

constexpr int kHeadOfBag = 3; // comments; others say what was left out

struct BagLines
{
    int features = 0;
    QStringList comments;
};

BagLines bagLines(const QString& path)
{
    QFile file(path);
    BagLines count;
    if (!file.open(QIODevice::ReadOnly))
        return count;
    for (const QByteArray& line : file.readAll().split('\n'))
        if (!line.isEmpty()) {
            if (line.startsWith('#'))
                count.comments += QString::fromUtf8(line.mid(2));
            else
                ++count.features;
        }
    return count;
}

// The camera library tells what was cut, and what was not set back. What it leaves out of every bag of such a
// camera stands in the file alone.
void examineBag(ExportResult& result, const CallWatch::Findings& findings)
{
    const bool isIncomplete = findings.bagStatus == KX_E_INCOMPLETE;
    if (isIncomplete && result.job.hasStarted && !result.tally.wasRefused)
        result.state = State::Written;
    if (result.state != State::Written)
        return;
    const BagLines lines = bagLines(result.job.path);
    result.features = lines.features;
    for (const QString& comment : lines.comments.mid(kHeadOfBag))
        if (isIncomplete && findings.bagText.contains(comment))
            result.isCut = true;
        else if (result.features > 0)
            result.notes += comment;
    result.isNotSetBack = isIncomplete && !result.isCut;
}

QString named(const QStringList& features)
{
    const QString more =
        features.size() > kMostNamed ? QString(" and %1 more").arg(features.size() - kMostNamed) : QString();
    return printable(features.mid(0, kMostNamed).join(", ")) + more;
}

// Why the file cannot be kept; empty: it can.
QString unreadableProblem(ExportResult& result, Unreadable unreadable)
{
    const ReadBack read = readBack(result.job.path);
    if (read.isGood)
        return {};
    if (read.rest.isNull())
        return "an import could not read the file again, for what the camera says of itself; it is not kept.";
    if (unreadable == Unreadable::Refused)
        return "an import could not read the file again, for the texts of " + named(read.features) +
               "; it is not kept (--skip-unreadable leaves them out).";
    result.leftOut = read.features;
    return ie::writeWholeFile(result.job.path, read.rest) ? QString()
                                                          : "the file could not be written again.";
}

// The job takes a register that cannot be read for one that does not apply.
void examineFeaturesFile(ExportResult& result, Unreadable unreadable)
{
    if (result.state != State::Written)
        return;
    result.problem = result.tally.wasShort
                         ? "memory ran out during the export; a file that lacks features is not kept."
                     : result.tally.hasLineFailed
                         ? "the line failed during the export; a file that lacks features is not kept."
                         : unreadableProblem(result, unreadable);
    if (result.problem.isEmpty())
        result.features = countFeatures(result.job.path);
    else
        result.state = State::Failed;
}

State stateOf(const JobOutcome& job, const CallWatch::Tally& tally)
{
    if (!job.hasStarted)
        return State::NotStarted;
    return job.hasFailed || tally.wasRefused || !tally.wasOpened ? State::Failed : State::Written;
}

// "Failed to save feature." has many; the camera library's text about a feature bag has its own.
QString causeOf(const ExportResult& result, const CallWatch::Findings& findings)
{
    const QString interrupted = "interrupted; no file was written.";
    if (result.tally.wasRefused)
        return interrupted;
    if (!result.tally.wasOpened)
        return openRemark(findings);
    if (!findings.bagText.isEmpty())
        return {};
    const QString unread = unreadableRemark(findings, {"DeviceFirmwareVersion"});
    if (!unread.isEmpty() && !findings.lineFailure)
        return unread;
    const QString line = lineRemark(findings);
    return line.isEmpty() && Interrupt::isRequested() ? interrupted : line;
}

QString stateWord(const ExportResult& result)
{
    switch (result.state) {
    case State::Written:
        return result.isCut ? "incomplete" : "exported";
    case State::Failed:
        return "failed";
    case State::NotStarted:
        break;
    }
    return "not started";
}

QString fate(const ExportResult& result)
{
    return result.state == State::Written ? printable(result.job.path) : QString("not written");
}

auto countOf(const std::vector<ExportResult>& results, State state)
{
    return std::count_if(results.begin(), results.end(),
                         [state](const ExportResult& result) { return result.state == state; });
}

} // namespace

ExportResult examineExport(const JobOutcome& job, const CallWatch::Tally& tally,
                           const CallWatch::Findings& findings, Unreadable unreadable)
{
    ExportResult result;
    result.job = job;
    result.tally = tally;
    result.state = stateOf(job, tally);
    if (job.type == JOB_FEATURE_BAG_EXPORT)
        examineBag(result, findings);
    else
        examineFeaturesFile(result, unreadable);
    return result;
}

QString leftOutNote(const ExportResult& result)
{
    if (result.leftOut.isEmpty())
        return {};
    return "left out, for an import could not read their texts again: " + named(result.leftOut) + '.';
}

QStringList exportRemarks(const ExportResult& result, const CallWatch::Findings& findings)
{
    QStringList remarks;
    if (result.state == State::Written && result.job.type == JOB_FEATURE_BAG_EXPORT && result.features == 0)
        remarks += "the feature bag is empty: the camera's description calls no feature streamable. Export a "
                   "features file (--format xml) instead.";
    if (result.state == State::Failed)
        remarks += causeOf(result, findings);
    for (const QString& note : result.notes)
        remarks += printable(note);
    remarks.removeAll({});
    return remarks + printableLines(findings.bagText);
}

QString exportTable(const std::vector<ExportResult>& results)
{
    QList<QStringList> rows = {{"MODEL", "SERIAL", "FEATURES", "REQUESTS", "SECONDS", "PATH"}};
    for (const ExportResult& result : results) {
        const ListedCamera& camera = result.job.camera;
        const QString features = result.state == State::Written ? QString::number(result.features) : "-";
        rows += {printable(camera.model),
                 printable(camera.serial),
                 features,
                 QString::number(result.tally.requests),
                 QString::number(result.job.seconds, 'f', 2),
                 fate(result)};
    }
    QString text =
        alignedRows({Align::Left, Align::Left, Align::Right, Align::Right, Align::Right, Align::Left}, rows);
    text += QString("%1 exported, %2 failed")
                .arg(countOf(results, State::Written))
                .arg(countOf(results, State::Failed));
    if (const auto waiting = countOf(results, State::NotStarted))
        text += QString(", %1 not started").arg(waiting);
    return text + '\n';
}

QString exportFates(const std::vector<ExportResult>& results)
{
    QString text;
    for (const ExportResult& result : results)
        text += result.job.camera.title() + ": " + fate(result) + '\n';
    return text;
}

Json exportJson(const ExportResult& result, const QStringList& remarks)
{
    const bool isWritten = result.state == State::Written;
    QStringList sentences{result.problem, leftOutNote(result)};
    sentences.removeAll({});
    return {{"camera", cameraJson(result.job.camera)},
            {"result", json(stateWord(result))},
            {"features", isWritten ? Json(result.features) : Json()},
            {"requests", result.tally.requests},
            {"seconds", result.job.seconds},
            {"path", isWritten ? jsonOfExisting(result.job.path) : Json()},
            {"remarks", json(sentences + remarks)}};
}

int exportExitCode(const std::vector<ExportResult>& results, bool isInterrupted)
{
    if (isInterrupted)
        return ExitInterrupted;
    const bool areWhole = std::all_of(results.begin(), results.end(), [](const ExportResult& result) {
        return result.state == State::Written && !result.isCut && !result.isNotSetBack;
    });
    return areWhole ? ExitWell : ExitJobFailed;
}

} // namespace companion
