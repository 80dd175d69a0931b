#include "ScriptedHandles.h"

#include <algorithm>
#include <memory>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace tests
{
namespace
{

struct Library
{
    std::mutex mutex;
    std::map<QByteArray, std::unique_ptr<ScriptedDevice>> devices;
    std::vector<std::unique_ptr<ScriptedHandle>> handles;
    std::map<const char*, std::size_t> buffers;
    QStringList violations;
    CallHook hook;
    DeviceSearch search;
    KX_CallObserver observer = nullptr; // of handles to come
    void* observerUser = nullptr;
};

Library& library()
{
    static Library library;
    return library;
}

template <std::size_t Size>
QByteArray fieldText(const uint8_t (&field)[Size])
{
    const auto* begin = reinterpret_cast<const char*>(field);
    return QByteArray(begin, int(std::find(begin, begin + Size, '\0') - begin));
}

template <std::size_t Size>
void fillField(uint8_t (&field)[Size], const QByteArray& text)
{
    std::copy_n(text.constData(), std::min<std::size_t>(std::size_t(text.size()), Size - 1), field);
}

} // namespace

bool isOperation(const QByteArray& operation)
{
    static const QByteArrayList operations{
        "EnumDevices",         "IsDeviceAccessible",    "CreateHandle",   "OpenDevice",
        "CloseDevice",         "DestroyHandle",         "SetTimeout",     "GetBoolValue",
        "GetEnumValue",        "GetFloatValue",         "GetIntValueEx",  "GetStringValue",
        "SetBoolValue",        "SetEnumValue",          "SetFloatValue",  "SetIntValueEx",
        "SetStringValue",      "ExecuteCommand",        "ReadMemory",     "WriteMemory",
        "GetGenICamXML",       "GetNodeAccessMode",     "FeatureSave",    "FeatureLoad",
        "GetEnumEntryName",    "GetIntIncrementOrigin", "IsEverWritable", "GetRelatedNames",
        "GetRegisterCoverage", "GetRegisterNames"};
    return operations.contains(operation);
}

void addViolation(const QString& text)
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    library().violations.append(text);
}

QStringList cameraViolations()
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    return library().violations;
}

void resetScriptedCamera()
{
    Library& all = library();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.devices.clear();
    all.handles.clear();
    all.buffers.clear();
    all.violations.clear();
    all.hook = nullptr;
    all.search = nullptr;
    all.observer = nullptr;
}

ScriptedDevice& scriptedDevice(const QByteArray& serial)
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    std::unique_ptr<ScriptedDevice>& device = library().devices[serial];
    if (!device)
        device = std::make_unique<ScriptedDevice>(serial);
    return *device;
}

std::vector<ScriptedDevice*> allDevices()
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    std::vector<ScriptedDevice*> devices;
    for (const auto& device : library().devices)
        devices.push_back(device.second.get());
    return devices;
}

KX_DeviceInfo deviceInfo(quint32 transportType, const QByteArray& serial, const QByteArray& model)
{
    KX_DeviceInfo info{};
    info.transportType = transportType;
    const auto fill = [&](auto& part) {
        fillField(part.modelName, model);
        fillField(part.serialNumber, serial);
    };
    if (transportType == KX_TRANSPORT_GIGE)
        fill(info.special.gige);
    else if (transportType == KX_TRANSPORT_USB3)
        fill(info.special.usb3);
    else
        fill(info.special.cameraLink);
    return info;
}

QByteArray serialOf(const KX_DeviceInfo& info)
{
    switch (info.transportType) {
    case KX_TRANSPORT_GIGE:
        return fieldText(info.special.gige.serialNumber);
    case KX_TRANSPORT_USB3:
        return fieldText(info.special.usb3.serialNumber);
    default:
        return fieldText(info.special.cameraLink.serialNumber);
    }
}

void setCallHook(CallHook hook)
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    library().hook = std::move(hook);
}

void setDeviceSearch(DeviceSearch search)
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    library().search = std::move(search);
}

DeviceSearch deviceSearch()
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    return library().search;
}

void runHook(const QByteArray& serial, const TraceEntry& call)
{
    CallHook hook;
    DeviceSearch search;
    {
        const std::lock_guard<std::mutex> lock(library().mutex);
        hook = library().hook;
    }
    if (hook)
        hook(serial, call);
}

KX_Status createHandle(const KX_DeviceInfo& info, ScriptedHandle** created)
{
    Library& all = library();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto device = all.devices.find(serialOf(info));
    if (device == all.devices.end())
        return KX_E_NO_DEVICE;
    const KX_Status ruled = device->second->ruledStatus("CreateHandle", device->first, std::nullopt);
    if (ruled != KX_OK)
        return ruled;
    auto handle = std::make_unique<ScriptedHandle>();
    handle->ordinal = int(all.handles.size()) + 1;
    handle->device = device->second.get();
    handle->info = info;
    handle->observer = all.observer;
    handle->observerUser = all.observerUser;
    *created = handle.get();
    all.handles.push_back(std::move(handle));
    return KX_OK;
}

ScriptedHandle* findHandle(KX_HANDLE handle)
{
    if (!handle)
        return nullptr;
    const std::lock_guard<std::mutex> lock(library().mutex);
    for (const auto& known : library().handles)
        if (reinterpret_cast<KX_HANDLE>(known.get()) == handle && !known->isDestroyed)
            return known.get();
    library().violations.append("a handle used that is destroyed or was never made");
    return nullptr;
}

int livingHandles()
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    const auto& handles = library().handles;
    return int(std::count_if(handles.begin(), handles.end(), [](const auto& h) { return !h->isDestroyed; }));
}

void setObserver(ScriptedHandle* handle, KX_CallObserver observer, void* user)
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    (handle ? handle->observer : library().observer) = observer;
    (handle ? handle->observerUser : library().observerUser) = user;
}

void tellConnectionLost(const ScriptedDevice& device, KX_Status status)
{
    std::vector<std::pair<KX_ConnectionLostHandler, void*>> handlers;
    {
        const std::lock_guard<std::mutex> lock(library().mutex);
        for (const auto& handle : library().handles)
            if (handle->device == &device && handle->isOpen && handle->lostHandler)
                handlers.emplace_back(handle->lostHandler, handle->lostUser);
    }
    for (const auto& [handler, user] : handlers)
        handler(user, status);
}

void guardBuffer(const void* begin, std::size_t size)
{
    const std::lock_guard<std::mutex> lock(library().mutex);
    library().buffers[static_cast<const char*>(begin)] = size;
}

bool isInsideBuffer(const void* buffer, qint64 length)
{
#if defined(__SANITIZE_ADDRESS__)
    if (__asan_region_is_poisoned(const_cast<void*>(buffer), std::size_t(length)))
        return false;
#endif
    const std::lock_guard<std::mutex> lock(library().mutex);
    const auto& buffers = library().buffers;
    const auto* begin = static_cast<const char*>(buffer);
    auto guarded = buffers.upper_bound(begin);
    if (guarded == buffers.begin())
        return true;
    --guarded;
    const std::size_t offset = std::size_t(begin - guarded->first);
    return offset >= guarded->second || std::size_t(length) <= guarded->second - offset;
}

} // namespace tests
