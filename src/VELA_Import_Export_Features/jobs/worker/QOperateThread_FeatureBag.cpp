// The two jobs that hand the whole transfer to the camera library. A camera that cannot be opened ends them
// without a message. Meant.
#include "jobs/rules/JobLog.h"
#include "jobs/worker/QOperateThread.h"

#include <SuiteTools/SuiteTools.h>

void QOperateThread::FeatureBagExport()
{
    if (OpenDevice()) {
        m_strTargetPath = DefaultPath();
        const KX_Status status = KX_CC_FeatureSave(m_hDevice, m_strTargetPath.toLatin1().constData());
        if (status != KX_OK)
            ReportBagFailure("KX_CC_FeatureSave failed.%1", tr("Failed to save feature.%1"), status);
    }
    CloseDevice();
}

void QOperateThread::FeatureBagImport()
{
    if (OpenDevice()) {
        const KX_Status status = KX_CC_FeatureLoad(m_hDevice, m_strFilePath.toLatin1().constData());
        if (status != KX_OK)
            ReportBagFailure("KX_CC_FeatureLoad failed.%1", tr("Failed to load feature.%1"), status);
    }
    CloseDevice();
}

void QOperateThread::ReportBagFailure(const QString& strLog, const QString& strUserText, KX_Status status)
{
    const int nCode = VELAInterface::SDKCode2VELACode(status);
    const QString strCode = VELAInterface::GenerateSDKCode(static_cast<unsigned int>(nCode));
    IE_JOB_LOG(strLog.arg(strCode));
    emit SigThreadInfo(m_stDevice.nDeviceID,
                       strUserText.arg(strCode) + VELAInterface::GenerateVELAErrorDesc(nCode), true);
}
