// The C boundary: every function goes through one guard, which knows handles, locks, observers, exceptions
// and the text of the last failure.
#include "KXCameraControl/api/Handles.h"
#include "KXCameraControl/api/StatusText.h"
#include "KXCameraControl/bag/CameraNodes.h"
#include "KXCameraControl/camera/PortFactory.h"
#include "KXCameraControl/ports/Discovery.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

using kx::Camera;
using kx::NodeMap;
using kx::OwnControl;

namespace
{

thread_local std::string lastThreadError;

KX_Status failed(Camera* camera, KX_Status status, std::string text)
{
    if (text.empty())
        text = kx::statusText(status);
    lastThreadError = text;
    if (camera)
        camera->setErrorText(std::move(text));
    return status;
}

template <class Body>
KX_Status withoutExceptions(Body body) noexcept
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return KX_E_MEMORY;
    } catch (...) {
        return KX_E_INTERNAL;
    }
}

// A status and what there is to say about it.
struct Outcome
{
    KX_Status status;
    std::string text;

    Outcome(KX_Status theStatus, std::string theText = {}) : status(theStatus), text(std::move(theText)) {}
};

// What an observer is told of a call.
struct Operation
{
    KX_Operation kind;
    const char* nodeName = nullptr;
    int64_t address = 0;
    int64_t length = 0;
    const void* value = nullptr; // where the value stands once the call has gone well
};

class ObservedCall
{
public:
    ObservedCall(KX_HANDLE handle, Camera& camera, const Operation& operation) : m_camera(camera)
    {
        m_event.handle = handle;
        m_event.device = &camera.device();
        m_event.operation = operation.kind;
        m_event.nodeName = operation.nodeName;
        m_event.address = operation.address;
        m_event.length = operation.length;
    }

    // False: refused.
    bool begin() { return tell() == 0 || m_event.operation == KX_OP_CLOSE; }

    void end(KX_Status status, const void* value)
    {
        m_event.finished = 1;
        m_event.status = status;
        m_event.value = status == KX_OK ? value : nullptr;
        tell();
    }

private:
    int tell()
    {
        const kx::Observer observer = m_camera.observer;
        if (!observer.function)
            return 0;
        m_event.requests = m_camera.requestCount();
        return observer.function(observer.user, &m_event);
    }

    Camera& m_camera;
    KX_CallEvent m_event{};
};

template <class Body>
KX_Status guarded(KX_HANDLE handle, Body body)
{
    std::shared_ptr<Camera> camera;
    const KX_Status status = withoutExceptions([&] {
        camera = kx::findHandle(handle);
        if (!camera)
            return failed(nullptr, KX_E_HANDLE, {});
        const std::lock_guard<std::mutex> lock(camera->mutex());
        const Outcome outcome = body(*camera);
        return outcome.status == KX_OK ? KX_OK : failed(camera.get(), outcome.status, outcome.text);
    });
    return status;
}

template <class Body>
Outcome observed(KX_HANDLE handle, Camera& camera, const Operation& operation, Body body)
{
    ObservedCall call(handle, camera, operation);
    Outcome outcome(KX_E_ABORTED);
    if (call.begin()) {
        outcome.status = withoutExceptions([&] {
            outcome = body();
            return outcome.status;
        });
    }
    call.end(outcome.status, operation.value);
    return outcome;
}

// A call that needs an open connection.
template <class Body>
KX_Status onLine(KX_HANDLE handle, bool parametersAreGood, const Operation& operation, Body body)
{
    return guarded(handle, [&](Camera& camera) -> Outcome {
        if (!parametersAreGood)
            return KX_E_PARAMETER;
        if (!camera.isOpen())
            return KX_E_HANDLE;
        return observed(handle, camera, operation, [&]() -> Outcome { return body(camera); });
    });
}

// A call on one node.
template <class Body>
KX_Status onNode(KX_HANDLE handle, KX_Operation kind, const char* name, const void* value,
                 bool parametersAreGood, Body body)
{
    const bool allGood = parametersAreGood && name && *name;
    return onLine(handle, allGood, {kind, name, 0, 0, value}, [&](Camera& camera) -> Outcome {
        if (const KX_Status lost = camera.lineStatus())
            return lost;
        NodeMap& nodes = camera.nodesForCall();
        const KX_Status status = body(nodes);
        // Where the description was no good, no name is known: the reason helps more than the name.
        if (status == KX_E_GC_PROPERTY && !camera.descriptionProblem().empty())
            return {status, camera.descriptionProblem()};
        return {status, status == KX_OK ? std::string() : nodes.lastError()};
    });
}

