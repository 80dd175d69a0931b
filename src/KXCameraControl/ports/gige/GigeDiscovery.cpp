// Asking networks and single addresses for cameras.
#include "KXCameraControl/ports/gige/GigeDiscovery.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/SearchPlaces.h"
#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/gige/AddressForce.h"
#include "KXCameraControl/ports/gige/DiscoveryAnswers.h"
#include "KXCameraControl/ports/gige/GvcpPort.h"
#include "KXCameraControl/ports/gige/Inquiry.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace kx
{

using namespace gvcp;
using std::chrono::milliseconds;

namespace
{

// Together the window of 400 ms; the second try is for datagrams that got lost.
constexpr Patience kSearch{2, milliseconds(200)};
constexpr Patience kQuery{3, milliseconds(200)};
constexpr uint16_t kDiscoveryId = 1;
constexpr uint16_t kQueryId = 2;
constexpr uint16_t kHolderAddressId = 3;
constexpr uint16_t kHolderPortId = 4;

struct Search
{
    std::vector<Route> routes; // of `sockets`, index by index
    std::vector<UdpSocket> sockets;
    std::vector<Question> questions;
    bool hasFailed = false; // a socket could not be opened
};

struct Found
{
    KX_DeviceEntry entry;
    size_t socket;
};

void addRoute(Search& search, Route route, UdpSocket socket)
{
    search.routes.push_back(std::move(route));
    search.sockets.push_back(std::move(socket));
}

void searchNetwork(Search& search, const NetworkInterface& interface)
{
    UdpSocket socket;
    if (!socket.openAt(interface)) {
        search.hasFailed = true;
        return;
    }
    search.questions.push_back(
        {search.sockets.size(), interface.broadcast, encodeDiscovery(kDiscoveryId, true)});
    addRoute(search, {interface.name, interface.address, interface.mask}, std::move(socket));
}

void searchAddresses(Search& search, const std::vector<uint32_t>& addresses)
{
    UdpSocket socket;
    if (!socket.open(0)) {
        search.hasFailed = true;
        return;
    }
    for (uint32_t address : addresses)
        search.questions.push_back({search.sockets.size(), address, encodeDiscovery(kDiscoveryId)});
    addRoute(search, {"unicast", 0, 0}, std::move(socket));
}

bool isSameCamera(const KX_GigEDeviceInfo& a, const KX_GigEDeviceInfo& b)
{
    return a.macHigh == b.macHigh && a.macLow == b.macLow && a.ipAddress == b.ipAddress &&
           std::memcmp(a.serialNumber, b.serialNumber, sizeof a.serialNumber) == 0;
}

// A camera may be seen by several ways. One through an interface tells more than one without, and the
// camera's own network more than another that the interface has an address of.
int worth(const KX_DeviceEntry& entry)
{
    const KX_GigEDeviceInfo& gige = entry.info.special.gige;
    if (gige.interfaceAddress == 0)
        return 0;
    return ((gige.ipAddress ^ gige.interfaceAddress) & entry.interfaceMask) == 0 ? 2 : 1;
}

void addOrMerge(std::vector<Found>& cameras, Found found)
{
    for (Found& known : cameras) {
        if (!isSameCamera(known.entry.info.special.gige, found.entry.info.special.gige))
            continue;
        if (worth(found.entry) > worth(known.entry))
            known = found;
        return;
    }
    cameras.push_back(found);
}

std::vector<Found> findCameras(Search& search)
{
    std::vector<Found> cameras;
    askAll(search.sockets, search.questions, kSearch,
           [&](size_t socket, uint32_t address, const AckPacket& ack) {
               const auto entry = entryFrom(ack, kDiscoveryId, address, search.routes[socket]);
               if (entry)
                   addOrMerge(cameras, {*entry, socket});
               return entry.has_value();
           });
    return cameras;
}

// Everybody behind an interface hears a broadcast, also cameras with an address that no route of this host
// leads to, or that somebody else has where it leads.
bool isReachable(const KX_GigEDeviceInfo& gige)
{
    if (gige.ipAddress == 0) // to the system: this host
        return false;
    const std::vector<NetworkInterface> all = networkInterfaces();
    const auto interface = std::find_if(all.begin(), all.end(), [&](const NetworkInterface& one) {
        return one.address == gige.interfaceAddress;
    });
    if (interface == all.end() || interface->hasInItsNetwork(gige.ipAddress))
        return true;
    UdpSocket way;
    return way.open(0) && way.connect({gige.ipAddress, kPort}) && way.localAddress() == interface->address;
}

// Cameras are asked as control is taken: with the interface's address, by the way that the system chooses.
std::vector<UdpSocket> openDoors(const std::vector<Route>& routes)
{
    std::vector<UdpSocket> doors(routes.size());
    for (size_t i = 0; i < routes.size(); ++i)
        doors[i].open(routes[i].localAddress); // one that stays closed leads to nobody
    return doors;
}

void queryAvailability(std::vector<UdpSocket>& sockets, std::vector<Found>& cameras)
{
    std::vector<Question> questions;
    for (const Found& camera : cameras)
        if (isReachable(camera.entry.info.special.gige))
            questions.push_back({camera.socket, camera.entry.info.special.gige.ipAddress,
                                 encodeReadRegisters(kQueryId, {RegControlPrivilege})});
    askAll(sockets, questions, kQuery, [&](size_t socket, uint32_t address, const AckPacket& ack) {
        const auto availability = availabilityFrom(ack);
        if (ack.id != kQueryId || !availability)
            return false;
        for (Found& camera : cameras)
            if (camera.socket == socket && camera.entry.info.special.gige.ipAddress == address)
                camera.entry.availability = *availability;
        return true;
    });
}

// One register a question: not every camera takes several.
uint32_t askRegister(std::vector<UdpSocket>& sockets, uint32_t camera, uint16_t id, uint32_t address)
{
    uint32_t value = 0;
    std::vector<Question> questions{{0, camera, encodeReadRegisters(id, {address})}};
    askAll(sockets, questions, kQuery, [&](size_t, uint32_t, const AckPacket& ack) {
        const auto shown = shownValue(ack, id);
        value = shown.value_or(value);
        return shown.has_value();
    });
    return value;
}

// The interface may have another address than when the camera was found.
bool openTowards(const KX_GigEDeviceInfo& gige, UdpSocket& socket)
{
    return socket.open(gige.interfaceAddress) || socket.open(0);
}

KX_Status findGigeCameras(std::vector<KX_DeviceEntry>& entries)
{
    Search search;
    const SearchPlaces places = searchPlaces();
    for (const NetworkInterface& interface : places.interfaces)
        searchNetwork(search, interface);
    if (!places.addresses.empty())
        searchAddresses(search, places.addresses);
    if (search.hasFailed && search.sockets.empty())
        return KX_E_NETWORK;

    std::vector<Found> cameras = findCameras(search);
    std::vector<UdpSocket> doors = openDoors(search.routes);
    queryAvailability(doors, cameras);
    for (const Found& camera : cameras)
        entries.push_back(camera.entry);
    return KX_OK;
}

KX_Status gigeAvailability(const KX_DeviceInfo& device, uint32_t& availability)
{
    const KX_GigEDeviceInfo& gige = device.special.gige;
    availability = KX_AVAILABILITY_UNREACHABLE;
    if (!isReachable(gige))
        return KX_OK;
    std::vector<UdpSocket> sockets(1);
    if (!openTowards(gige, sockets[0]))
        return KX_E_NETWORK;
    std::vector<Found> cameras(1);
    cameras[0].entry.info = device;
    cameras[0].entry.availability = availability;
    queryAvailability(sockets, cameras);
    availability = cameras[0].entry.availability;
    return KX_OK;
}

// GigE Vision, "Primary application port" and "Primary application IP address": both 0 while nobody has
// control.
KX_Status gigeController(const KX_DeviceInfo& device, KX_Controller& controller)
{
    controller = {};
    const KX_GigEDeviceInfo& gige = device.special.gige;
    if (!isReachable(gige))
        return KX_OK;
    std::vector<UdpSocket> sockets(1);
    if (!openTowards(gige, sockets[0]))
        return KX_E_NETWORK;
    controller.ipAddress = askRegister(sockets, gige.ipAddress, kHolderAddressId, RegPrimaryAddress);
    if (controller.ipAddress != 0)
        controller.port = askRegister(sockets, gige.ipAddress, kHolderPortId, RegPrimaryPort) & 0xFFFF;
    return KX_OK;
}

std::unique_ptr<Port> newGigePort(const KX_DeviceInfo& device)
{
    return std::make_unique<GvcpPort>(device.special.gige);
}

std::string gigeSerialNumber(const KX_DeviceInfo& device)
{
    return textField(device.special.gige.serialNumber);
}

// Of one length, so that texts are in the addresses' order.
std::string gigePlace(const KX_DeviceInfo& device)
{
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(device.special.gige.ipAddress));
    return text;
}

uint32_t gigeStamp()
{
    const auto interfaces = networkInterfaces();
    Stamp stamp;
    for (const NetworkInterface& interface : interfaces) {
        stamp.add(interface.name.c_str(), interface.name.size() + 1);
        stamp.add(&interface.address, sizeof interface.address);
        stamp.add(&interface.broadcast, sizeof interface.broadcast);
    }
    return interfaces.empty() ? 0 : stamp.value();
}

} // namespace

Transport gigeTransport()
{
    Transport gige{KX_TRANSPORT_GIGE, findGigeCameras,  gigeAvailability, gigeController,
                   newGigePort,       gigeSerialNumber, gigePlace,        gigeStamp};
    gige.forceIp = forceGigeIp;
    return gige;
}

} // namespace kx
