#include "KXCameraControl/ports/cameralink/SerialPlaces.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/NameList.h"
#include "KXCameraControl/ports/cameralink/LibraryLine.h"
#include "KXCameraControl/ports/cameralink/Terminal.h"
#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <algorithm>
#include <cstdlib>

namespace kx
{

namespace
{

bool isIn(const KX_CameraLinkDeviceInfo& record, const SerialPlace& place)
{
    KX_CameraLinkDeviceInfo info{};
    place.putInto(info);
    // A library may call its port otherwise by now.
    const bool isSamePort =
        !place.serialLibrary.empty() || textField(info.portId) == textField(record.portId);
    return isSamePort && textField(info.producerId) == textField(record.producerId) &&
           textField(info.interfaceId) == textField(record.interfaceId);
}

} // namespace

void SerialPlace::putInto(KX_CameraLinkDeviceInfo& info) const
{
    putIdentifier(info.portId, name);
    putIdentifier(info.producerId, serialLibrary);
    putText(info.interfaceId, serialLibrary.empty() ? std::string() : std::to_string(index));
}

std::vector<SerialPlace> namedLines()
{
    std::vector<std::string> paths = nameList(std::getenv("KX_CAMERA_SERIAL_PORTS"));
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
    std::vector<SerialPlace> lines;
    for (const std::string& path : paths)
        lines.push_back({path, {}, 0});
    return lines;
}

std::vector<SerialPlace> portsOf(HostLink& library, HostReply& reply)
{
    reply = library.request(gentl::Writer().u32(static_cast<uint32_t>(gentl::Request::ListSerialPorts)));
    std::vector<SerialPlace> ports;
    for (const gentl::Bytes& item : reply.items) {
        const auto index = static_cast<uint32_t>(ports.size());
        const std::string name = gentl::Reader(item).text();
        ports.push_back({name.empty() ? "port " + std::to_string(index) : name, library.producer(), index});
    }
    return ports;
}

std::optional<SerialPlace> placeOf(const KX_DeviceInfo& device)
{
    const KX_CameraLinkDeviceInfo& record = device.special.cameraLink;
    std::vector<SerialPlace> places = namedLines();
    const auto index =
        static_cast<uint32_t>(std::strtoul(textField(record.interfaceId).c_str(), nullptr, 10));
    for (const std::string& library : serialLibraries())
        places.push_back({textField(record.portId), library, index});
    const auto found = std::find_if(places.begin(), places.end(),
                                    [&](const SerialPlace& place) { return isIn(record, place); });
    return found == places.end() ? std::nullopt : std::optional(*found);
}

std::unique_ptr<SerialLine> lineAt(const SerialPlace& place)
{
    if (place.serialLibrary.empty())
        return newTerminal(place.name);
    return std::make_unique<LibraryLine>(place.serialLibrary, place.index, place.name);
}

} // namespace kx