constexpr int64_t maximumMemoryLength = 0x1000000;

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
void tellValue(KX_HANDLE handle, Camera& camera, const std::string& feature, const std::string& text,
               bool isWrite)
{
    const char* name = feature.c_str();
    if (isWrite) {
        ObservedCall(handle, camera, {KX_OP_SET_STRING, name}).end(KX_OK, text.c_str());
        return;
    }
    KX_StringValue record{};
    std::strncpy(record.current, text.c_str(), sizeof record.current - 1);
    ObservedCall(handle, camera, {KX_OP_GET_STRING, name}).end(KX_OK, &record);
}

template <class Body>
KX_Status featureFile(KX_HANDLE handle, KX_Operation kind, const char* path, Body body)
{
    return onLine(handle, path && *path, {kind, path}, [&](Camera& camera) -> Outcome {
        if (const KX_Status lost = camera.lineStatus())
            return lost;
        kx::CameraNodes bag(camera, [&](const std::string& feature) {
            return ObservedCall(handle, camera, {kind, feature.c_str()}).begin();
        });
        if (kind == KX_OP_FEATURE_LOAD)
            bag.setValueWatch([&](const std::string& feature, const std::string& text, bool isWrite) {
                tellValue(handle, camera, feature, text, isWrite);
            });
        std::string message;
        const KX_Status status = body(bag, fileName(path), message);
        return {status, message};
    });
}

// Control that this process holds itself keeps nobody out.
uint32_t availabilityToUs(const KX_DeviceInfo& device, uint32_t availability,
                          OwnControl::Clock::time_point start)
{
    const bool ours = availability == KX_AVAILABILITY_IN_USE && OwnControl::hasBeenSince(device, start);
    return ours ? uint32_t(KX_AVAILABILITY_FREE) : availability;
}

KX_Status copyText(const std::string& source, char* text, uint32_t capacity, uint32_t* length)
{
    *length = static_cast<uint32_t>(source.size());
    if (capacity <= source.size())
        return KX_E_BUFFER_TOO_SMALL;
    std::memcpy(text, source.c_str(), source.size() + 1);
    return KX_OK;
}

} // namespace

