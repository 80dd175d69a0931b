#include "KXCameraControl/ports/gige/AddressProbe.h"

#include "KXCameraControl/ports/gige/Inquiry.h"
#include "KXCameraControl/ports/gige/Neighbours.h"

#include <algorithm>
#include <optional>

namespace kx
{

using namespace gvcp;
using std::chrono::milliseconds;

namespace
{

constexpr Patience kQuestion{3, milliseconds(150)};
constexpr milliseconds kConnection{500};
constexpr uint16_t kProbeId = 7;

std::optional<NetworkInterface> interfaceTowards(uint32_t address, uint32_t interfaceAddress)
{
    const std::vector<NetworkInterface> all = networkInterfaces();
    const auto found = std::find_if(all.begin(), all.end(), [&](const NetworkInterface& one) {
        return interfaceAddress != 0 ? one.address == interfaceAddress : one.hasInItsNetwork(address);
    });
    return found == all.end() ? std::nullopt : std::make_optional(*found);
}

bool isOwn(uint32_t address)
{
    const std::vector<NetworkInterface> all = networkInterfaces();
    return std::any_of(all.begin(), all.end(),
                       [&](const NetworkInterface& one) { return one.address == address; });
}

std::optional<Discovery> cameraAt(uint32_t address)
{
    std::optional<Discovery> found;
    std::vector<UdpSocket> sockets(1);
    if (!sockets[0].open(0))
        return found;
    std::vector<Question> questions{{0, address, encodeDiscovery(kProbeId)}};
    askAll(sockets, questions, kQuestion, [&](size_t, uint32_t from, const AckPacket& ack) {
        if (from == address && ack.id == kProbeId && ack.command == DiscoveryAck && ack.status == Success)
            found = parseDiscovery(ack.payload);
        return found.has_value();
    });
    return found;
}

KX_AddressOwner byRequest(uint32_t address, bool isLoopback)
{
    KX_AddressOwner owner{};
    owner.means = KX_PROBE_REQUEST;
    if (const auto camera = cameraAt(address)) {
        owner.isTaken = 1;
        owner.macHigh = camera->macHigh;
        owner.macLow = camera->macLow;
    } else if (!isLoopback) { // of the loopback's network this host answers for every address
        owner.isTaken = answersConnections(address, Clock::now() + kConnection);
    }
    return owner;
}

} // namespace

KX_AddressOwner probeAddress(uint32_t address, uint32_t interfaceAddress)
{
    if (isOwn(address))
        return {1, KX_PROBE_OWN, 0, 0, {}};
    const auto interface = interfaceTowards(address, interfaceAddress);
    if (interface && !interface->isLoopback)
        if (const auto answer = askByArp(*interface, address))
            return {answer->isThere, KX_PROBE_ARP, answer->macHigh, answer->macLow, {}};
    return byRequest(address, interface && interface->isLoopback);
}

} // namespace kx
