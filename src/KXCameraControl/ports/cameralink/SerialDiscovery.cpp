#include "KXCameraControl/ports/cameralink/SerialDiscovery.h"

#include "KXCameraControl/ports/Beside.h"
#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/cameralink/CameraLinkPort.h"
#include "KXCameraControl/ports/cameralink/SerialPlaces.h"
#include "KXCameraControl/ports/cameralink/Terminal.h"
#include "KXCameraControl/ports/gentl/HostedSearches.h"
#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>

namespace kx
{

namespace
{

struct Identity
{
    std::string model;
    std::string serialNumber;
};

// What was last seen at each place, for while somebody uses it. Never destroyed: threads may outlive main.
struct KnownCameras
{
    std::mutex mutex;
    std::map<std::string, Identity> byPlace;
};

KnownCameras& knownCameras()
{
    static auto* const instance = new KnownCameras;
    return *instance;
}

KX_Status readIdentity(CameraLinkPort& port, Identity& identity)
{
    KX_Status status = port.readText(gencp::RegModel, identity.model);
    if (status == KX_OK)
        status = port.readText(gencp::RegSerialNumber, identity.serialNumber);
    return status;
}

// KX_OK: `identity` is there. Others as opening says.
KX_Status look(const SerialPlace& place, Identity& identity)
{
    CameraLinkPort port(lineAt(place), {}, CameraLinkPort::Rate::Keep);
    KX_Status status = port.open(KX_ACCESS_MONITOR, 0);
    if (status == KX_OK)
        status = readIdentity(port, identity);
    KnownCameras& known = knownCameras();
    const std::lock_guard<std::mutex> lock(known.mutex);
    const std::string key = place.serialLibrary + "\n" + place.name;
    if (status == KX_OK)
        known.byPlace[key] = identity;
    else if (status == KX_E_CONTROL_REFUSED)
        identity = known.byPlace[key];
    else
        known.byPlace.erase(key);
    return status;
}

std::optional<KX_DeviceEntry> entryAt(const SerialPlace& place)
{
    Identity identity;
    const KX_Status status = look(place, identity);
    if (status != KX_OK && status != KX_E_CONTROL_REFUSED)
        return std::nullopt;
    KX_DeviceEntry entry = newEntry(KX_TRANSPORT_CAMERA_LINK);
    KX_CameraLinkDeviceInfo& info = entry.info.special.cameraLink;
    place.putInto(info);
    putText(info.modelName, identity.model);
    putText(info.serialNumber, identity.serialNumber);
    entry.availability = status == KX_OK ? KX_AVAILABILITY_FREE : KX_AVAILABILITY_IN_USE;
    const std::string interface = std::filesystem::path(place.serialLibrary).filename().string();
    std::snprintf(entry.interfaceName, sizeof entry.interfaceName, "%s",
                  interface.empty() ? "serial" : interface.c_str());
    return entry;
}

// All of them at the same time.
std::vector<KX_DeviceEntry> entriesAt(const std::vector<SerialPlace>& places)
{
    std::vector<std::future<std::optional<KX_DeviceEntry>>> looks;
    for (const SerialPlace& place : places)
        looks.push_back(std::async(beside, entryAt, place));
    std::vector<KX_DeviceEntry> entries;
    for (auto& one : looks)
        if (const auto entry = one.get())
            entries.push_back(*entry);
    return entries;
}

std::vector<KX_DeviceEntry> entriesBehind(const std::string& library)
{
    if (restsFromSearches(library))
        return {};
    HostReply reply;
    std::vector<KX_DeviceEntry> entries;
    if (const auto link = HostLink::open(library, nullptr, reply, Hosted::SerialLibrary)) {
        entries = entriesAt(portsOf(*link, reply));
        // What a look has met is told by those who met it; that the library did not survive it is known here.
        if (reply.status == KX_OK)
            portsOf(*link, reply);
    }
    rememberSearch(library, reply);
    return entries;
}

// What a library has against it is no failure of the search: serialProblems() tells of it.
KX_Status findSerialCameras(std::vector<KX_DeviceEntry>& entries)
{
    std::vector<std::future<std::vector<KX_DeviceEntry>>> searches;
    searches.push_back(std::async(beside, [] { return entriesAt(namedLines()); }));
    for (const std::string& library : serialLibraries())
        searches.push_back(std::async(beside, entriesBehind, library));
    for (auto& search : searches)
        for (const KX_DeviceEntry& entry : search.get())
            entries.push_back(entry);
    return KX_OK;
}

KX_Status serialAvailability(const KX_DeviceInfo& device, uint32_t& availability)
{
    availability = KX_AVAILABILITY_UNREACHABLE;
    Identity identity;
    const auto place = placeOf(device);
    const KX_Status status = place ? look(*place, identity) : KX_E_NO_DEVICE;
    if (status == KX_E_CONTROL_REFUSED)
        availability = KX_AVAILABILITY_IN_USE;
    else if (status == KX_OK && identity.serialNumber == textField(device.special.cameraLink.serialNumber))
        availability = KX_AVAILABILITY_FREE;
    return KX_OK;
}

// Cameras behind a GenTL producer have its word for them in their record.
bool isSerial(const KX_DeviceInfo& device)
{
    return device.special.cameraLink.deviceId[0] == 0;
}

// Whoever has the line; the system does not tell who that is.
KX_Status serialController(const KX_DeviceInfo&, KX_Controller&)
{
    return KX_E_NOT_SUPPORTED;
}

// A record of a line that nobody names any more finds no line.
std::unique_ptr<Port> newSerialPort(const KX_DeviceInfo& device)
{
    return std::make_unique<CameraLinkPort>(lineAt(placeOf(device).value_or(SerialPlace())),
                                            textField(device.special.cameraLink.serialNumber));
}

std::string serialNumberOf(const KX_DeviceInfo& device)
{
    return textField(device.special.cameraLink.serialNumber);
}

std::string serialPlace(const KX_DeviceInfo& device)
{
    const KX_CameraLinkDeviceInfo& info = device.special.cameraLink;
    return textField(info.portId) + "\n" + textField(info.producerId) + "\n" + textField(info.interfaceId);
}

// Adapters come and go with their names; what comes behind a grabber its library does not tell unasked.
uint32_t serialStamp()
{
    Stamp stamp;
    for (const SerialPlace& line : namedLines()) {
        const bool isThere = isTerminalThere(line.name);
        stamp.add(line.name.c_str(), line.name.size() + 1);
        stamp.add(&isThere, sizeof isThere);
    }
    for (const std::string& library : serialLibraries())
        stamp.add(library.c_str(), library.size() + 1);
    return stamp.value();
}

std::vector<std::string> serialProblems()
{
    std::vector<std::string> problems;
    for (const SerialPlace& line : namedLines())
        if (!isTerminalThere(line.name))
            problems.push_back("There is no serial line " + line.name +
                               ", which KX_CAMERA_SERIAL_PORTS names.");
        else if (isTerminalForbidden(line.name))
            problems.push_back(
                "The serial line " + line.name +
                " may not be opened by this user: Permission denied. The group that it belongs to "
                "may, as a rule.");
    for (const std::string& library : serialLibraries()) {
        const std::string problem = searchProblem(Hosted::SerialLibrary, library);
        if (!problem.empty())
            problems.push_back(problem);
    }
    return problems;
}

} // namespace

Transport serialTransport()
{
    return {
        KX_TRANSPORT_CAMERA_LINK, findSerialCameras, serialAvailability, serialController, newSerialPort,
        serialNumberOf,           serialPlace,       serialStamp,        isSerial,         serialProblems};
}

} // namespace kx
