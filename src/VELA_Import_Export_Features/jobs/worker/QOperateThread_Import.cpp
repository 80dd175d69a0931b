// The import: a file has to prove that it belongs to the camera, then it is applied in cycles of four passes.
#include "jobs/export/RegisterEvaluator.h"
#include "jobs/file/FeaturesFile.h"
#include "jobs/file/XmlDepth.h"
#include "jobs/nodes/JobMemory.h"
#include "jobs/rules/DeviceNames.h"
#include "jobs/rules/ImportRules.h"
#include "jobs/worker/JobLog.h"
#include "jobs/worker/QOperateThread.h"

#include <SuiteTools/SuiteTools.h>

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <cmath>

namespace
{

constexpr int kLastCycle = 10;
constexpr qint64 kScratchSize = 256;
// More is no register block of a camera; it counts as an allocation that failed.
constexpr qint64 kMaximumLength = 16 * 1024 * 1024;
constexpr qint64 kMaximumFileSize = 512 * 1024 * 1024;

// UTF-8, without a byte-order mark, up to a zero byte. Devices and folders are no files.
bool readText(const QString& strPath, QString& strText)
{
    QFile file(strPath);
    if (!QFileInfo(strPath).isFile() || !file.open(QIODevice::ReadOnly) || file.size() > kMaximumFileSize)
        return false;
    strText = QString(file.readAll());
    return !strText.isEmpty();
}

bool isWritable(KX_XML_AccessMode eMode)
{
    return eMode == KX_AM_WRITE_ONLY || eMode == KX_AM_READ_WRITE;
}

int passOf(const QString& strType)
{
    if (strType == "Boolean")
        return 1;
    if (strType == "Enumeration")
        return 2;
    return strType == "Integer" || strType == "IntReg" || strType == "Float" || strType == "StringReg" ? 3
                                                                                                       : 0;
}

quint32 fileWord(const QString& strText, bool bSwap)
{
    const auto nWord = static_cast<quint32>(VELAInterface::string2Int(strText));
    return qToLittleEndian(bSwap ? qbswap(nWord) : nWord);
}

} // namespace

// Counters of one import; failures and pending writes of the current cycle.
struct QOperateThread::ImportRun
{
    struct Feature
    {
        QString strName;
        QString strType;
        QString strValue;
    };
    QList<Feature> lstFeatures; // those that may be applied, in the file's order
    QList<QDomElement> lstBlocks;
    int nCycle = 0;
    int nFailed = 0;
    int nPending = 0;
};

// The buffer of one register block, and how its words stand in it.
struct QOperateThread::RegisterBuffer
{
    QString strName; // of the feature
    qint64 nLength = 0;
    int nWords = 0;
    bool bSwap = false;
    quint32 scratch[kScratchSize / 4] = {};
    ie::MemoryBlock heap;
    quint32* pWords = scratch;

    QString text() const
    {
        QVector<quint32> words(nWords);
        for (int i = 0; i < nWords; ++i)
            words[i] = bSwap ? qbswap(qFromLittleEndian(pWords[i])) : qFromLittleEndian(pWords[i]);
        return ie::wordsText(words);
    }
};

void QOperateThread::FeatureXmlImport()
{
    if (!OpenDevice()) {
        FailImport("OpenDevice failed.", tr("Failed to import features.Failed to open device."));
    } else {
        QString strText;
        QDomDocument document;
        if (!readText(m_strFilePath, strText))
            FailImport("Open xml failed.", tr("Failed to import features.Failed to open xml."));
        else if (!ie::isSafeToParse(strText) || !document.setContent(strText))
            FailImport("Load xml failed.", tr("Failed to import features.Failed to load xml."));
        else if (!import_feature_xml(document))
            ReportImportResult();
    }
    CloseDevice();
}

