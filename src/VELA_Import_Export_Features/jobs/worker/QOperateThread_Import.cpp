// The import's job: a file has to prove that it belongs to the camera, then it is applied.
#include "jobs/import/FeaturesImport.h"
#include "jobs/import/ImportIdentity.h"
#include "jobs/rules/ImportRules.h"
#include "jobs/rules/JobLog.h"
#include "jobs/worker/QOperateThread.h"

void QOperateThread::FeatureXmlImport()
{
    if (!OpenDevice()) {
        FailImport("OpenDevice failed.", tr("Failed to import features.Failed to open device."));
    } else {
        const ie::LoadedFile file = ie::loadFeaturesFile(m_strFilePath);
        if (file.failure != ie::LoadedFile::Failure::None)
            FailToLoad(file.failure);
        else if (!import_feature_xml(file.document))
            ReportImportResult();
    }
    CloseDevice();
}

void QOperateThread::FailImport(const QString& strLog, const QString& strUserText)
{
    IE_JOB_LOG(strLog);
    emit SigThreadInfo(m_stDevice.nDeviceID, strUserText, true);
}

void QOperateThread::FailToLoad(ie::LoadedFile::Failure eFailure)
{
    if (eFailure == ie::LoadedFile::Failure::NotLoaded)
        FailImport("Load xml failed.", tr("Failed to import features.Failed to load xml."));
    else
        FailImport("Open xml failed.", tr("Failed to import features.Failed to open xml."));
}

// The other codes reach nobody. Meant.
void QOperateThread::ReportImportResult()
{
    if (m_nErrorCode == IMPORT_ERR_MODEL)
        FailImport("Failed to import features. Camera models mismatch.",
                   tr("Failed to import features. Camera models mismatch."));
    else if (m_nErrorCode == IMPORT_ERR_VERSION)
        FailImport("Failed to import features. Possible version incompatibility.",
                   tr("Failed to import features. Possible version incompatibility."));
}

void QOperateThread::ChooseImportSkipList()
{
    QStringList lstNames = ie::commonSkipList();
    if (!ie::isLineScan(ie::readFeature(m_camera, ie::FeatureKind::Enumeration, "DeviceScanType").text))
        lstNames += ie::lineScanOnlyList();
    m_setSkipped = QSet<QString>(lstNames.cbegin(), lstNames.cend());
}

bool QOperateThread::import_feature_xml(const QDomDocument& document)
{
    m_nErrorCode = IMPORT_OK;
    ChooseImportSkipList();
    const ie::FeaturesContent content = ie::readFeatures(document.documentElement());
    if (!BelongsToCamera(content.header))
        return false;
    if (!content.hasFeatures) {
        m_nErrorCode = IMPORT_ERR_NO_FEATURES;
        return false;
    }
    ie::FeaturesImport import(m_camera, IsGigE(), [this](const QString& strName) {
        return ie::isProtectedFeature(strName) || IsSkippedFeature(strName);
    });
    if (import.ApplyFeatures(content))
        return true;
    m_nErrorCode = IMPORT_ERR_APPLY;
    return false;
}

// Another version is remembered only. Meant.
bool QOperateThread::BelongsToCamera(const ie::FeaturesHeader& header)
{
    using What = ie::IdentityComparison::What;
    const ie::IdentityComparisons comparisons = ie::compareIdentity(
        header, m_stDevice.stDeviceInfo,
        [this](ie::FeatureKind eKind, const QString& strName) {
            return ie::readFeature(m_camera, eKind, strName);
        },
        ie::IdentityDepth::UpToTheFirstBad);
    for (const ie::IdentityComparison& comparison : comparisons) {
        if (comparison.outcome == ie::IdentityComparison::Outcome::Good)
            continue;
        const bool bVersion = comparison.what == What::VersionGiven || comparison.what == What::Version;
        m_nErrorCode = bVersion ? IMPORT_ERR_VERSION : IMPORT_ERR_MODEL;
        if (comparison.what == What::Firmware && comparison.cameraValue.isNull())
            IE_JOB_LOG("Get XML_NODE_FIRMWARE failed.");
    }
    return ie::isGood(comparisons);
}
