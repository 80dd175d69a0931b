// Counting who in this process controls which camera.
#include "KXCameraControl/camera/OwnControl.h"

#include <map>
#include <mutex>

namespace kx
{

namespace
{

struct Holder
{
    int count = 0;
    OwnControl::Clock::time_point released;
};

struct Holders
{
    std::mutex mutex;
    std::map<uint32_t, Holder> byAddress; // of GigE Vision cameras: the only ones whose control is asked for
};

// Never destroyed: handles may outlive the end of main.
Holders& holders()
{
    static auto* const instance = new Holders;
    return *instance;
}

} // namespace

void OwnControl::take()
{
    if (m_taken || m_device.transportType != KX_TRANSPORT_GIGE)
        return;
    Holders& all = holders();
    const std::lock_guard<std::mutex> lock(all.mutex);
    ++all.byAddress[m_device.special.gige.ipAddress].count;
    m_taken = true;
}

void OwnControl::release()
{
    if (!m_taken)
        return;
    Holders& all = holders();
    const std::lock_guard<std::mutex> lock(all.mutex);
    Holder& holder = all.byAddress[m_device.special.gige.ipAddress];
    --holder.count;
    holder.released = Clock::now();
    m_taken = false;
}

bool OwnControl::hasBeenSince(const KX_DeviceInfo& device, Clock::time_point start)
{
    if (device.transportType != KX_TRANSPORT_GIGE)
        return false;
    Holders& all = holders();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto holder = all.byAddress.find(device.special.gige.ipAddress);
    return holder != all.byAddress.end() && (holder->second.count > 0 || holder->second.released >= start);
}

} // namespace kx
