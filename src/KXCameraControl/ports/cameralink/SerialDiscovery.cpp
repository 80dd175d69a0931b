#include "KXCameraControl/ports/cameralink/SerialDiscovery.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/NameList.h"
#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/cameralink/CameraLinkPort.h"
#include "KXCameraControl/ports/cameralink/Terminal.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <future>
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

// What was last seen behind each line, for while somebody uses it. Never destroyed: threads may outlive main.
struct KnownCameras
{
    std::mutex mutex;
    std::map<std::string, Identity> byPath;
};

KnownCameras& knownCameras()
{
    static auto* const instance = new KnownCameras;
    return *instance;
}

std::vector<std::string> namedLines()
{
    std::vector<std::string> paths = nameList(std::getenv("KX_CAMERA_SERIAL_PORTS"));
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    return paths;
}

std::string portIdOf(const std::string& path)
{
    KX_CameraLinkDeviceInfo info{};
    putIdentifier(info.portId, path);
    return textField(info.portId);
}

// Empty: no line that is named has this id.
std::string pathOf(const KX_DeviceInfo& device)
{
    const std::string id = textField(device.special.cameraLink.portId);
    for (const std::string& path : namedLines())
        if (portIdOf(path) == id)
            return path;
    return {};
}

KX_Status readIdentity(CameraLinkPort& port, Identity& identity)
{
    KX_Status status = port.readText(gencp::RegModel, identity.model);
    if (status == KX_OK)
        status = port.readText(gencp::RegSerialNumber, identity.serialNumber);
    return status;
}

// KX_OK: `identity` is there. Others as opening says.
KX_Status look(const std::string& path, Identity& identity)
{
    CameraLinkPort port(std::make_unique<Terminal>(path), {}, CameraLinkPort::Rate::Keep);
    KX_Status status = port.open(KX_ACCESS_MONITOR, 0);
    if (status == KX_OK)
        status = readIdentity(port, identity);
    KnownCameras& known = knownCameras();
    const std::lock_guard<std::mutex> lock(known.mutex);
    if (status == KX_OK)
        known.byPath[path] = identity;
    else if (status == KX_E_CONTROL_REFUSED)
        identity = known.byPath[path];
    else
        known.byPath.erase(path);
    return status;
}

std::optional<KX_DeviceEntry> entryBehind(const std::string& path)
{
    Identity identity;
    const KX_Status status = look(path, identity);
    if (status != KX_OK && status != KX_E_CONTROL_REFUSED)
        return std::nullopt;
    KX_DeviceEntry entry = newEntry(KX_TRANSPORT_CAMERA_LINK);
    KX_CameraLinkDeviceInfo& info = entry.info.special.cameraLink;
    putIdentifier(info.portId, path);
    putText(info.modelName, identity.model);
    putText(info.serialNumber, identity.serialNumber);
    entry.availability = status == KX_OK ? KX_AVAILABILITY_FREE : KX_AVAILABILITY_IN_USE;
    std::snprintf(entry.interfaceName, sizeof entry.interfaceName, "serial");
    return entry;
}

KX_Status findSerialCameras(std::vector<KX_DeviceEntry>& entries)
{
    std::vector<std::future<std::optional<KX_DeviceEntry>>> looks;
    for (const std::string& path : namedLines())
        looks.push_back(std::async(std::launch::async, entryBehind, path));
    for (auto& one : looks)
        if (const auto entry = one.get())
            entries.push_back(*entry);
    return KX_OK;
}

KX_Status serialAvailability(const KX_DeviceInfo& device, uint32_t& availability)
{
    availability = KX_AVAILABILITY_UNREACHABLE;
    Identity identity;
    const std::string path = pathOf(device);
    const KX_Status status = path.empty() ? KX_E_NO_DEVICE : look(path, identity);
    if (status == KX_E_CONTROL_REFUSED)
        availability = KX_AVAILABILITY_IN_USE;
    else if (status == KX_OK && identity.serialNumber == textField(device.special.cameraLink.serialNumber))
        availability = KX_AVAILABILITY_FREE;
    return KX_OK;
}

// Cameras behind a producer have its name in their record.
bool isSerial(const KX_DeviceInfo& device)
{
    return device.special.cameraLink.producerId[0] == 0;
}

// Whoever has the line; the system does not tell who that is.
KX_Status serialController(const KX_DeviceInfo&, KX_Controller&)
{
    return KX_E_NOT_SUPPORTED;
}

// A record of a line that nobody names any more finds no line.
std::unique_ptr<Port> newSerialPort(const KX_DeviceInfo& device)
{
    return std::make_unique<CameraLinkPort>(std::make_unique<Terminal>(pathOf(device)),
                                            textField(device.special.cameraLink.serialNumber));
}

std::string serialNumberOf(const KX_DeviceInfo& device)
{
    return textField(device.special.cameraLink.serialNumber);
}

std::string serialPlace(const KX_DeviceInfo& device)
{
    return textField(device.special.cameraLink.portId);
}

// Adapters come and go with their names.
uint32_t serialStamp()
{
    Stamp stamp;
    for (const std::string& path : namedLines()) {
        struct stat state = {};
        const bool isThere = ::stat(path.c_str(), &state) == 0;
        stamp.add(path.c_str(), path.size() + 1);
        stamp.add(&isThere, sizeof isThere);
    }
    return stamp.value();
}

} // namespace

Transport serialTransport()
{
    return {KX_TRANSPORT_CAMERA_LINK, findSerialCameras, serialAvailability, serialController, newSerialPort,
            serialNumberOf,           serialPlace,       serialStamp,        isSerial};
}

} // namespace kx
