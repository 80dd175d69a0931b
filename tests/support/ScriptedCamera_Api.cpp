// The camera library's functions, answered by the scripted devices.
#include "ScriptedHandles.h"

#include <algorithm>
#include <cstring>
#include <limits>

using tests::Recorder;
using tests::ScriptedCall;
using tests::ScriptedDevice;
using tests::ScriptedHandle;
using tests::ScriptedNode;
using tests::TraceEntry;

namespace
{

QVariantList memoryArguments(int64_t address, int64_t length)
{
    return {qlonglong(address), qlonglong(length)};
}

bool isZeroed(const KX_StringValue& record)
{
    const auto* bytes = reinterpret_cast<const char*>(&record);
    return std::all_of(bytes, bytes + sizeof record, [](char byte) { return byte == 0; });
}

// A script that gives no minimum counts from 0.
int64_t incrementOrigin(const KX_IntegerValue& node)
{
    return node.minimum == std::numeric_limits<int64_t>::min() ? 0 : node.minimum;
}

KX_Status takeInteger(KX_IntegerValue& node, int64_t value)
{
    if (value < node.minimum || value > node.maximum)
        return KX_E_GC_RANGE;
    if (node.increment > 1 && (value - incrementOrigin(node)) % node.increment != 0)
        return KX_E_GC_ARGUMENT;
    node.current = value;
    return KX_OK;
}

KX_Status takeEntry(KX_EnumValue& node, uint32_t value)
{
    const uint32_t* begin = node.supported;
    const uint32_t* end = begin + std::min<uint32_t>(node.supportedCount, KX_ENUM_CAPACITY);
    if (std::find(begin, end, value) == end)
        return KX_E_GC_ARGUMENT;
    node.current = value;
    return KX_OK;
}

KX_Status takeText(KX_StringValue& node, const char* text)
{
    if (!text || qint64(std::strlen(text)) > std::min<qint64>(node.maximumLength, sizeof node.current - 1))
        return KX_E_GC_ARGUMENT;
    std::memset(node.current, 0, sizeof node.current);
    std::strcpy(node.current, text);
    return KX_OK;
}

KX_Status handOut(const QByteArray& source, char* text, uint32_t capacity, uint32_t* length)
{
    *length = uint32_t(source.size());
    if (capacity <= *length)
        return KX_E_BUFFER_TOO_SMALL;
    std::strcpy(text, source.constData());
    return KX_OK;
}

} // namespace

