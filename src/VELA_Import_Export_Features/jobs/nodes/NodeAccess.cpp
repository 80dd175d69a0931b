#include "jobs/nodes/NodeAccess.h"

#include "jobs/rules/ImportRules.h"
#include "jobs/rules/JobLog.h"

#include <SuiteTools/SuiteTools.h>

namespace ie
{
namespace
{

// The status as a signed number in base 16, sign and magnitude: 0x80000004 gives "-7ffffffc". Meant; Qt's own
// formatting of negative numbers in base 16 is another one.
QString signedHex(KX_Status status)
{
    const qint64 number = static_cast<qint32>(status);
    return number < 0 ? "-" + QString::number(-number, 16) : QString::number(number, 16);
}

void storeStatus(KX_Status status, int* code)
{
    if (code)
        *code = static_cast<int>(status);
}

} // namespace

bool NodeAccess::isDone(KX_Status status, int* code) const
{
    storeStatus(status, code);
    return status == KX_OK;
}

bool NodeAccess::isDone(KX_Status status, int* code, const char* operation, const QString& name) const
{
    storeStatus(status, code);
    if (status != KX_OK && m_log == FailureLog::Written)
        IE_JOB_LOG_OF(
            operation,
            QString("Operate Feature Failed; NodeName : %1;  ErrorCode : %2").arg(name, signedHex(status)));
    return status == KX_OK;
}

// The typed getters send node names as Latin-1, everything else as local 8-bit. Meant.

bool NodeAccess::getBoolean(const QString& name, bool* value, int* code) const
{
    return m_handle && isDone(KX_CC_GetBoolValue(m_handle, name.toLatin1().constData(), value), code);
}

bool NodeAccess::getEnumeration(const QString& name, KX_EnumValue* value, int* code) const
{
    return m_handle && isDone(KX_CC_GetEnumValue(m_handle, name.toLatin1().constData(), value), code);
}

bool NodeAccess::getFloat(const QString& name, KX_FloatValue* value, int* code) const
{
    return m_handle && isDone(KX_CC_GetFloatValue(m_handle, name.toLatin1().constData(), value), code);
}

bool NodeAccess::getInteger(const QString& name, KX_IntegerValue* value, int* code) const
{
    return m_handle && isDone(KX_CC_GetIntValueEx(m_handle, name.toLatin1().constData(), value), code);
}

bool NodeAccess::getString(const QString& name, QString& value, qint64* maximumLength, int* code) const
{
    if (!m_handle)
        return false;
    KX_StringValue record = {};
    const KX_Status status = KX_CC_GetStringValue(m_handle, name.toLocal8Bit().constData(), &record);
    if (!isDone(
            status, code,
            "bool QOperateThread::GetStringRegNodePropertyValue(const QString&, QString&, __int64*, int*)",
            name)) {
        value.clear();
        return false;
    }
    if (maximumLength)
        *maximumLength = record.maximumLength;
    value = VELAInterface::char2QStringLocale(record.current, -1);
    return true;
}

KX_XML_AccessMode NodeAccess::accessMode(const QString& name, int* code) const
{
    KX_XML_AccessMode mode = KX_AM_NOT_IMPLEMENTED;
    const KX_Status status = KX_XML_GetNodeAccessMode(m_handle, name.toLocal8Bit().constData(), &mode);
    return isDone(status, code, "KX_XML_AccessMode QOperateThread::GetNodeAccessMode(const QString&, int*)",
                  name)
               ? mode
               : KX_AM_NOT_IMPLEMENTED;
}

bool NodeAccess::isWritable(const QString& name) const
{
    int code = 0;
    const KX_XML_AccessMode mode = accessMode(name, &code);
    return code == 0 && ie::isWritable(mode);
}

bool NodeAccess::setBoolean(const QString& name, bool value, int* code)
{
    return !name.isEmpty() && m_handle &&
           isDone(KX_CC_SetBoolValue(m_handle, name.toLocal8Bit().constData(), value), code,
                  "bool QOperateThread::SetBooleanNodePropertyValue(const QString&, bool, int*)", name);
}

bool NodeAccess::setEnumeration(const QString& name, quint32 value, int* code)
{
    return !name.isEmpty() && m_handle &&
           isDone(KX_CC_SetEnumValue(m_handle, name.toLocal8Bit().constData(), value), code,
                  "bool QOperateThread::SetEnumerationNodePropertyValue(const QString&, unsigned int, int*)",
                  name);
}

bool NodeAccess::setFloat(const QString& name, float value, int* code)
{
    return !name.isEmpty() && m_handle &&
           isDone(KX_CC_SetFloatValue(m_handle, name.toLocal8Bit().constData(), value), code,
                  "bool QOperateThread::SetFloatNodePropertyValue(const QString&, float, int*)", name);
}

bool NodeAccess::setInteger(const QString& name, qint64 value, int* code)
{
    return !name.isEmpty() && m_handle &&
           isDone(KX_CC_SetIntValueEx(m_handle, name.toLocal8Bit().constData(), value), code,
                  "bool QOperateThread::SetIntegerNodePropertyValue(const QString&, __int64, int*)", name);
}

bool NodeAccess::setString(const QString& name, const QString& value, int* code)
{
    return !name.isEmpty() && m_handle &&
           isDone(KX_CC_SetStringValue(m_handle, name.toLocal8Bit().constData(),
                                       importedBytes(value).constData()),
                  code,
                  "bool QOperateThread::SetStringRegNodePropertyValue(const QString&, const QString&, int*)",
                  name);
}

bool NodeAccess::readMemory(qint64 address, void* buffer, qint64 length, int* code) const
{
    return buffer && m_handle && isDone(KX_CC_ReadMemory(m_handle, buffer, address, length), code);
}

bool NodeAccess::writeMemory(qint64 address, void* buffer, qint64 length, int* code)
{
    return buffer && m_handle && isDone(KX_CC_WriteMemory(m_handle, buffer, address, length), code);
}

} // namespace ie
