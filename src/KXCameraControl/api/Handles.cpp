// The register of live handles and the numbers they get.
#include "KXCameraControl/api/Handles.h"

#include <unordered_map>

namespace kx
{

namespace
{

struct Registry
{
    std::mutex mutex;
    std::unordered_map<KX_HANDLE, std::shared_ptr<Camera>> cameras;
    uintptr_t lastNumber = 0;
    Observer defaultObserver;
};

// Never destroyed: threads of the program may still call while the process ends.
Registry& registry()
{
    static auto* const instance = new Registry;
    return *instance;
}

} // namespace

KX_HANDLE addHandle(std::shared_ptr<Camera> camera)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    camera->observer = all.defaultObserver;
    // Steps of 16 look like addresses to whoever checks a pointer's alignment.
    const auto handle = reinterpret_cast<KX_HANDLE>(all.lastNumber + 16);
    all.cameras.emplace(handle, std::move(camera));
    all.lastNumber += 16;
    return handle;
}

std::shared_ptr<Camera> findHandle(KX_HANDLE handle)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto it = all.cameras.find(handle);
    return it == all.cameras.end() ? nullptr : it->second;
}

std::shared_ptr<Camera> removeHandle(KX_HANDLE handle)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto it = all.cameras.find(handle);
    if (it == all.cameras.end())
        return nullptr;
    auto camera = std::move(it->second);
    all.cameras.erase(it);
    return camera;
}

void setDefaultObserver(const Observer& observer)
{
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.defaultObserver = observer;
}

} // namespace kx
