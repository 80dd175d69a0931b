#include "KXCameraControl/ports/Discovery.h"

#include "KXCameraControl/ports/Beside.h"

#include <algorithm>
#include <string>
#include <tuple>

namespace kx
{

namespace
{

struct Found
{
    KX_Status status = KX_OK;
    std::vector<KX_DeviceEntry> entries;
};

Found search(const Transport& transport)
{
    Found found;
    found.status = transport.find(found.entries);
    return found;
}

bool comesBefore(const KX_DeviceEntry& a, const KX_DeviceEntry& b)
{
    const auto key = [](const KX_DeviceEntry& entry) {
        const Transport* transport = transportOf(entry.info);
        return std::make_tuple(entry.info.transportType, transport->serialNumber(entry.info),
                               transport->place(entry.info));
    };
    return key(a) < key(b);
}

} // namespace

KX_Status enumerateDevices(uint32_t transportMask, std::vector<KX_DeviceEntry>& entries)
{
    entries.clear();
    std::vector<std::future<Found>> searches;
    for (const Transport& transport : transports())
        if ((transportMask & transport.type) != 0)
            searches.push_back(std::async(beside, search, std::cref(transport)));
    KX_Status failure = KX_OK;
    for (auto& running : searches) {
        const Found found = running.get();
        entries.insert(entries.end(), found.entries.begin(), found.entries.end());
        if (found.status != KX_OK)
            failure = found.status;
    }
    std::sort(entries.begin(), entries.end(), comesBefore);
    return entries.empty() ? failure : KX_OK;
}

KX_Status deviceAvailability(const KX_DeviceInfo& device, uint32_t& availability)
{
    const Transport* transport = transportOf(device);
    return transport ? transport->availability(device, availability) : KX_E_NOT_SUPPORTED;
}

KX_Status controllerOf(const KX_DeviceInfo& device, KX_Controller& controller)
{
    controller = {};
    const Transport* transport = transportOf(device);
    return transport ? transport->controller(device, controller) : KX_E_NOT_SUPPORTED;
}

// A camera that somebody controls passes the command over, and nobody would know why.
KX_Status forceIp(const KX_DeviceInfo& device, const IpSettings& wanted)
{
    const Transport* transport = transportOf(device);
    if (!transport || !transport->forceIp)
        return KX_E_NOT_SUPPORTED;
    uint32_t availability = 0;
    if (const KX_Status status = transport->availability(device, availability))
        return status;
    return availability == KX_AVAILABILITY_IN_USE ? KX_E_CONTROL_REFUSED : transport->forceIp(device, wanted);
}

} // namespace kx
