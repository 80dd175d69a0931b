// Counting who in this process controls which camera.
#include "KXCameraControl/camera/OwnControl.h"

#include "KXCameraControl/ports/Transport.h"

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
    std::map<std::string, Holder> byPlace;
};

// Empty: a camera whose transport is not known here, and whose control nobody asks for.
std::string placeOf(const KX_DeviceInfo& device)
{
    const Transport* transport = transportOf(device);
    return transport ? std::to_string(transport->type) + " " + transport->place(device) : std::string();
}

// Never destroyed: handles may outlive the end of main.
Holders& holders()
{
    static auto* const instance = new Holders;
    return *instance;
}

} // namespace

void OwnControl::take()
{
    const std::string place = placeOf(m_device);
    if (m_taken || place.empty())
        return;
    Holders& all = holders();
    const std::lock_guard<std::mutex> lock(all.mutex);
    ++all.byPlace[place].count;
    m_taken = true;
}

void OwnControl::release()
{
    if (!m_taken)
        return;
    Holders& all = holders();
    const std::lock_guard<std::mutex> lock(all.mutex);
    Holder& holder = all.byPlace[placeOf(m_device)];
    --holder.count;
    holder.released = Clock::now();
    m_taken = false;
}

bool OwnControl::hasBeenSince(const KX_DeviceInfo& device, Clock::time_point start)
{
    Holders& all = holders();
    const std::lock_guard<std::mutex> lock(all.mutex);
    const auto holder = all.byPlace.find(placeOf(device));
    return holder != all.byPlace.end() && (holder->second.count > 0 || holder->second.released >= start);
}

} // namespace kx
