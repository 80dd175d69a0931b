// The export's job: what stays out, what the text is built from, and where it goes.
#include "jobs/export/FeaturesExport.h"
#include "jobs/file/RegularFile.h"
#include "jobs/file/WholeFile.h"
#include "jobs/rules/ControlFeature.h"
#include "jobs/rules/DeviceNames.h"
#include "jobs/rules/ImportRules.h"
#include "jobs/rules/StreamableFilters.h"
#include "jobs/worker/QOperateThread.h"

#include "camera_line/RecordTexts.h"

#include <SuiteTools/SuiteTools.h>

#include <QFile>
#include <QTextStream>

namespace
{

QSet<QString> toSet(const QStringList& names)
{
    return QSet<QString>(names.cbegin(), names.cend());
}

} // namespace

void QOperateThread::FeatureXmlExport()
{
    if (!OpenDevice()) {
        emit SigThreadInfo(m_stDevice.nDeviceID, tr("Failed to export features.Failed to open device."),
                           true);
        CloseDevice();
        return;
    }
    GenerateFeatureXmlMap(); // a failure is not looked at: the export goes on with the model it has. Meant.
    GenerateSelectorMap();
    if (!export_xml())
        emit SigThreadInfo(m_stDevice.nDeviceID, tr("Failed to save feature.%1").arg(QString()), true);
    CloseDevice();
}

bool QOperateThread::export_xml()
{
    LoadStreamableFilter();
    const ie::DeviceNames names = ie::deviceNames(m_stDevice.stDeviceInfo, ie::FieldEnd::AtSize);
    m_strTargetPath = QString("%1/%2").arg(m_strFilePath, ie::featuresFileName(names));
    ChooseSkipList();
    ie::FeaturesExport features({m_hDevice, m_camera, m_mapNodeElement, m_lstFeatureNames, m_lstSelectorPairs,
                                 IsGigE(), [this](const QString& strName) {
                                     return ie::isProtectedFeature(strName) || IsSkippedFeature(strName);
                                 }});
    QString strText;
    return features.build(names.model, strText) && WriteFeaturesFile(strText);
}

// Once there is an entry it stays for the worker's life; without any file each export looks again. Meant.
void QOperateThread::LoadStreamableFilter()
{
    if (!m_mapFeatureFilter.isEmpty())
        return;
    for (const ie::StreamableFilter& filter : ie::streamableFilters()) {
        QFile file(filter.path);
        if (ie::openRegular(file, QIODevice::ReadOnly).isEmpty())
            m_mapFeatureFilter[filter.transport] =
                QTextStream(&file).readAll().split(','); // untrimmed. Meant.
    }
}

void QOperateThread::ChooseSkipList()
{
    const auto itFilter =
        m_mapFeatureFilter.constFind(camera_line::transportWord(m_stDevice.stDeviceInfo.transportType));
    m_setSkipped = toSet(itFilter != m_mapFeatureFilter.constEnd() ? itFilter.value() : ie::commonSkipList());
    if (m_nAccessMode != KX_ACCESS_EXCLUSIVE)
        m_setSkipped += ie::kControlFeature;
}

bool QOperateThread::IsSkippedFeature(const QString& strName) const
{
    if (m_setSkipped.contains(strName))
        return true;
    QDomElement element;
    if (!GetNodeElement(strName, element))
        return false;
    return ie::isSkippedAsShown(strName, element.firstChildElement("Representation").text());
}

bool QOperateThread::IsGigE() const
{
    return m_stDevice.stDeviceInfo.transportType == KX_TRANSPORT_GIGE;
}

bool QOperateThread::WriteFeaturesFile(const QString& strText)
{
    const QString strFileName = m_strTargetPath.mid(m_strFilePath.size() + 1);
    if (ie::liesInFolder(strFileName) && ie::writeWholeFile(m_strTargetPath, strText))
        return true;
    emit SigThreadInfo(m_stDevice.nDeviceID, tr("Failed to export features.Failed to open File."), true);
    return false;
}
