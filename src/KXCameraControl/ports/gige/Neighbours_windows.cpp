// SendARP() asks for any user. No connection attempt: it would find nobody whom ARP has not found.
#include "KXCameraControl/ports/gige/Neighbours.h"

#include "gvcp/Gvcp.h"

#include <winsock2.h>

#include <iphlpapi.h>
#undef interface

namespace kx
{

std::optional<ArpAnswer> askByArp(const NetworkInterface& interface, uint32_t address)
{
    uint8_t mac[8] = {};
    ULONG size = sizeof mac;
    const DWORD failure = ::SendARP(htonl(address), htonl(interface.address), mac, &size);
    if (failure == NO_ERROR && size == 6)
        return ArpAnswer{true, gvcp::get16(mac), gvcp::get32(mac + 2)};
    const bool isSilent = failure == ERROR_BAD_NET_NAME || failure == ERROR_NOT_FOUND ||
                          failure == ERROR_GEN_FAILURE; // ways in which it says that nobody answered
    return isSilent ? std::make_optional(ArpAnswer{}) : std::nullopt;
}

bool answersConnections(uint32_t, Clock::time_point)
{
    return false;
}

} // namespace kx
