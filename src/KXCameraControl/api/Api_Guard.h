// What every C function goes through: it finds the handle among the living, takes the handle's lock, asks the
// call observer, turns exceptions into statuses and keeps the text of the last failure. For the Api_ files
// only.
#pragma once

#include "KXCameraControl/api/Handles.h"
#include "KXCameraControl/api/StatusText.h"
#include "KXCameraControl/api/ThreadError.h"

#include <cstring>
#include <new>
#include <string>

namespace kx::api
{

inline KX_Status failed(Camera* camera, KX_Status status, std::string text)
{
    if (text.empty())
        text = statusText(status);
    lastThreadError() = text;
    if (camera)
        camera->setErrorText(std::move(text));
    return status;
}

// What is asked of a record from outside before anything else of it is looked at.
inline KX_Status checkRecord(const KX_DeviceInfo* device)
{
    if (!device)
        return KX_E_PARAMETER;
    return device->layout == KX_DEVICE_INFO_LAYOUT ? KX_OK : KX_E_RECORD;
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
        const Observer observer = m_camera.observer;
        if (!observer.function)
            return 0;
        m_event.requests = m_camera.requestCount();
        return observer.function(observer.user, &m_event);
    }

    Camera& m_camera;
    KX_CallEvent m_event{};
};

// A call on a handle, open or not.
template <class Body>
KX_Status guarded(KX_HANDLE handle, Body body)
{
    std::shared_ptr<Camera> camera;
    const KX_Status status = withoutExceptions([&] {
        camera = findHandle(handle);
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
        Outcome outcome = observed(handle, camera, operation, [&]() -> Outcome { return body(camera); });
        if (outcome.status == KX_E_CONNECTION_LOST && outcome.text.empty())
            outcome.text = camera.lossText();
        return outcome;
    });
}

// A call on the nodes of an open connection.
template <class Body>
KX_Status onNodes(KX_HANDLE handle, bool parametersAreGood, const Operation& operation, Body body)
{
    return onLine(handle, parametersAreGood, operation, [&](Camera& camera) -> Outcome {
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

// On one of them.
template <class Body>
KX_Status onNode(KX_HANDLE handle, KX_Operation kind, const char* name, const void* value,
                 bool parametersAreGood, Body body)
{
    return onNodes(handle, parametersAreGood && name && *name, {kind, name, 0, 0, value}, body);
}

// Of one call on device memory, in bytes.
constexpr int64_t maximumMemoryLength = 0x1000000;

// A text into a caller's buffer.
inline KX_Status copyText(const std::string& source, char* text, uint32_t capacity, uint32_t* length)
{
    *length = static_cast<uint32_t>(source.size());
    if (capacity <= source.size())
        return KX_E_BUFFER_TOO_SMALL;
    std::memcpy(text, source.c_str(), source.size() + 1);
    return KX_OK;
}

} // namespace kx::api