extern "C" {

// ---- who is there ----

KX_Status KX_CC_EnumDevices(uint32_t transportMask, KX_DeviceEntry* entries, uint32_t capacity,
                            uint32_t* count)
{
    return withoutExceptions([&] {
        if (!count || (!entries && capacity > 0))
            return failed(nullptr, KX_E_PARAMETER, {});
        const auto start = OwnControl::Clock::now();
        std::vector<KX_DeviceEntry> found;
        if (const KX_Status status = kx::enumerateDevices(transportMask, found))
            return failed(nullptr, status, {});
        for (KX_DeviceEntry& entry : found)
            entry.availability = availabilityToUs(entry.info, entry.availability, start);
        std::copy_n(found.begin(), std::min<size_t>(found.size(), capacity), entries);
        *count = static_cast<uint32_t>(found.size());
        return KX_OK;
    });
}

KX_Status KX_CC_IsDeviceAccessible(const KX_DeviceInfo* device, uint32_t* availability)
{
    return withoutExceptions([&] {
        if (!device || !availability)
            return failed(nullptr, KX_E_PARAMETER, {});
        const auto start = OwnControl::Clock::now();
        const KX_Status status = kx::deviceAvailability(*device, *availability);
        *availability = availabilityToUs(*device, *availability, start);
        return status == KX_OK ? KX_OK : failed(nullptr, status, {});
    });
}

uint32_t KX_CC_GetSDKVersion(void)
{
    return static_cast<uint32_t>(KX_VERSION_MAJOR) << 24 | static_cast<uint32_t>(KX_VERSION_MINOR) << 16 |
           static_cast<uint32_t>(KX_VERSION_PATCH);
}

const char* KX_CC_StatusText(KX_Status status)
{
    return kx::statusText(status);
}

// ---- handles ----

KX_Status KX_CC_CreateHandle(KX_HANDLE* handle, const KX_DeviceInfo* device)
{
    return withoutExceptions([&] {
        if (!handle || !device)
            return failed(nullptr, KX_E_PARAMETER, {});
        auto port = kx::newPort(*device);
        if (!port)
            return failed(nullptr, KX_E_NOT_SUPPORTED, {});
        *handle = kx::addHandle(std::make_shared<Camera>(*device, std::move(port)));
        return KX_OK;
    });
}

KX_Status KX_CC_OpenDevice(KX_HANDLE handle, uint32_t accessMode, uint16_t switchOverKey)
{
    return guarded(handle, [&](Camera& camera) -> Outcome {
        const bool known = accessMode == KX_ACCESS_EXCLUSIVE || accessMode == KX_ACCESS_CONTROL ||
                           accessMode == KX_ACCESS_MONITOR;
        if (!known)
            return KX_E_PARAMETER;
        if (camera.isOpen())
            return KX_E_CALL_ORDER;
        Operation operation{KX_OP_OPEN};
        return observed(handle, camera, operation, [&]() -> Outcome {
            const KX_Status status = camera.open(accessMode, switchOverKey);
            operation.value = camera.description().c_str();
            return {status, status == KX_OK ? std::string() : camera.portError()};
        });
    });
}

KX_Status KX_CC_CloseDevice(KX_HANDLE handle)
{
    return guarded(handle, [&](Camera& camera) -> Outcome {
        return observed(handle, camera, {KX_OP_CLOSE}, [&]() -> Outcome {
            camera.close();
            return KX_OK;
        });
    });
}

KX_Status KX_CC_DestroyHandle(KX_HANDLE handle)
{
    return withoutExceptions([&] {
        const auto camera = kx::removeHandle(handle);
        if (!camera)
            return failed(nullptr, KX_E_HANDLE, {});
        // A call that still runs on another thread ends first; it holds the camera, and so do we.
        const std::lock_guard<std::mutex> lock(camera->mutex());
        camera->close();
        return KX_OK;
    });
}

KX_Status KX_CC_SetTimeout(KX_HANDLE handle, uint32_t milliseconds, uint32_t tries)
{
    return guarded(handle, [&](Camera& camera) -> Outcome {
        if (milliseconds < 10 || milliseconds > 60000 || tries < 1 || tries > 20)
            return KX_E_PARAMETER;
        camera.setTimeouts({std::chrono::milliseconds(milliseconds), tries});
        return KX_OK;
    });
}

// Does not wait for a call that runs on the handle, and does not count as a call whose failure is remembered.
KX_Status KX_CC_GetLastErrorText(KX_HANDLE handle, char* text, uint32_t capacity, uint32_t* length)
{
    return withoutExceptions([&]() -> KX_Status {
        if (!length || (!text && capacity > 0))
            return KX_E_PARAMETER;
        if (!handle)
            return copyText(lastThreadError, text, capacity, length);
        const auto camera = kx::findHandle(handle);
        return camera ? copyText(camera->errorText(), text, capacity, length) : KX_E_HANDLE;
    });
}

// Without the handle's lock, so that it may be changed while a call waits for a camera.
KX_Status KX_CC_SetConnectionLostHandler(KX_HANDLE handle, KX_ConnectionLostHandler handler, void* user)
{
    return withoutExceptions([&] {
        const auto camera = kx::findHandle(handle);
        if (!camera)
            return failed(nullptr, KX_E_HANDLE, {});
        camera->setConnectionLostHandler(handler, user);
        return KX_OK;
    });
}

KX_Status KX_CC_SetCallObserver(KX_HANDLE handle, KX_CallObserver observer, void* user)
{
    if (!handle) {
        kx::setDefaultObserver({observer, user});
        return KX_OK;
    }
    return guarded(handle, [&](Camera& camera) -> Outcome {
        camera.observer = {observer, user};
        return KX_OK;
    });
}

// ---- features ----

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
    return featureFile(handle, KX_OP_FEATURE_SAVE, path,
                       [](kx::CameraNodes& bag, const std::string& file, std::string& message) {
                           return kx::saveBag(bag, bag.identity(), file, message);
                       });
}

KX_Status KX_CC_FeatureLoad(KX_HANDLE handle, const char* path)
{
    return featureFile(handle, KX_OP_FEATURE_LOAD, path,
                       [](kx::CameraNodes& bag, const std::string& file, std::string& message) {
                           return kx::loadBag(bag, file, message);
                       });
}

} // extern "C"
