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

void QOperateThread::run()
{
    const ie::MemoryInUse memory;
    m_strTargetPath.clear();
    emit SigBeginThread(m_stDevice.nDeviceID, m_nThreadType);
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

bool QOperateThread::OpenDevice()
{
    return KX_CC_CreateHandle(&m_hDevice, &m_stDevice.stDeviceInfo) == KX_OK &&
           KX_CC_OpenDevice(m_hDevice, m_nAccessMode, 0) == KX_OK;
}

void QOperateThread::CloseDevice()
{
    if (m_hDevice) {
        KX_CC_CloseDevice(m_hDevice);
        KX_CC_DestroyHandle(m_hDevice);
        m_hDevice = nullptr;
    }
    ReportEnd();
}

// The default name is made at every end, which other tools count on; an export says the file that it has
// written, also where the encoding setting has changed meanwhile. Meant.
void QOperateThread::ReportEnd()
{
    m_bRunning = false;
    const QString strDefaultPath = DefaultPath();
    emit SigEndThread(m_stDevice.nDeviceID, m_nThreadType,
                      m_strTargetPath.isEmpty() ? strDefaultPath : m_strTargetPath);
}

QString QOperateThread::DefaultPath() const
{
    const ie::DeviceNames names = ie::deviceNames(m_stDevice.stDeviceInfo, ie::FieldEnd::AtZero);
    // Meant for import jobs too, whose path is a file: the window only passes it on.
    return QString("%1/%2").arg(m_strFilePath, ie::featuresFileName(names));
}
