// GigE Vision, chapter "GVCP", FORCEIP_CMD and FORCEIP_ACK. Cameras need seconds to change their address, and
// some never acknowledge it: what counts is that the camera answers a search with its new address.
#include "KXCameraControl/ports/gige/AddressForce.h"

#include "KXCameraControl/ports/Refusal.h"
#include "KXCameraControl/ports/gige/Inquiry.h"

#include <algorithm>

namespace kx
{

using namespace gvcp;

namespace
{

constexpr Patience kRound{1, std::chrono::milliseconds(250)};
constexpr int kRounds = 24; // together 6 s
constexpr uint16_t kForceId = 5;
constexpr uint16_t kSearchId = 6;

// Where commands to the camera go out, and where to: everybody behind its interface, or its own address.
struct Way
{
    std::vector<UdpSocket> sockets = std::vector<UdpSocket>(1);
    uint32_t commandTo = 0;
    uint32_t searchAt = 0;
};

bool open(Way& way, const KX_GigEDeviceInfo& gige, const IpSettings& wanted)
{
    if (gige.interfaceAddress == 0) {
        way.commandTo = gige.ipAddress;
        way.searchAt = wanted.address;
        return way.sockets[0].open(0);
    }
    const std::vector<NetworkInterface> all = networkInterfaces();
    const auto interface = std::find_if(all.begin(), all.end(), [&](const NetworkInterface& one) {
        return one.address == gige.interfaceAddress;
    });
    if (interface == all.end())
        return false;
    way.commandTo = way.searchAt = interface->broadcast;
    return way.sockets[0].openAt(*interface);
}

struct Progress
{
    KX_Status refusal = KX_OK;
    bool isAcknowledged = false;
    bool isThere = false;
};

void take(const AckPacket& ack, const KX_GigEDeviceInfo& gige, uint32_t address, Progress& progress)
{
    if (ack.id == kForceId && ack.command == ForceIpAck) {
        progress.isAcknowledged = ack.status == Success;
        progress.refusal = ack.status == Success ? KX_OK : statusOfRefusal(ack.status);
    }
    if (ack.id != kSearchId || ack.command != DiscoveryAck || ack.status != Success)
        return;
    const auto found = parseDiscovery(ack.payload);
    if (found && found->macHigh == gige.macHigh && found->macLow == gige.macLow && found->address == address)
        progress.isThere = true;
}

} // namespace

KX_Status forceGigeIp(const KX_DeviceInfo& device, const IpSettings& wanted)
{
    const KX_GigEDeviceInfo& gige = device.special.gige;
    Way way;
    if (!open(way, gige, wanted))
        return KX_E_NETWORK;
    const Bytes command =
        encodeForceIp(kForceId, {gige.macHigh, gige.macLow, wanted.address, wanted.mask, wanted.gateway});
    Progress progress;
    for (int left = kRounds; left > 0 && !progress.isThere && progress.refusal == KX_OK; --left) {
        std::vector<Question> questions{{0, way.searchAt, encodeDiscovery(kSearchId, true)}};
        if (!progress.isAcknowledged)
            questions.insert(questions.begin(), {0, way.commandTo, command});
        askAll(way.sockets, questions, kRound, [&](size_t, uint32_t, const AckPacket& ack) {
            take(ack, gige, wanted.address, progress);
            return false;
        });
    }
    if (progress.isThere)
        return KX_OK;
    return progress.refusal != KX_OK ? progress.refusal : KX_E_NO_ANSWER;
}

} // namespace kx
