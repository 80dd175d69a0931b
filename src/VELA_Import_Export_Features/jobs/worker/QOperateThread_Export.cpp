#include "jobs/export/RegisterBlock.h"
#include "jobs/file/FeaturesFile.h"
#include "jobs/nodes/FeatureKind.h"
#include "jobs/rules/DeviceNames.h"
#include "jobs/rules/ImportRules.h"
#include "jobs/rules/JobLog.h"
#include "jobs/worker/QOperateThread.h"

#include <SuiteTools/SuiteTools.h>

#include <QFile>
#include <QTextStream>

namespace
{

QString transportWord(quint32 nTransport)
{
    switch (nTransport) {
    case KX_TRANSPORT_GIGE:
        return "GigE";
    case KX_TRANSPORT_USB3:
        return "U3V";
    case KX_TRANSPORT_CAMERA_LINK:
        return "CL";
    default:
        return {};
    }
}

QSet<QString> toSet(const QStringList& names)
{
    return QSet<QString>(names.cbegin(), names.cend());
}

// A name taken from a camera must not lead out of the folder.
bool liesInFolder(const QString& strFileName)
{
#if defined(Q_OS_WIN)
    return !strFileName.contains('/') && !strFileName.contains('\\') && !strFileName.contains(':');
#else
    return !strFileName.contains('/');
#endif
}

// A disk that fills up must not leave half a file that looks whole: what cannot be written whole is removed.
bool writeWholeFile(const QString& strPath, const QString& strText)
{
    QFile file(strPath);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // No codec on purpose: the system's local 8-bit encoding, whatever the file's declaration says.
    QTextStream stream(&file);
    stream << strText;
    stream.flush();
    file.close();
    if (stream.status() == QTextStream::Ok && file.error() == QFileDevice::NoError)
        return true;
    file.remove();
    return false;
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
    QString strText;
    if (!AppendHeader(names.model, strText))
        return false;
    ChooseSkipList();
    if (!AppendFeatures(strText))
        return false;
    strText += ie::fileEnd();
    return WriteFeaturesFile(ie::featuresFileName(names), strText);
}

// Once there is an entry it stays for the worker's life; without any file each export looks again. Meant.
void QOperateThread::LoadStreamableFilter()
{
    if (!m_mapFeatureFilter.isEmpty())
        return;
    const QString strFolder = VELAInterface::programDataPath() + "/Streamable";
    for (const QString strWord : {"CL", "CXP", "GigE", "U3V"}) {
        QFile file(QString("%1/%2.filter").arg(strFolder, strWord));
        if (file.open(QIODevice::ReadOnly))
            m_mapFeatureFilter[strWord] = QTextStream(&file).readAll().split(','); // untrimmed. Meant.
    }
}

void QOperateThread::ChooseSkipList()
{
    const auto itFilter = m_mapFeatureFilter.constFind(transportWord(m_stDevice.stDeviceInfo.transportType));
    m_setSkipped = toSet(itFilter != m_mapFeatureFilter.constEnd() ? itFilter.value() : ie::commonSkipList());
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

bool QOperateThread::AppendHeader(const QString& strModel, QString& strText)
{
    strText += ie::fileBegin(VELAInterface::softwareVersion());
    QString strFirmware;
    if (!GetStringRegNodePropertyValue("DeviceFirmwareVersion", strFirmware)) {
        IE_JOB_LOG("Get XML_NODE_FIRMWARE failed.");
        return false;
    }
    strText += ie::headerLine("DeviceFirmwareVersion", strFirmware);
    strText += ie::headerLine("DeviceModelName", strModel);
    KX_IntegerValue stBoardType = {};
    if (GetIntegerNodePropertyValue("BoardDeviceType", &stBoardType))
        strText += ie::headerLine("BoardDeviceType", ie::integerText(stBoardType.current));
    strText += ie::featuresBegin();
    return true;
}

bool QOperateThread::AppendFeatures(QString& strText)
{
    ie::ExportBudget budget;
    RegisterEvaluator evaluator(m_hDevice, m_mapNodeElement, m_lstSelectorPairs, IsGigE(), budget);
    const QSet<QString> setListed = toSet(m_lstFeatureNames);
    // Over the living map: evaluating a feature adds entries, and those behind the current one are visited
    // too.
    for (auto it = m_mapNodeElement.begin(); it != m_mapNodeElement.end(); ++it) {
        const QDomElement element = it.value();
        const QString strName = element.attribute("Name");
        if (!setListed.contains(strName) || ie::isProtectedFeature(strName) || IsSkippedFeature(strName) ||
            element.tagName() == "Command")
            continue;
        if (!AppendFeature(evaluator, element, strText))
            return false;
    }
    return true;
}

// A selected feature is one register with an address per selector value, and a plain value only where that
// cannot be had; all others the other way round.
bool QOperateThread::AppendFeature(RegisterEvaluator& evaluator, const QDomElement& element, QString& strText)
{
    const auto tryRegisters = [&] {
        return appendRegisterBlock(evaluator, m_hDevice, m_mapNodeElement, IsGigE(), element, strText);
    };
    const QString strName = element.attribute("Name");
    if (evaluator.isSelectedFeature(strName) && tryRegisters() != RegisterAttempt::Failed)
        return true;
    const auto kind = ie::featureKind(element.tagName());
    const ie::FeatureReading reading =
        kind ? ie::readFeature(m_camera, *kind, strName) : ie::FeatureReading();
    if (reading.isGood()) {
        strText += ie::plainBlock({strName, element.tagName(), reading.text});
        return true;
    }
    if (KX_IS_LINE_FAILURE(reading.status))
        return false;
    tryRegisters(); // a selected feature's second attempt. Meant.
    return true;
}

bool QOperateThread::IsGigE() const
{
    return m_stDevice.stDeviceInfo.transportType == KX_TRANSPORT_GIGE;
}

bool QOperateThread::WriteFeaturesFile(const QString& strFileName, const QString& strText)
{
    if (liesInFolder(strFileName) &&
        writeWholeFile(QString("%1/%2").arg(m_strFilePath, strFileName), strText))
        return true;
    emit SigThreadInfo(m_stDevice.nDeviceID, tr("Failed to export features.Failed to open File."), true);
    return false;
}
