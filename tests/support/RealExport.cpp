#include "support/RealExport.h"

#include "gvcp/Gvcp.h"
#include "jobs/rules/JobLog.h"
#include "jobs/worker/QOperateThread.h"

#include <QFile>
#include <QMutex>

#include <algorithm>

namespace tests
{
namespace
{

QMutex logMutex;
QStringList logTexts;
QtMessageHandler previousHandler = nullptr;

// Undoes what the debug stream does to a QString.
QString withoutQuotes(const QString& line)
{
    if (line.size() < 2 || !line.startsWith('"') || !line.endsWith('"'))
        return line;
    QString text = line.mid(1, line.size() - 2);
    return text.replace("\\\"", "\"").replace("\\\\", "\\");
}

void takeLine(QtMsgType type, const QMessageLogContext& context, const QString& line)
{
    if (type != QtCriticalMsg || qstrcmp(context.file, ie::kJobLogFile) != 0) {
        previousHandler(type, context, line);
        return;
    }
    const QMutexLocker lock(&logMutex);
    logTexts += withoutQuotes(line.trimmed());
}

template <size_t Size>
void fill(uint8_t (&field)[Size], const std::string& text)
{
    std::copy_n(text.begin(), std::min(text.size(), Size - 1), field);
}

} // namespace

StructDeviceInfo deviceRecord(const emu::CameraConfig& config)
{
    StructDeviceInfo record;
    record.nDeviceID = 1;
    record.nStatus = 1;
    record.stDeviceInfo.transportType = KX_TRANSPORT_GIGE;
    record.stDeviceInfo.layout = KX_DEVICE_INFO_LAYOUT;
    KX_GigEDeviceInfo& gige = record.stDeviceInfo.special.gige;
    fill(gige.modelName, config.model);
    fill(gige.serialNumber, config.serial);
    gige.ipAddress = gvcp::parseAddress(config.address).value_or(0);
    return record;
}

namespace
{

// Starts the worker, waits for its end and gives its log.
QStringList runWorker(QOperateThread& worker, QStringList& messages)
{
    QObject::connect(
        &worker, &QOperateThread::SigThreadInfo, &worker,
        [&messages](long, const QString& text, bool) { messages += text; }, Qt::DirectConnection);
    logTexts.clear();
    previousHandler = qInstallMessageHandler(takeLine);
    worker.start();
    worker.wait();
    qInstallMessageHandler(previousHandler);
    return logTexts;
}

} // namespace

ExportOutcome exportCamera(const StructDeviceInfo& record, const QString& folder)
{
    qputenv("VELA_PROGRAM_DATA", folder.toLocal8Bit());
    ExportOutcome outcome;
    QOperateThread worker;
    QObject::connect(
        &worker, &QOperateThread::SigEndThread, &worker,
        [&outcome](long, unsigned int, const QString& path) { outcome.path = path; }, Qt::DirectConnection);
    worker.SetXmlExportJob(record, folder);
    outcome.log = runWorker(worker, outcome.messages);

    QFile file(outcome.path);
    if (file.open(QIODevice::ReadOnly))
        outcome.file = file.readAll();
    return outcome;
}

ImportOutcome importFile(const StructDeviceInfo& record, const QString& file)
{
    ImportOutcome outcome;
    QOperateThread worker;
    worker.SetXmlImportJob(record, file);
    outcome.log = runWorker(worker, outcome.messages);
    outcome.errorCode = worker.ErrorCode();
    return outcome;
}

} // namespace tests
