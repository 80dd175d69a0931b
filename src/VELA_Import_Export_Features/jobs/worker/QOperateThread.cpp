#include "jobs/worker/QOperateThread.h"

#include "jobs/rules/DeviceNames.h"
#include "jobs/rules/JobMemory.h"

QOperateThread::QOperateThread(QObject* parent) : QThread(parent) {}

QOperateThread::~QOperateThread() = default;

void QOperateThread::SetXmlImportJob(const StructDeviceInfo& stDevice, const QString& strFile)
{
    SetJob(JOB_FEATURE_XML_IMPORT, stDevice, strFile);
}

void QOperateThread::SetXmlExportJob(const StructDeviceInfo& stDevice, const QString& strFolder)
{
    SetJob(JOB_FEATURE_XML_EXPORT, stDevice, strFolder);
}

void QOperateThread::SetFeatureBagImportJob(const StructDeviceInfo& stDevice, const QString& strFile)
{
    SetJob(JOB_FEATURE_BAG_IMPORT, stDevice, strFile);
}

void QOperateThread::SetFeatureBagExportJob(const StructDeviceInfo& stDevice, const QString& strFolder)
{
    SetJob(JOB_FEATURE_BAG_EXPORT, stDevice, strFolder);
}

void QOperateThread::SetJob(JobType eType, const StructDeviceInfo& stDevice, const QString& strPath)
{
    m_nThreadType = eType;
    m_stDevice = stDevice;
    m_strFilePath = strPath;
}

void QOperateThread::Launch()
{
    start(QThread::InheritPriority);
    if (!isRunning() && !isFinished())
        QMetaObject::invokeMethod(
            this, [this] { ReportNotStarted(); }, Qt::QueuedConnection);
}

void QOperateThread::ReportNotStarted()
{
    m_strTargetPath.clear();
    emit SigBeginThread(m_stDevice.nDeviceID, m_nThreadType);
    emit SigThreadInfo(m_stDevice.nDeviceID, tr("No thread could be started."), true);
    ReportEnd();
}

void QOperateThread::run()
{
    const ie::MemoryInUse memory;
    m_strTargetPath.clear();
    m_bEndReported = false;
    try {
        emit SigBeginThread(m_stDevice.nDeviceID, m_nThreadType);
        RunJob();
    } catch (...) {
        AbandonJob();
    }
}

void QOperateThread::RunJob()
{
    switch (m_nThreadType) {
    case JOB_FEATURE_BAG_IMPORT:
        FeatureBagImport();
        break;
    case JOB_FEATURE_BAG_EXPORT:
        FeatureBagExport();
        break;
    case JOB_FEATURE_XML_IMPORT:
        FeatureXmlImport();
        break;
    case JOB_FEATURE_XML_EXPORT:
        FeatureXmlExport();
        break;
    default:
        break; // meant: an unknown type begins and never ends
    }
}

// Memory has run out: the job ends, and neither the process nor the jobs beside it do.
void QOperateThread::AbandonJob()
{
    GiveDeviceBack();
    m_nErrorCode = IMPORT_ERR_ABANDONED;
    emit SigThreadInfo(m_stDevice.nDeviceID, tr("Out of memory."), true);
    if (!m_bEndReported)
        ReportEnd();
}

bool QOperateThread::OpenDevice()
{
    return KX_CC_CreateHandle(&m_hDevice, &m_stDevice.stDeviceInfo) == KX_OK &&
           KX_CC_OpenDevice(m_hDevice, m_nAccessMode, 0) == KX_OK;
}

void QOperateThread::CloseDevice()
{
    GiveDeviceBack();
    ReportEnd();
}

void QOperateThread::GiveDeviceBack()
{
    if (!m_hDevice)
        return;
    KX_CC_CloseDevice(m_hDevice);
    KX_CC_DestroyHandle(m_hDevice);
    m_hDevice = nullptr;
}

// The default name is made at every end, which other tools count on; an export says the file that it has
// written, also where the encoding setting has changed meanwhile. Meant.
void QOperateThread::ReportEnd()
{
    m_bRunning = false;
    const QString strDefaultPath = DefaultPath();
    m_bEndReported = true;
    emit SigEndThread(m_stDevice.nDeviceID, m_nThreadType,
                      m_strTargetPath.isEmpty() ? strDefaultPath : m_strTargetPath);
}

QString QOperateThread::DefaultPath() const
{
    const ie::DeviceNames names = ie::deviceNames(m_stDevice.stDeviceInfo, ie::FieldEnd::AtZero);
    // Meant for import jobs too, whose path is a file: the window only passes it on.
    return QString("%1/%2").arg(m_strFilePath, ie::featuresFileName(names));
}
