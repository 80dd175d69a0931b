// Calls over an open connection: features, memory, the description and feature files.
#include "KXCameraControl/api/Api_Guard.h"
#include "KXCameraControl/bag/BagLoader.h"
#include "KXCameraControl/bag/BagSaver.h"
#include "KXCameraControl/bag/CameraNodes.h"

using namespace kx;
using namespace kx::api;

namespace
{

template <class Body>
KX_Status onMemory(KX_HANDLE handle, KX_Operation kind, const void* buffer, int64_t address, int64_t length,
                   Body body)
{
    const bool good = buffer && length >= 1 && length <= maximumMemoryLength;
    return onLine(handle, good, {kind, nullptr, address, length, buffer}, [&](Camera& camera) -> Outcome {
        if (const KX_Status lost = camera.lineStatus())
            return lost;
        const KX_Status status = body(camera, static_cast<uint64_t>(address), static_cast<size_t>(length));
        return {status, status == KX_OK ? std::string() : camera.portError()};
    });
}

// Paths come as Latin-1; files are named in UTF-8.
std::string fileName(const char* latin1)
{
    std::string name;
    for (const char* c = latin1; *c; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        if (byte < 0x80) {
            name += *c;
        } else {
            name += static_cast<char>(0xC0 | byte >> 6);
            name += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return name;
}

// A value of a feature bag, as of a getter or setter of texts that is over.
void tellValue(KX_HANDLE handle, Camera& camera, const BagValue& value)
{
    const char* name = value.feature.c_str();
    if (value.isWrite) {
        ObservedCall(handle, camera, {KX_OP_SET_STRING, name}).end(value.status, value.text.c_str());
        return;
    }
    KX_StringValue record{};
    std::strncpy(record.current, value.text.c_str(), sizeof record.current - 1);
    ObservedCall(handle, camera, {KX_OP_GET_STRING, name}).end(KX_OK, &record);
}

template <class Body>
KX_Status featureFile(KX_HANDLE handle, KX_Operation kind, const char* path, const void* value, Body body)
{
    return onLine(handle, path && *path, {kind, path, 0, 0, value}, [&](Camera& camera) -> Outcome {
        if (const KX_Status lost = camera.lineStatus())
            return lost;
        CameraNodes bag(camera, [&](const std::string& feature) {
            return ObservedCall(handle, camera, {kind, feature.c_str()}).begin();
        });
        if (kind == KX_OP_FEATURE_LOAD)
            bag.setValueWatch([&](const BagValue& one) { tellValue(handle, camera, one); });
        std::string message;
        const KX_Status status = body(bag, fileName(path), message);
        return {status, message};
    });
}

} // namespace

extern "C" {

KX_Status KX_CC_GetBoolValue(KX_HANDLE handle, const char* name, bool* value)
{
    return onNode(handle, KX_OP_GET_BOOL, name, value, value != nullptr,
                  [&](NodeMap& nodes) { return nodes.getBool(name, *value); });
}

KX_Status KX_CC_GetEnumValue(KX_HANDLE handle, const char* name, KX_EnumValue* value)
{
    return onNode(handle, KX_OP_GET_ENUM, name, value, value != nullptr,
                  [&](NodeMap& nodes) { return nodes.getEnum(name, *value); });
}

KX_Status KX_CC_GetFloatValue(KX_HANDLE handle, const char* name, KX_FloatValue* value)
{
    return onNode(handle, KX_OP_GET_FLOAT, name, value, value != nullptr,
                  [&](NodeMap& nodes) { return nodes.getFloat(name, *value); });
}

KX_Status KX_CC_GetIntValueEx(KX_HANDLE handle, const char* name, KX_IntegerValue* value)
{
    return onNode(handle, KX_OP_GET_INT, name, value, value != nullptr,
                  [&](NodeMap& nodes) { return nodes.getInteger(name, *value); });
}

KX_Status KX_CC_GetIntIncrementOrigin(KX_HANDLE handle, const char* name, int64_t* origin)
{
    return onNode(handle, KX_OP_GET_INCREMENT_ORIGIN, name, nullptr, origin != nullptr,
                  [&](NodeMap& nodes) { return nodes.incrementOrigin(name, *origin); });
}

KX_Status KX_CC_GetStringValue(KX_HANDLE handle, const char* name, KX_StringValue* value)
{
    return onNode(handle, KX_OP_GET_STRING, name, value, value != nullptr,
                  [&](NodeMap& nodes) { return nodes.getString(name, *value); });
}

KX_Status KX_CC_GetEnumEntryName(KX_HANDLE handle, const char* name, uint32_t value, char* text,
                                 uint32_t capacity, uint32_t* length)
{
    const bool isGood = length && (text || capacity == 0);
    return onNode(handle, KX_OP_GET_ENTRY_NAME, name, nullptr, isGood, [&](NodeMap& nodes) -> KX_Status {
        std::string entry;
        const KX_Status status = nodes.entryName(name, value, entry);
        return status == KX_OK ? copyText(entry, text, capacity, length) : status;
    });
}

KX_Status KX_CC_SetBoolValue(KX_HANDLE handle, const char* name, bool value)
{
    return onNode(handle, KX_OP_SET_BOOL, name, &value, true,
                  [&](NodeMap& nodes) { return nodes.setBool(name, value); });
}

KX_Status KX_CC_SetEnumValue(KX_HANDLE handle, const char* name, unsigned int value)
{
    return onNode(handle, KX_OP_SET_ENUM, name, &value, true,
                  [&](NodeMap& nodes) { return nodes.setEnum(name, value); });
}

KX_Status KX_CC_SetFloatValue(KX_HANDLE handle, const char* name, float value)
{
    return onNode(handle, KX_OP_SET_FLOAT, name, &value, true,
                  [&](NodeMap& nodes) { return nodes.setFloat(name, value); });
}

KX_Status KX_CC_SetIntValueEx(KX_HANDLE handle, const char* name, int64_t value)
{
    return onNode(handle, KX_OP_SET_INT, name, &value, true,
                  [&](NodeMap& nodes) { return nodes.setInteger(name, value); });
}

KX_Status KX_CC_SetStringValue(KX_HANDLE handle, const char* name, const char* value)
{
    return onNode(handle, KX_OP_SET_STRING, name, value, value != nullptr,
                  [&](NodeMap& nodes) { return nodes.setString(name, value); });
}

KX_Status KX_CC_ExecuteCommand(KX_HANDLE handle, const char* name)
{
    return onNode(handle, KX_OP_EXECUTE, name, nullptr, true,
                  [&](NodeMap& nodes) { return nodes.execute(name); });
}

KX_Status KX_CC_ReadMemory(KX_HANDLE handle, void* buffer, int64_t address, int64_t length)
{
    return onMemory(
        handle, KX_OP_READ_MEMORY, buffer, address, length,
        [&](Camera& camera, uint64_t from, size_t size) { return camera.readMemory(from, buffer, size); });
}

KX_Status KX_CC_WriteMemory(KX_HANDLE handle, const void* buffer, int64_t address, int64_t length)
{
    return onMemory(
        handle, KX_OP_WRITE_MEMORY, buffer, address, length,
        [&](Camera& camera, uint64_t to, size_t size) { return camera.writeMemory(to, buffer, size); });
}

KX_Status KX_XML_GetGenICamXML(KX_HANDLE handle, void* buffer, uint32_t size, uint32_t* length)
{
    return onLine(handle, buffer && length, {KX_OP_GET_DESCRIPTION}, [&](Camera& camera) -> Outcome {
        const std::string& text = camera.description();
        if (text.empty())
            return {KX_E_DESCRIPTION, camera.descriptionProblem()};
        *length = static_cast<uint32_t>(text.size() + 1);
        if (size < *length)
            return KX_E_BUFFER_TOO_SMALL;
        std::memcpy(buffer, text.c_str(), *length);
        return KX_OK;
    });
}

KX_Status KX_XML_GetNodeAccessMode(KX_HANDLE handle, const char* name, KX_XML_AccessMode* mode)
{
    return onNode(handle, KX_OP_GET_ACCESS_MODE, name, nullptr, mode != nullptr,
                  [&](NodeMap& nodes) { return nodes.accessMode(name, *mode); });
}

KX_Status KX_CC_FeatureSave(KX_HANDLE handle, const char* path)
{
    uint32_t count = 0;
    return featureFile(handle, KX_OP_FEATURE_SAVE, path, &count,
                       [&](CameraNodes& bag, const std::string& file, std::string& message) {
                           return saveBag(bag, bag.identity(), file, message, count);
                       });
}

KX_Status KX_CC_FeatureLoad(KX_HANDLE handle, const char* path)
{
    return featureFile(handle, KX_OP_FEATURE_LOAD, path, nullptr,
                       [](CameraNodes& bag, const std::string& file, std::string& message) {
                           return loadBag(bag, file, message);
                       });
}

} // extern "C"
