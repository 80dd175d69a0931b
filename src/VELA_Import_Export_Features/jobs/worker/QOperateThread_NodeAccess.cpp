// The operations on nodes and registers that the suite knows as the worker's.
#include "jobs/worker/QOperateThread.h"

bool QOperateThread::GetBooleanNodePropertyValue(const QString& strName, bool* pValue, int* pErrorCode)
{
    return m_camera.getBoolean(strName, pValue, pErrorCode);
}

bool QOperateThread::GetEnumerationNodePropertyValue(const QString& strName, KX_EnumValue* pValue,
                                                     int* pErrorCode)
{
    return m_camera.getEnumeration(strName, pValue, pErrorCode);
}

bool QOperateThread::GetFloatNodePropertyValue(const QString& strName, KX_FloatValue* pValue, int* pErrorCode)
{
    return m_camera.getFloat(strName, pValue, pErrorCode);
}

bool QOperateThread::GetIntegerNodePropertyValue(const QString& strName, KX_IntegerValue* pValue,
                                                 int* pErrorCode)
{
    return m_camera.getInteger(strName, pValue, pErrorCode);
}

bool QOperateThread::GetStringRegNodePropertyValue(const QString& strName, QString& strValue,
                                                   __int64* pMaxLength, int* pErrorCode)
{
    return m_camera.getString(strName, strValue, pMaxLength, pErrorCode);
}

KX_XML_AccessMode QOperateThread::GetNodeAccessMode(const QString& strName, int* pErrorCode)
{
    return m_camera.accessMode(strName, pErrorCode);
}

bool QOperateThread::SetBooleanNodePropertyValue(const QString& strName, bool bValue, int* pErrorCode)
{
    return m_camera.setBoolean(strName, bValue, pErrorCode);
}

bool QOperateThread::SetEnumerationNodePropertyValue(const QString& strName, unsigned int nValue,
                                                     int* pErrorCode)
{
    return m_camera.setEnumeration(strName, nValue, pErrorCode);
}

bool QOperateThread::SetFloatNodePropertyValue(const QString& strName, float fValue, int* pErrorCode)
{
    return m_camera.setFloat(strName, fValue, pErrorCode);
}

bool QOperateThread::SetIntegerNodePropertyValue(const QString& strName, __int64 nValue, int* pErrorCode)
{
    return m_camera.setInteger(strName, nValue, pErrorCode);
}

bool QOperateThread::SetStringRegNodePropertyValue(const QString& strName, const QString& strValue,
                                                   int* pErrorCode)
{
    return m_camera.setString(strName, strValue, pErrorCode);
}

bool QOperateThread::ReadRegisterMemory(const __int64& nAddress, void* pBuffer, __int64 nLength,
                                        int* pErrorCode)
{
    return m_camera.readMemory(nAddress, pBuffer, nLength, pErrorCode);
}

bool QOperateThread::WriteRegisterMemory(const __int64& nAddress, void* pBuffer, __int64 nLength,
                                         int* pErrorCode)
{
    return m_camera.writeMemory(nAddress, pBuffer, nLength, pErrorCode);
}
