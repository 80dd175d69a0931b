// Handles from their making to their end, and who is told of their calls.
#include "KXCameraControl/api/Api_Guard.h"
#include "KXCameraControl/camera/PortFactory.h"

using namespace kx;
using namespace kx::api;

extern "C" {

uint32_t KX_CC_GetSDKVersion(void)
{
    return static_cast<uint32_t>(KX_VERSION_MAJOR) << 24 | static_cast<uint32_t>(KX_VERSION_MINOR) << 16 |
           static_cast<uint32_t>(KX_VERSION_PATCH);
}

const char* KX_CC_StatusText(KX_Status status)
{
    return statusText(status);
}

KX_Status KX_CC_CreateHandle(KX_HANDLE* handle, const KX_DeviceInfo* device)
{
    return withoutExceptions([&] {
        if (!handle)
            return failed(nullptr, KX_E_PARAMETER, {});
        if (const KX_Status status = checkRecord(device))
            return failed(nullptr, status, {});
        auto port = newPort(*device);
        if (!port)
            return failed(nullptr, KX_E_NOT_SUPPORTED, {});
        *handle = addHandle(std::make_shared<Camera>(*device, std::move(port)));
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
        const auto camera = removeHandle(handle);
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
            return copyText(lastThreadError(), text, capacity, length);
        const auto camera = findHandle(handle);
        return camera ? copyText(camera->errorText(), text, capacity, length) : KX_E_HANDLE;
    });
}

// Without the handle's lock, so that it may be changed while a call waits for a camera.
KX_Status KX_CC_SetConnectionLostHandler(KX_HANDLE handle, KX_ConnectionLostHandler handler, void* user)
{
    return withoutExceptions([&] {
        const auto camera = findHandle(handle);
        if (!camera)
            return failed(nullptr, KX_E_HANDLE, {});
        camera->setConnectionLostHandler(handler, user);
        return KX_OK;
    });
}

KX_Status KX_CC_SetCallObserver(KX_HANDLE handle, KX_CallObserver observer, void* user)
{
    if (!handle) {
        setDefaultObserver({observer, user});
        return KX_OK;
    }
    return guarded(handle, [&](Camera& camera) -> Outcome {
        camera.observer = {observer, user};
        return KX_OK;
    });
}

} // extern "C"