void QOperateThread::FailImport(const QString& strLog, const QString& strUserText)
{
    IE_JOB_LOG(strLog);
    emit SigThreadInfo(m_stDevice.nDeviceID, strUserText, true);
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
    const QStringList& lstNames = ie::importSkipList();
    m_setSkipped = QSet<QString>(lstNames.cbegin(), lstNames.cend());
    KX_EnumValue stScanType = {};
    if (!GetEnumerationNodePropertyValue("DeviceScanType", &stScanType) || stScanType.current != 1)
        m_setSkipped << "AcquisitionLineRateEnable"
                     << "AcquisitionLineRate";
}

bool QOperateThread::import_feature_xml(const QDomDocument& document)
{
    m_nErrorCode = IMPORT_OK;
    ChooseImportSkipList();
    const QDomElement root = document.documentElement();
    const QString strVersion = root.attribute("version");
    if (strVersion.isEmpty()) {
        m_nErrorCode = IMPORT_ERR_VERSION;
        return false;
    }
    if (strVersion != VELAInterface::softwareVersion())
        m_nErrorCode = IMPORT_ERR_VERSION; // remembered only. Meant.
    if (!BelongsToCamera(root)) {
        m_nErrorCode = IMPORT_ERR_MODEL;
        return false;
    }
    return ApplyFeatures(root);
}

bool QOperateThread::BelongsToCamera(const QDomElement& root)
{
    const QDomElement boardType = root.firstChildElement("BoardDeviceType");
    KX_IntegerValue stBoardType = {};
    if (!boardType.isNull() && (!GetIntegerNodePropertyValue("BoardDeviceType", &stBoardType) ||
                                QString::number(stBoardType.current, 10) != boardType.text()))
        return false;
    QString strFirmware;
    if (!GetStringRegNodePropertyValue("DeviceFirmwareVersion", strFirmware)) {
        IE_JOB_LOG("Get XML_NODE_FIRMWARE failed.");
        return false;
    }
    const QDomElement firmware = root.firstChildElement("DeviceFirmwareVersion");
    if (firmware.isNull() || firmware.text() != strFirmware)
        return false;
    const QDomElement model = root.firstChildElement("DeviceModelName");
    return !model.isNull() && model.text() == ie::modelNameAsUtf8(m_stDevice.stDeviceInfo);
}

// False: not to be applied.
bool QOperateThread::ReadFeatureElement(const QDomElement& element, QString& strName, QString& strType,
                                        QString& strValue) const
{
    if (element.tagName() == "ComplexFeature")
        return false;
    strName.clear();
    strType.clear();
    strValue.clear();
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        if (child.tagName() == "Name") {
            strName = child.text();
            // The last is never so in this branch, and no pass takes that type anyway. Meant.
            if (ie::isProtectedFeature(strName) || IsSkippedFeature(strName) || child.tagName() == "Command")
                return false;
        } else if (child.tagName() == "Type") {
            strType = child.text();
        } else if (child.tagName() == "Value") {
            strValue = child.text();
        }
    }
    return true;
}

bool QOperateThread::ApplyFeatures(const QDomElement& root)
{
    const QDomElement features = root.firstChildElement("Features");
    if (features.isNull()) {
        m_nErrorCode = IMPORT_ERR_NO_FEATURES;
        return false;
    }
    ImportRun run;
    for (QDomElement child = features.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        ImportRun::Feature feature;
        if (child.tagName() == "ComplexFeature")
            run.lstBlocks.append(child);
        else if (ReadFeatureElement(child, feature.strName, feature.strType, feature.strValue))
            run.lstFeatures.append(feature);
    }
    for (;; ++run.nCycle) {
        if (!ApplyCycle(run))
            return false;
        // What still fails in the last cycle is let go as a success. Meant.
        if ((run.nPending < 1 && run.nFailed < 1) || run.nCycle >= kLastCycle)
            return true;
    }
}