extern "C" {

KX_API KX_Status KX_CC_EnumDevices(uint32_t transportMask, KX_DeviceEntry* entries, uint32_t capacity,
                                   uint32_t* count)
{
    if (const tests::DeviceSearch search = tests::deviceSearch()) {
        const std::vector<KX_DeviceEntry> found = search();
        std::copy_n(found.begin(), std::min<std::size_t>(found.size(), capacity), entries);
        *count = uint32_t(found.size());
        return KX_OK;
    }
    const int sequence = Recorder::instance().beginCall("EnumDevices", 0, {}, {transportMask, capacity});
    uint32_t found = 0;
    for (ScriptedDevice* device : tests::allDevices()) {
        if (found < capacity) {
            entries[found] = KX_DeviceEntry{};
            entries[found].info = tests::deviceInfo(KX_TRANSPORT_GIGE, device->serial(), "Scripted");
            entries[found].availability = KX_AVAILABILITY_FREE;
        }
        ++found;
    }
    *count = found;
    Recorder::instance().finishCall(sequence, KX_OK);
    return KX_OK;
}

KX_API KX_Status KX_CC_IsDeviceAccessible(const KX_DeviceInfo* device, uint32_t* availability)
{
    const QByteArray serial = tests::serialOf(*device);
    const int sequence = Recorder::instance().beginCall("IsDeviceAccessible", 0, serial, {});
    bool isKnown = false;
    for (ScriptedDevice* known : tests::allDevices())
        isKnown = isKnown || known->serial() == serial;
    *availability = isKnown ? KX_AVAILABILITY_FREE : KX_AVAILABILITY_UNREACHABLE;
    Recorder::instance().finishCall(sequence, KX_OK);
    return KX_OK;
}

KX_API uint32_t KX_CC_GetSDKVersion(void)
{
    return 0x01000000u;
}

KX_API const char* KX_CC_StatusText(KX_Status status)
{
    return status == KX_OK ? "No error." : "A scripted failure.";
}

KX_API KX_Status KX_CC_CreateHandle(KX_HANDLE* handle, const KX_DeviceInfo* device)
{
    TraceEntry entry;
    entry.operation = "CreateHandle";
    entry.name = device ? tests::serialOf(*device) : QByteArray();
    entry.sequence = Recorder::instance().beginCall(entry.operation, 0, entry.name, {});
    tests::runHook(entry.name, entry);
    ScriptedHandle* created = nullptr;
    const KX_Status status = handle && device ? tests::createHandle(*device, &created) : KX_E_PARAMETER;
    if (created) {
        *handle = reinterpret_cast<KX_HANDLE>(created);
        Recorder::instance().nameHandle(entry.sequence, created->ordinal);
    }
    Recorder::instance().finishCall(entry.sequence, status);
    return status;
}

KX_API KX_Status KX_CC_OpenDevice(KX_HANDLE handle, uint32_t accessMode, uint16_t switchOverKey)
{
    return ScriptedCall("OpenDevice", handle, nullptr, {accessMode, switchOverKey}, KX_OP_OPEN)
        .evenClosed()
        .run([](ScriptedHandle& state, ScriptedDevice&) -> KX_Status {
            if (state.isOpen)
                return KX_E_CALL_ORDER;
            state.isOpen = true;
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_CloseDevice(KX_HANDLE handle)
{
    return ScriptedCall("CloseDevice", handle, nullptr, {}, KX_OP_CLOSE)
        .evenClosed()
        .run([](ScriptedHandle& state, ScriptedDevice&) -> KX_Status {
            state.isOpen = false;
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_DestroyHandle(KX_HANDLE handle)
{
    return ScriptedCall("DestroyHandle", handle, nullptr, {})
        .evenClosed()
        .run([](ScriptedHandle& state, ScriptedDevice&) -> KX_Status {
            state.isDestroyed = true;
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_SetTimeout(KX_HANDLE handle, uint32_t milliseconds, uint32_t tries)
{
    return ScriptedCall("SetTimeout", handle, nullptr, {milliseconds, tries})
        .evenClosed()
        .run([](ScriptedHandle&, ScriptedDevice&) -> KX_Status { return KX_OK; });
}

KX_API KX_Status KX_CC_GetLastErrorText(KX_HANDLE, char* text, uint32_t capacity, uint32_t* length)
{
    *length = 0;
    if (capacity == 0)
        return KX_E_BUFFER_TOO_SMALL;
    *text = '\0';
    return KX_OK;
}

KX_API KX_Status KX_CC_GetController(const KX_DeviceInfo*, KX_Controller*)
{
    return KX_E_NOT_SUPPORTED;
}

KX_API KX_Status KX_CC_SetConnectionLostHandler(KX_HANDLE handle, KX_ConnectionLostHandler handler,
                                                void* user)
{
    ScriptedHandle* state = tests::findHandle(handle);
    if (!state)
        return KX_E_HANDLE;
    state->lostHandler = handler;
    state->lostUser = user;
    return KX_OK;
}

KX_API KX_Status KX_CC_SetCallObserver(KX_HANDLE handle, KX_CallObserver observer, void* user)
{
    ScriptedHandle* state = tests::findHandle(handle);
    if (handle && !state)
        return KX_E_HANDLE;
    tests::setObserver(state, observer, user);
    return KX_OK;
}

KX_API KX_Status KX_CC_GetBoolValue(KX_HANDLE handle, const char* name, bool* value)
{
    return ScriptedCall("GetBoolValue", handle, name, {}, KX_OP_GET_BOOL).get(&ScriptedNode::boolean, value);
}

KX_API KX_Status KX_CC_GetEnumValue(KX_HANDLE handle, const char* name, KX_EnumValue* value)
{
    return ScriptedCall("GetEnumValue", handle, name, {}, KX_OP_GET_ENUM)
        .get(&ScriptedNode::enumeration, value);
}

// The script knows no names of entries.
KX_API KX_Status KX_CC_GetEnumEntryName(KX_HANDLE handle, const char* name, uint32_t value, char* text,
                                        uint32_t capacity, uint32_t* length)
{
    return ScriptedCall("GetEnumEntryName", handle, name, {value}, KX_OP_GET_ENTRY_NAME)
        .run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
            const auto entries = device.node(name).entries;
            const auto entry = entries.find(value);
            return entry == entries.end() ? KX_E_GC_ARGUMENT : handOut(entry->second, text, capacity, length);
        });
}

KX_API KX_Status KX_CC_GetFloatValue(KX_HANDLE handle, const char* name, KX_FloatValue* value)
{
    return ScriptedCall("GetFloatValue", handle, name, {}, KX_OP_GET_FLOAT).get(&ScriptedNode::real, value);
}

KX_API KX_Status KX_CC_GetIntValueEx(KX_HANDLE handle, const char* name, KX_IntegerValue* value)
{
    return ScriptedCall("GetIntValueEx", handle, name, {}, KX_OP_GET_INT).get(&ScriptedNode::integer, value);
}

KX_API KX_Status KX_CC_GetIntIncrementOrigin(KX_HANDLE handle, const char* name, int64_t* origin)
{
    KX_IntegerValue value{};
    const KX_Status status =
        ScriptedCall("GetIntIncrementOrigin", handle, name, {}, KX_OP_GET_INCREMENT_ORIGIN)
            .get(&ScriptedNode::integer, &value);
    if (status == KX_OK)
        *origin = incrementOrigin(value);
    return status;
}

KX_API KX_Status KX_CC_GetStringValue(KX_HANDLE handle, const char* name, KX_StringValue* value)
{
    if (value && !isZeroed(*value))
        tests::addViolation(QString("the string record for %1 was not zeroed").arg(name));
    return ScriptedCall("GetStringValue", handle, name, {}, KX_OP_GET_STRING).get(&ScriptedNode::text, value);
}

KX_API KX_Status KX_CC_SetBoolValue(KX_HANDLE handle, const char* name, bool value)
{
    return ScriptedCall("SetBoolValue", handle, name, {value}, KX_OP_SET_BOOL)
        .set(&ScriptedNode::boolean, [value](bool& node) -> KX_Status {
            node = value;
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_SetEnumValue(KX_HANDLE handle, const char* name, unsigned int value)
{
    return ScriptedCall("SetEnumValue", handle, name, {value}, KX_OP_SET_ENUM)
        .set(&ScriptedNode::enumeration, [value](KX_EnumValue& node) { return takeEntry(node, value); });
}

KX_API KX_Status KX_CC_SetFloatValue(KX_HANDLE handle, const char* name, float value)
{
    return ScriptedCall("SetFloatValue", handle, name, {value}, KX_OP_SET_FLOAT)
        .set(&ScriptedNode::real, [value](KX_FloatValue& node) -> KX_Status {
            if (!(value >= node.minimum && value <= node.maximum))
                return KX_E_GC_RANGE;
            node.current = value;
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_SetIntValueEx(KX_HANDLE handle, const char* name, int64_t value)
{
    return ScriptedCall("SetIntValueEx", handle, name, {qlonglong(value)}, KX_OP_SET_INT)
        .set(&ScriptedNode::integer, [value](KX_IntegerValue& node) { return takeInteger(node, value); });
}

KX_API KX_Status KX_CC_SetStringValue(KX_HANDLE handle, const char* name, const char* value)
{
    return ScriptedCall("SetStringValue", handle, name, {QString::fromLatin1(value)}, KX_OP_SET_STRING)
        .set(&ScriptedNode::text, [value](KX_StringValue& node) { return takeText(node, value); });
}

KX_API KX_Status KX_CC_ExecuteCommand(KX_HANDLE handle, const char* name)
{
    return ScriptedCall("ExecuteCommand", handle, name, {}, KX_OP_EXECUTE)
        .run([](ScriptedHandle&, ScriptedDevice&) -> KX_Status { return KX_OK; });
}

KX_API KX_Status KX_CC_ReadMemory(KX_HANDLE handle, void* buffer, int64_t address, int64_t length)
{
    return ScriptedCall("ReadMemory", handle, nullptr, memoryArguments(address, length), KX_OP_READ_MEMORY)
        .at(address, length)
        .readMemory(buffer);
}

KX_API KX_Status KX_CC_WriteMemory(KX_HANDLE handle, const void* buffer, int64_t address, int64_t length)
{
    QVariantList arguments = memoryArguments(address, length);
    if (buffer && length > 0 && length <= 4096 && tests::isInsideBuffer(buffer, length))
        arguments.append(QByteArray(static_cast<const char*>(buffer), int(length)));
    return ScriptedCall("WriteMemory", handle, nullptr, arguments, KX_OP_WRITE_MEMORY)
        .at(address, length)
        .writeMemory(buffer);
}

KX_API KX_Status KX_XML_GetGenICamXML(KX_HANDLE handle, void* buffer, uint32_t size, uint32_t* length)
{
    return ScriptedCall("GetGenICamXML", handle, nullptr, {size}, KX_OP_GET_DESCRIPTION)
        .describe(buffer, size, length);
}

KX_API KX_Status KX_XML_GetNodeAccessMode(KX_HANDLE handle, const char* name, KX_XML_AccessMode* mode)
{
    return ScriptedCall("GetNodeAccessMode", handle, name, {}, KX_OP_GET_ACCESS_MODE).accessMode(mode);
}

KX_API KX_Status KX_CC_IsEverWritable(KX_HANDLE handle, const char* name, bool* writable)
{
    return ScriptedCall("IsEverWritable", handle, name, {}, KX_OP_IS_EVER_WRITABLE)
        .run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
            if (!device.hasNode(name))
                return KX_E_GC_PROPERTY;
            *writable = device.node(name).isEverWritable;
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_GetRelatedNames(KX_HANDLE handle, const char* name, uint32_t relation, char* text,
                                       uint32_t capacity, uint32_t* length)
{
    return ScriptedCall("GetRelatedNames", handle, name, {relation}, KX_OP_GET_RELATED_NAMES)
        .run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
            if (!device.hasNode(name))
                return KX_E_GC_PROPERTY;
            return handOut(device.node(name).related[relation], text, capacity, length);
        });
}

KX_API KX_Status KX_CC_GetRegisterCoverage(KX_HANDLE handle, int64_t address, int64_t length,
                                           KX_RegisterCoverage* coverage)
{
    return ScriptedCall("GetRegisterCoverage", handle, nullptr, memoryArguments(address, length),
                        KX_OP_GET_REGISTER_COVERAGE)
        .at(address, length)
        .run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
            QByteArray names;
            *coverage = device.coverage(address, length, names);
            return KX_OK;
        });
}

KX_API KX_Status KX_CC_GetRegisterNames(KX_HANDLE handle, int64_t address, int64_t length, char* text,
                                        uint32_t capacity, uint32_t* textLength)
{
    return ScriptedCall("GetRegisterNames", handle, nullptr, memoryArguments(address, length),
                        KX_OP_GET_REGISTER_NAMES)
        .at(address, length)
        .run([&](ScriptedHandle&, ScriptedDevice& device) -> KX_Status {
            QByteArray names;
            device.coverage(address, length, names);
            return handOut(names, text, capacity, textLength);
        });
}

KX_API KX_Status KX_CC_FeatureSave(KX_HANDLE handle, const char* path)
{
    return ScriptedCall("FeatureSave", handle, path, {}, KX_OP_FEATURE_SAVE)
        .run([](ScriptedHandle&, ScriptedDevice&) -> KX_Status { return KX_OK; });
}

KX_API KX_Status KX_CC_FeatureLoad(KX_HANDLE handle, const char* path)
{
    return ScriptedCall("FeatureLoad", handle, path, {}, KX_OP_FEATURE_LOAD)
        .run([](ScriptedHandle&, ScriptedDevice&) -> KX_Status { return KX_OK; });
}

} // extern "C"
