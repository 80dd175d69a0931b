#include "KXCameraControl/ports/gentl/GenTlDevices.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <algorithm>
#include <cstring>

namespace kx
{

using namespace gentl;

namespace
{

// GenTL's names of transport layers (GenICam GenTL, "Transport Layer Types").
bool isSpokenHere(const std::string& layer)
{
    return layer == "GEV" || layer == "U3V";
}

std::optional<GenTlDevice> deviceIn(const Bytes& item)
{
    Reader reader(item);
    GenTlDevice device;
    device.interface = reader.text();
    device.interfaceName = reader.text();
    device.device = reader.text();
    device.vendor = reader.text();
    device.model = reader.text();
    device.serialNumber = reader.text();
    device.version = reader.text();
    device.layer = reader.text();
    device.status = reader.i32();
    return reader.isGood() ? std::optional(device) : std::nullopt;
}

} // namespace

HostReply lookBehind(HostLink& link, std::vector<GenTlDevice>& devices)
{
    devices.clear();
    HostReply reply = link.request(Writer().u32(static_cast<uint32_t>(Request::Look)));
    if (reply.status != KX_OK)
        return reply;
    for (const Bytes& item : reply.items) {
        const auto device = deviceIn(item);
        if (device && !device->device.empty() && !isSpokenHere(device->layer))
            devices.push_back(*device);
    }
    const std::string problems = Reader(reply.content).text();
    if (!problems.empty())
        reply.text = "The GenTL producer " + link.producer() + ", " + problems + ".";
    return reply;
}

KX_DeviceInfo recordOf(const std::string& producer, const GenTlDevice& device)
{
    KX_DeviceInfo record = newEntry(KX_TRANSPORT_CAMERA_LINK).info;
    KX_CameraLinkDeviceInfo& info = record.special.cameraLink;
    putIdentifier(info.portId, device.interfaceName);
    putText(info.modelName, device.model);
    putText(info.serialNumber, device.serialNumber);
    putText(info.layerName, device.layer);
    putIdentifier(info.producerId, producer);
    putIdentifier(info.interfaceId, device.interface);
    putIdentifier(info.deviceId, device.device);
    return record;
}

uint32_t availabilityOf(const GenTlDevice& device)
{
    switch (device.status) {
    case StatusReadOnly:
    case StatusBusy:
        return KX_AVAILABILITY_IN_USE;
    case StatusNoAccess:
        return KX_AVAILABILITY_UNREACHABLE;
    default: // open here, free, or not told: opening will tell
        return KX_AVAILABILITY_FREE;
    }
}

std::string producerOf(const KX_DeviceInfo& record)
{
    for (const std::string& producer : gentlProducers()) {
        KX_CameraLinkDeviceInfo info{};
        putIdentifier(info.producerId, producer);
        if (textField(info.producerId) == textField(record.special.cameraLink.producerId))
            return producer;
    }
    return {};
}

std::optional<GenTlDevice> deviceOf(const KX_DeviceInfo& record, const std::string& producer,
                                    const std::vector<GenTlDevice>& devices)
{
    const KX_CameraLinkDeviceInfo& wanted = record.special.cameraLink;
    const auto isIt = [&](const GenTlDevice& device) {
        const KX_CameraLinkDeviceInfo one = recordOf(producer, device).special.cameraLink;
        return textField(one.interfaceId) == textField(wanted.interfaceId) &&
               textField(one.deviceId) == textField(wanted.deviceId) &&
               textField(one.serialNumber) == textField(wanted.serialNumber);
    };
    const auto found = std::find_if(devices.begin(), devices.end(), isIt);
    return found == devices.end() ? std::nullopt : std::optional(*found);
}

} // namespace kx