bool QOperateThread::ApplyCycle(ImportRun& run)
{
    if (run.nCycle > kLastCycle)
        return GiveUpImport({}, {});
    run.nFailed = run.nPending = 0;
    for (int nPass = 1; nPass <= 3; ++nPass) {
        for (const ImportRun::Feature& feature : qAsConst(run.lstFeatures)) {
            if (passOf(feature.strType) != nPass ||
                !KX_IS_LINE_FAILURE(
                    setFeatureIntoDevice(feature.strName, feature.strType, feature.strValue, run)))
                continue;
            ++run.nFailed;
            if (run.nCycle > kLastCycle)
                return GiveUpImport(feature.strName, feature.strValue);
        }
    }
    for (const QDomElement& block : qAsConst(run.lstBlocks))
        if (!ApplyRegisterBlock(block, run))
            return false;
    return true;
}

// A guard: the cycles end before it.
bool QOperateThread::GiveUpImport(const QString& strName, const QString& strValue)
{
    IE_JOB_LOG(QString("setFeatureIntoDevice failed.featureName:%1 value:%2").arg(strName, strValue));
    m_nErrorCode = IMPORT_ERR_APPLY;
    return false;
}

KX_Status QOperateThread::setFeatureIntoDevice(const QString& strName, const QString& strType,
                                               const QString& strValue, ImportRun& run)
{
    if (strName.isEmpty() || strType.isEmpty() || strValue.isEmpty())
        return KX_OK;
    int nErrorCode = 0;
    QString strCurrent;
    // Texts are compared, not numbers. A value that cannot be read is written all the same. Both are meant.
    if (ReadPlainValue(strType, strName, strCurrent, &nErrorCode) && strCurrent == strValue)
        return KX_OK;
    if (!WritePlainValue(strType, strName, strValue, &nErrorCode))
        ++run.nPending;
    return static_cast<KX_Status>(nErrorCode);
}

bool QOperateThread::WritePlainValue(const QString& strType, const QString& strName, const QString& strValue,
                                     int* pErrorCode)
{
    if (strType == "Boolean")
        return SetBooleanNodePropertyValue(strName, strValue.toInt(nullptr, 10) >= 1, pErrorCode);
    if (strType == "Enumeration")
        return SetEnumerationNodePropertyValue(strName, strValue.toUInt(nullptr, 10), pErrorCode);
    if (strType == "Float")
        return SetFloatNodePropertyValue(strName, strValue.toFloat(), pErrorCode);
    if (strType == "StringReg")
        return SetStringRegNodePropertyValue(strName, strValue, pErrorCode);
    // Integers go through 32 bits without a sign: negative, hexadecimal and larger texts are written as 0.
    // Meant.
    return SetIntegerNodePropertyValue(strName, strValue.toUInt(nullptr, 10), pErrorCode);
}

// False: the import is over.
bool QOperateThread::ApplyRegisterBlock(const QDomElement& element, ImportRun& run)
{
    RegisterBuffer buffer;
    buffer.strName = element.attribute("name");
    if (ie::isProtectedFeature(buffer.strName) || IsSkippedFeature(buffer.strName))
        return true;
    const QString strReg = element.attribute("reg");
    int nErrorCode = 0;
    if (!strReg.isEmpty() && (!isWritable(GetNodeAccessMode(strReg, &nErrorCode)) || nErrorCode != 0))
        return true;
    if (!PrepareBuffer(element.attribute("len"), buffer)) {
        m_nErrorCode = IMPORT_ERR_APPLY;
        return false;
    }
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        const QString strAddress = child.attribute("address");
        if (strAddress.isEmpty() || child.text().isEmpty()) {
            m_nErrorCode = IMPORT_ERR_APPLY;
            return false;
        }
        const qint64 nAddress = VELAInterface::string2Int(strAddress);
        if (nAddress % 4 != 0 || !SetValueFromReg(child, nAddress, buffer))
            continue;
        ++run.nPending;
        FillBuffer(child, buffer);
        if (!WriteRegister(nAddress, buffer, run.nCycle))
            ++run.nFailed;
    }
    return true;
}

