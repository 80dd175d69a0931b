// Which cameras there are, and when to look again.
#include "KXCameraControl/api/Api_Guard.h"
#include "KXCameraControl/ports/Discovery.h"
#include "KXCameraControl/ports/SearchPlaces.h"
#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/Transport.h"
#include "KXCameraControl/ports/gige/AddressProbe.h"

#include <algorithm>
#include <vector>

using namespace kx;
using namespace kx::api;

namespace
{

// Control that this process holds itself keeps nobody out.
uint32_t availabilityToUs(const KX_DeviceInfo& device, uint32_t availability,
                          OwnControl::Clock::time_point start)
{
    const bool ours = availability == KX_AVAILABILITY_IN_USE && OwnControl::hasBeenSince(device, start);
    return ours ? uint32_t(KX_AVAILABILITY_FREE) : availability;
}

// Neither this network, nor everybody, nor a group (RFC 1122, RFC 1112).
bool isHostAddress(uint32_t address)
{
    const uint32_t first = address >> 24;
    return first > 0 && first < 224;
}

bool isMask(uint32_t mask)
{
    const uint32_t hosts = ~mask;
    return mask != 0 && (hosts & (hosts + 1)) == 0;
}

} // namespace

extern "C" {

KX_Status KX_CC_EnumDevices(uint32_t transportMask, KX_DeviceEntry* entries, uint32_t capacity,
                            uint32_t* count)
{
    return withoutExceptions([&] {
        if (!count || (!entries && capacity > 0))
            return failed(nullptr, KX_E_PARAMETER, {});
        const auto start = OwnControl::Clock::now();
        std::vector<KX_DeviceEntry> found;
        if (const KX_Status status = enumerateDevices(transportMask, found))
            return failed(nullptr, status, {});
        for (KX_DeviceEntry& entry : found)
            entry.availability = availabilityToUs(entry.info, entry.availability, start);
        std::copy_n(found.begin(), std::min<size_t>(found.size(), capacity), entries);
        *count = static_cast<uint32_t>(found.size());
        return KX_OK;
    });
}

KX_Status KX_CC_CheckSearchPlaces(void)
{
    return withoutExceptions([] {
        std::string text;
        for (const std::string& problem : searchPlaces().problems)
            text += (text.empty() ? "" : "\n") + problem;
        return text.empty() ? KX_OK : failed(nullptr, KX_E_PARAMETER, text);
    });
}

KX_Status KX_CC_GetSearchAddresses(uint32_t* addresses, uint32_t capacity, uint32_t* count)
{
    return withoutExceptions([&] {
        if (!count || (!addresses && capacity > 0))
            return failed(nullptr, KX_E_PARAMETER, {});
        const std::vector<uint32_t> asked = searchPlaces().addresses;
        std::copy_n(asked.begin(), std::min<size_t>(asked.size(), capacity), addresses);
        *count = static_cast<uint32_t>(asked.size());
        return KX_OK;
    });
}

KX_Status KX_CC_GetSearchProblems(char* text, uint32_t capacity, uint32_t* length)
{
    return withoutExceptions([&] {
        if (!length || (!text && capacity > 0))
            return failed(nullptr, KX_E_PARAMETER, {});
        std::string all;
        for (const Transport& transport : transports())
            for (const std::string& problem :
                 transport.problems ? transport.problems() : std::vector<std::string>())
                all += (all.empty() ? "" : "\n") + problem;
        return copyText(all, text, capacity, length);
    });
}

KX_Status KX_CC_GetController(const KX_DeviceInfo* device, KX_Controller* controller)
{
    return withoutExceptions([&] {
        if (!controller)
            return failed(nullptr, KX_E_PARAMETER, {});
        if (const KX_Status status = checkRecord(device))
            return failed(nullptr, status, {});
        const KX_Status status = controllerOf(*device, *controller);
        return status == KX_OK ? KX_OK : failed(nullptr, status, {});
    });
}

KX_Status KX_CC_IsDeviceAccessible(const KX_DeviceInfo* device, uint32_t* availability)
{
    return withoutExceptions([&] {
        if (!availability)
            return failed(nullptr, KX_E_PARAMETER, {});
        if (const KX_Status status = checkRecord(device))
            return failed(nullptr, status, {});
        const auto start = OwnControl::Clock::now();
        const KX_Status status = deviceAvailability(*device, *availability);
        *availability = availabilityToUs(*device, *availability, start);
        return status == KX_OK ? KX_OK : failed(nullptr, status, {});
    });
}

KX_Status KX_CC_ForceIp(const KX_DeviceInfo* device, uint32_t address, uint32_t mask, uint32_t gateway)
{
    return withoutExceptions([&] {
        if (!device || !isHostAddress(address) || !isMask(mask) || (gateway != 0 && !isHostAddress(gateway)))
            return failed(nullptr, KX_E_PARAMETER, {});
        if (const KX_Status status = checkRecord(device))
            return failed(nullptr, status, {});
        const KX_Status status = forceIp(*device, {address, mask, gateway});
        return status == KX_OK ? KX_OK : failed(nullptr, status, {});
    });
}

KX_Status KX_CC_ProbeAddress(uint32_t address, uint32_t interfaceAddress, KX_AddressOwner* owner)
{
    return withoutExceptions([&] {
        if (!owner || !isHostAddress(address))
            return failed(nullptr, KX_E_PARAMETER, {});
        *owner = probeAddress(address, interfaceAddress);
        return KX_OK;
    });
}

uint32_t KX_CC_GetInterfaceStamp(void)
{
    try {
        bool isKnown = false;
        Stamp stamp;
        for (const Transport& transport : transports()) {
            const uint32_t one = transport.stamp();
            isKnown = isKnown || one != 0;
            stamp.add(&one, sizeof one);
        }
        return isKnown ? stamp.value() : 0;
    } catch (...) {
        return 0;
    }
}

} // extern "C"
