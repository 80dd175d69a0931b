// Runs the worker's steps on the calling thread.
#pragma once

#include "jobs/worker/QOperateThread.h"

#include <QFile>
#include <QTemporaryDir>

class QOperateThreadProbe
{
public:
    static void open(QOperateThread& worker) { worker.OpenDevice(); }
    static void index(QOperateThread& worker)
    {
        worker.GenerateFeatureXmlMap();
        worker.GenerateSelectorMap();
    }
    static bool exportFile(QOperateThread& worker) { return worker.export_xml(); }
};

namespace bench
{

// A worker that is set up for an export into a folder of its own, opened and indexed.
class ReadyWorker
{
public:
    ReadyWorker()
    {
        StructDeviceInfo device;
        device.nDeviceID = 1;
        device.stDeviceInfo.transportType = KX_TRANSPORT_GIGE;
        m_worker.SetXmlExportJob(device, m_folder.path());
        QOperateThreadProbe::open(m_worker);
        QOperateThreadProbe::index(m_worker);
    }

    QOperateThread& worker() { return m_worker; }
    bool exportFile() { return QOperateThreadProbe::exportFile(m_worker); }
    QByteArray exported() const
    {
        QFile file(m_folder.filePath("_.fpk"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_folder;
    QOperateThread m_worker;
};

} // namespace bench