bool QOperateThread::PrepareBuffer(const QString& strLength, RegisterBuffer& buffer)
{
    if (strLength.isEmpty()) {
        IE_JOB_LOG(QString("Import %1 failed. no value len").arg(buffer.strName));
        return false;
    }
    buffer.nLength = VELAInterface::string2Int(strLength);
    const auto nWords =
        qMax<qint64>(0, static_cast<qint64>(std::ceil(static_cast<float>(buffer.nLength) / 4.0f)));
    if (buffer.nLength > kScratchSize) {
        if (buffer.nLength <= kMaximumLength)
            buffer.heap.reset(ie::allocateZeroed(std::size_t(nWords) * 4));
        buffer.pWords = static_cast<quint32*>(buffer.heap.get());
        if (!buffer.pWords) {
            IE_JOB_LOG(QString("Import %1 failed.malloc %2 failed.")
                           .arg(buffer.strName, QString::number(quint64(nWords) * 4)));
            return false;
        }
    }
    buffer.nWords = int(nWords);
    buffer.bSwap = IsGigE() && buffer.nLength == 4;
    return true;
}

// Whether the entry needs writing. Reads the registers into the buffer first, so that words which the file
// does not give keep what the camera has.
bool QOperateThread::SetValueFromReg(const QDomElement& entry, qint64 nAddress, RegisterBuffer& buffer)
{
    if (!ReadRegisterMemory(nAddress, buffer.pWords, buffer.nLength)) {
        LogRegisterFailure(buffer.strName, nAddress);
        return true;
    }
    const QString strCurrent = buffer.text();
    const QString strTo = entry.attribute("to");
    if (strTo.isEmpty())
        return strCurrent != entry.text();
    if (strCurrent == strTo)
        return false;
    // The converted value is worked out and not asked. Meant.
    QString strFormula = entry.attribute("from");
    if (strFormula.size() + qint64(strFormula.count("TO")) * strCurrent.size() <=
        RegisterEvaluator::kMaximumFormula) {
        bool ok = false;
        VELAInterface::Compute(strFormula.replace("TO", strCurrent).toLocal8Bit().constData(), ok);
    }
    return true;
}

void QOperateThread::FillBuffer(const QDomElement& entry, RegisterBuffer& buffer) const
{
    const QString strTo = entry.attribute("to");
    if (!strTo.isEmpty()) {
        buffer.pWords[0] = fileWord(strTo, buffer.bSwap); // the others keep what has been read
        return;
    }
    const QString strText = entry.text();
    // Part by part, no further than the buffer reaches: all parts of a huge text would not fit into memory.
    for (int i = 0, nBegin = 0; i < buffer.nWords && nBegin <= strText.size(); ++i) {
        const int nComma = strText.indexOf(',', nBegin);
        const int nEnd = nComma < 0 ? strText.size() : nComma;
        buffer.pWords[i] = fileWord(strText.mid(nBegin, nEnd - nBegin), buffer.bSwap);
        nBegin = nEnd + 1;
    }
}

// False: the write failed and nothing excuses it.
bool QOperateThread::WriteRegister(qint64 nAddress, RegisterBuffer& buffer, int nCycle)
{
    if (WriteRegisterMemory(nAddress, buffer.pWords, buffer.nLength))
        return true;
    LogRegisterFailure(buffer.strName, nAddress);
    if (nCycle == 0)
        return false;
    quint32 nWord = 0;
    if (buffer.nLength == 4 && ReadRegisterMemory(nAddress, &nWord, sizeof nWord) &&
        nWord == buffer.pWords[0])
        return true;
    int nErrorCode = 0;
    return !isWritable(GetNodeAccessMode(buffer.strName, &nErrorCode)) || nErrorCode != 0;
}

void QOperateThread::LogRegisterFailure(const QString& strName, qint64 nAddress)
{
    IE_JOB_LOG(QString("SetValueFromReg  failed:%1 addr:%2").arg(strName, QString::number(nAddress)));
}
