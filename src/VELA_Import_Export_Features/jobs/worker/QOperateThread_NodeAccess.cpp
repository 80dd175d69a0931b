#include "jobs/worker/JobLog.h"
#include "jobs/worker/QOperateThread.h"

#include <SuiteTools/SuiteTools.h>

#include <cstring>

namespace
{

constexpr int kStringCapacity = 256;

void storeStatus(KX_Status status, int* pErrorCode)
{
    if (pErrorCode)
        *pErrorCode = static_cast<int>(status);
}

// The status as a signed number in base 16, sign and magnitude: 0x80000004 gives "-7ffffffc". Meant; Qt's own
// formatting of negative numbers in base 16 is another one.
QString signedHex(KX_Status status)
{
    const qint64 number = static_cast<qint32>(status);
    return number < 0 ? "-" + QString::number(-number, 16) : QString::number(number, 16);
}

QString operateFailedText(const QString& strName, KX_Status status)
{
    return QString("Operate Feature Failed; NodeName : %1;  ErrorCode : %2").arg(strName, signedHex(status));
}

} // namespace

// The typed getters send node names as Latin-1, everything else as local 8-bit. Meant.

bool QOperateThread::GetBooleanNodePropertyValue(const QString& strName, bool* pValue, int* pErrorCode)
{
    if (!m_hDevice)
        return false;
    const KX_Status status = KX_CC_GetBoolValue(m_hDevice, strName.toLatin1().constData(), pValue);
    storeStatus(status, pErrorCode);
    return status == KX_OK;
}

bool QOperateThread::GetEnumerationNodePropertyValue(const QString& strName, KX_EnumValue* pValue,
                                                     int* pErrorCode)
{
    if (!m_hDevice)
        return false;
    const KX_Status status = KX_CC_GetEnumValue(m_hDevice, strName.toLatin1().constData(), pValue);
    storeStatus(status, pErrorCode);
    return status == KX_OK;
}

bool QOperateThread::GetFloatNodePropertyValue(const QString& strName, KX_FloatValue* pValue, int* pErrorCode)
{
    if (!m_hDevice)
        return false;
    const KX_Status status = KX_CC_GetFloatValue(m_hDevice, strName.toLatin1().constData(), pValue);
    storeStatus(status, pErrorCode);
    return status == KX_OK;
}

bool QOperateThread::GetIntegerNodePropertyValue(const QString& strName, KX_IntegerValue* pValue,
                                                 int* pErrorCode)
{
    if (!m_hDevice)
        return false;
    const KX_Status status = KX_CC_GetIntValueEx(m_hDevice, strName.toLatin1().constData(), pValue);
    storeStatus(status, pErrorCode);
    return status == KX_OK;
}

bool QOperateThread::GetStringRegNodePropertyValue(const QString& strName, QString& strValue,
                                                   __int64* pMaxLength, int* pErrorCode)
{
    if (!m_hDevice)
        return false;
    KX_StringValue stValue;
    std::memset(&stValue, 0, sizeof stValue);
    const KX_Status status = KX_CC_GetStringValue(m_hDevice, strName.toLocal8Bit().constData(), &stValue);
    storeStatus(status, pErrorCode);
    if (status != KX_OK) {
        IE_JOB_LOG(operateFailedText(strName, status));
        strValue.clear();
        return false;
    }
    if (pMaxLength)
        *pMaxLength = stValue.maximumLength;
    strValue = VELAInterface::char2QStringLocale(stValue.current, -1);
    return true;
}

KX_XML_AccessMode QOperateThread::GetNodeAccessMode(const QString& strName, int* pErrorCode)
{
    // A null handle goes to the library on purpose, which reports it.
    KX_XML_AccessMode eMode = KX_AM_NOT_IMPLEMENTED;
    const KX_Status status = KX_XML_GetNodeAccessMode(m_hDevice, strName.toLocal8Bit().constData(), &eMode);
    if (status != KX_OK) {
        IE_JOB_LOG(operateFailedText(strName, status));
        eMode = KX_AM_NOT_IMPLEMENTED;
    }
    storeStatus(status, pErrorCode);
    return eMode;
}

bool QOperateThread::SetBooleanNodePropertyValue(const QString& strName, bool bValue, int* pErrorCode)
{
    if (strName.isEmpty() || !m_hDevice)
        return false;
    const KX_Status status = KX_CC_SetBoolValue(m_hDevice, strName.toLocal8Bit().constData(), bValue);
    storeStatus(status, pErrorCode);
    if (status != KX_OK)
        IE_JOB_LOG(operateFailedText(strName, status));
    return status == KX_OK;
}

bool QOperateThread::SetEnumerationNodePropertyValue(const QString& strName, unsigned int nValue,
                                                     int* pErrorCode)
{
    if (strName.isEmpty() || !m_hDevice)
        return false;
    const KX_Status status = KX_CC_SetEnumValue(m_hDevice, strName.toLocal8Bit().constData(), nValue);
    storeStatus(status, pErrorCode);
    if (status != KX_OK)
        IE_JOB_LOG(operateFailedText(strName, status));
    return status == KX_OK;
}

bool QOperateThread::SetFloatNodePropertyValue(const QString& strName, float fValue, int* pErrorCode)
{
    if (strName.isEmpty() || !m_hDevice)
        return false;
    const KX_Status status = KX_CC_SetFloatValue(m_hDevice, strName.toLocal8Bit().constData(), fValue);
    storeStatus(status, pErrorCode);
    if (status != KX_OK)
        IE_JOB_LOG(operateFailedText(strName, status));
    return status == KX_OK;
}

bool QOperateThread::SetIntegerNodePropertyValue(const QString& strName, __int64 nValue, int* pErrorCode)
{
    if (strName.isEmpty() || !m_hDevice)
        return false;
    const KX_Status status = KX_CC_SetIntValueEx(m_hDevice, strName.toLocal8Bit().constData(), nValue);
    storeStatus(status, pErrorCode);
    if (status != KX_OK)
        IE_JOB_LOG(operateFailedText(strName, status));
    return status == KX_OK;
}

bool QOperateThread::SetStringRegNodePropertyValue(const QString& strName, const QString& strValue,
                                                   int* pErrorCode)
{
    if (strName.isEmpty() || !m_hDevice)
        return false;
    char buffer[kStringCapacity] = {}; // one more byte than is filled: a terminating zero always stands
    VELAInterface::CovertEncodeCharFromQString(strValue, buffer, kStringCapacity - 1);
    const KX_Status status = KX_CC_SetStringValue(m_hDevice, strName.toLocal8Bit().constData(), buffer);
    storeStatus(status, pErrorCode);
    if (status != KX_OK)
        IE_JOB_LOG(operateFailedText(strName, status));
    return status == KX_OK;
}

bool QOperateThread::ReadRegisterMemory(const __int64& nAddress, void* pBuffer, __int64 nLength,
                                        int* pErrorCode)
{
    if (!pBuffer || !m_hDevice)
        return false;
    const KX_Status status = KX_CC_ReadMemory(m_hDevice, pBuffer, nAddress, nLength);
    storeStatus(status, pErrorCode);
    return status == KX_OK;
}

bool QOperateThread::WriteRegisterMemory(const __int64& nAddress, void* pBuffer, __int64 nLength,
                                         int* pErrorCode)
{
    if (!pBuffer || !m_hDevice)
        return false;
    const KX_Status status = KX_CC_WriteMemory(m_hDevice, pBuffer, nAddress, nLength);
    storeStatus(status, pErrorCode);
    return status == KX_OK;
}
