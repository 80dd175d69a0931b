#include "camera_emulator/IpPlace.h"

#include "gvcp/Gvcp.h"

namespace emu
{

using namespace gvcp;

namespace
{

IpPlace placeOf(const std::string& address, const CameraConfig& config)
{
    return {parseAddress(address).value_or(0), parseAddress(config.mask).value_or(0), 0};
}

} // namespace

IpPlace currentPlace(const Memory& memory)
{
    return {memory.readWord(RegCurrentAddress), memory.readWord(RegCurrentMask),
            memory.readWord(RegCurrentGateway)};
}

void setCurrentPlace(const IpPlace& place, Memory& memory)
{
    memory.writeWord(RegCurrentAddress, place.address);
    memory.writeWord(RegCurrentMask, place.mask);
    memory.writeWord(RegCurrentGateway, place.gateway);
}

IpPlace placeAtPowerUp(const CameraConfig& config, const Memory& memory)
{
    const uint32_t ways = memory.readWord(RegIpCurrent);
    const IpPlace persistent{memory.readWord(RegPersistentAddress), memory.readWord(RegPersistentMask),
                             memory.readWord(RegPersistentGateway)};
    if ((ways & kIpPersistent) != 0 && persistent.address != 0)
        return persistent;
    const IpPlace fromServer = placeOf(config.dhcpAddress, config); // address 0: there is no server
    if ((ways & kIpDhcp) != 0 && fromServer.address != 0)
        return fromServer;
    return placeOf(config.linkLocalAddress.empty() ? config.address : config.linkLocalAddress, config);
}

} // namespace emu
