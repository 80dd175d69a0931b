#include "iefeatures/exports/ExportVerdict.h"

#include "iefeatures/cameras/CameraJson.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/JsonLine.h"
#include "iefeatures/console/Text.h"

#include "jobs/worker/QOperateThread.h"

#include <QFile>

#include <algorithm>

namespace companion
{
namespace
{

using State = ExportResult::State;

// By line and not as XML: a text value with a "<" in it is allowed and makes the file no XML.
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

int countBagLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    int count = 0;
    for (const QByteArray& line : file.readAll().split('\n'))
        count += !line.isEmpty() && !line.startsWith('#');
    return count;
}

State stateOf(const JobOutcome& job, const CallWatch::Tally& tally)
{
    if (!job.hasStarted)
        return State::NotStarted;
    return job.hasFailed || tally.wasRefused || !tally.wasOpened ? State::Failed : State::Written;
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

ExportResult examineExport(const JobOutcome& job, const CallWatch::Tally& tally, KX_Status bagStatus)
{
    ExportResult result{job, tally, stateOf(job, tally)};
    result.isCut = bagStatus == KX_E_INCOMPLETE;
    if (result.isCut && job.hasStarted && !tally.wasRefused)
        result.state = State::Written;
    if (result.state == State::Written)
        result.features =
            job.type == JOB_FEATURE_BAG_EXPORT ? countBagLines(job.path) : countFeatures(job.path);
    else if (tally.wasOpened && !job.hasFailed)
        QFile::remove(job.path);
    return result;
}

QStringList exportRemarks(const ExportResult& result, const CallWatch::Findings& findings)
{
    QStringList remarks;
    if (result.state == State::Written && result.tally.hasLineFailed)
        remarks += "the line failed during the export; the file may lack features.";
    if (result.state == State::Written && result.job.type == JOB_FEATURE_BAG_EXPORT && result.features == 0)
        remarks += "the feature bag is empty: the camera's description calls no feature streamable. Export a "
                   "features file (--format xml) instead.";
    if (result.state == State::Failed && !result.tally.wasOpened)
        remarks += openRemark(findings);
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
    return {{"camera", cameraJson(result.job.camera)},
            {"result", json(stateWord(result))},
            {"features", isWritten ? Json(result.features) : Json()},
            {"requests", result.tally.requests},
            {"seconds", result.job.seconds},
            {"path", isWritten ? jsonOfExisting(result.job.path) : Json()},
            {"remarks", json(remarks)}};
}

int exportExitCode(const std::vector<ExportResult>& results, bool isInterrupted)
{
    if (isInterrupted)
        return ExitInterrupted;
    const bool areWhole = std::all_of(results.begin(), results.end(), [](const ExportResult& result) {
        return result.state == State::Written && !result.isCut;
    });
    return areWhole ? ExitWell : ExitJobFailed;
}

} // namespace companion
