#include "TableCamera.h"

#include <KXCameraControl/KXCameraControl.h>

#include <cstring>

namespace
{

std::string g_description;

KX_HANDLE anyHandle()
{
    static int camera;
    return reinterpret_cast<KX_HANDLE>(&camera);
}

} // namespace

void bench::setDescription(std::string text)
{
    g_description = std::move(text);
}

KX_Status KX_CC_CreateHandle(KX_HANDLE* handle, const KX_DeviceInfo*)
{
    *handle = anyHandle();
    return KX_OK;
}

KX_Status KX_CC_OpenDevice(KX_HANDLE, uint32_t, uint16_t)
{
    return KX_OK;
}

KX_Status KX_CC_CloseDevice(KX_HANDLE)
{
    return KX_OK;
}

KX_Status KX_CC_DestroyHandle(KX_HANDLE)
{
    return KX_OK;
}

KX_Status KX_CC_GetBoolValue(KX_HANDLE, const char*, bool* value)
{
    *value = true;
    return KX_OK;
}

// A selector has 64 values.
KX_Status KX_CC_GetEnumValue(KX_HANDLE, const char*, KX_EnumValue* value)
{
    *value = {};
    value->supportedCount = KX_ENUM_CAPACITY;
    for (uint32_t i = 0; i < KX_ENUM_CAPACITY; ++i)
        value->supported[i] = i;
    return KX_OK;
}

KX_Status KX_CC_GetFloatValue(KX_HANDLE, const char*, KX_FloatValue* value)
{
    *value = {};
    return KX_OK;
}

KX_Status KX_CC_GetIntValueEx(KX_HANDLE, const char*, KX_IntegerValue* value)
{
    *value = {};
    value->current = 7;
    value->maximum = 63;
    value->increment = 1;
    return KX_OK;
}

KX_Status KX_CC_GetStringValue(KX_HANDLE, const char*, KX_StringValue* value)
{
    std::strcpy(value->current, "1.0.0");
    return KX_OK;
}

KX_Status KX_CC_ReadMemory(KX_HANDLE, void* buffer, int64_t, int64_t length)
{
    std::memset(buffer, 0, static_cast<size_t>(length));
    return KX_OK;
}

KX_Status KX_XML_GetGenICamXML(KX_HANDLE, void* buffer, uint32_t size, uint32_t* length)
{
    *length = static_cast<uint32_t>(g_description.size() + 1);
    if (*length > size)
        return KX_E_BUFFER_TOO_SMALL;
    std::memcpy(buffer, g_description.c_str(), *length);
    return KX_OK;
}

// What an export does not use.
KX_Status KX_CC_SetBoolValue(KX_HANDLE, const char*, bool)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_SetEnumValue(KX_HANDLE, const char*, unsigned int)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_SetFloatValue(KX_HANDLE, const char*, float)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_SetIntValueEx(KX_HANDLE, const char*, int64_t)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_SetStringValue(KX_HANDLE, const char*, const char*)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_WriteMemory(KX_HANDLE, const void*, int64_t, int64_t)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_XML_GetNodeAccessMode(KX_HANDLE, const char*, KX_XML_AccessMode*)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_FeatureSave(KX_HANDLE, const char*)
{
    return KX_E_NOT_SUPPORTED;
}

KX_Status KX_CC_FeatureLoad(KX_HANDLE, const char*)
{
    return KX_E_NOT_SUPPORTED;
}
