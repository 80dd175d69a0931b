#include "iefeatures/cameras/ListedCamera.h"

#include "iefeatures/console/Text.h"

#include "jobs/rules/DeviceNames.h"
#include <SuiteTools/SuiteTools.h>

#include <cstddef>

namespace companion
{
namespace
{

template <std::size_t Size>
QString fieldText(const uint8_t (&field)[Size])
{
    return VELAInterface::GetEncodeQStringFromUnChar(field, int(Size));
}

QString dottedQuad(uint32_t address)
{
    return QString("%1.%2.%3.%4")
        .arg(address >> 24)
        .arg(address >> 16 & 0xFF)
        .arg(address >> 8 & 0xFF)
        .arg(address & 0xFF);
}

QString statusWord(uint32_t availability)
{
    switch (availability) {
    case KX_AVAILABILITY_FREE:
        return "free";
    case KX_AVAILABILITY_IN_USE:
        return "in use";
    default:
        return "unreachable";
    }
}

// What the transports name differently.
void addTransportTexts(const KX_DeviceInfo& info, ListedCamera& camera)
{
    switch (info.transportType) {
    case KX_TRANSPORT_GIGE:
        camera.transport = "GigE";
        camera.userName = fieldText(info.special.gige.userDefinedName);
        camera.address = dottedQuad(info.special.gige.ipAddress);
        break;
    case KX_TRANSPORT_USB3:
        camera.transport = "U3V";
        camera.userName = fieldText(info.special.usb3.userDefinedName);
        break;
    case KX_TRANSPORT_CAMERA_LINK:
        camera.transport = "CL";
        camera.address = fieldText(info.special.cameraLink.portId);
        break;
    default:
        break;
    }
}

} // namespace

QString ListedCamera::title() const
{
    return printable(model + ' ' + serial);
}

KX_Status enumerateCameras(std::vector<KX_DeviceEntry>& entries)
{
    entries.resize(64);
    for (;;) {
        uint32_t count = 0;
        const auto capacity = static_cast<uint32_t>(entries.size());
        const KX_Status status = KX_CC_EnumDevices(KX_TRANSPORT_ALL, entries.data(), capacity, &count);
        entries.resize(status == KX_OK ? count : 0);
        if (status != KX_OK || count <= capacity)
            return status;
    }
}

std::vector<ListedCamera> camerasFrom(const std::vector<KX_DeviceEntry>& entries)
{
    std::vector<ListedCamera> cameras;
    for (const KX_DeviceEntry& entry : entries) {
        ListedCamera& camera = cameras.emplace_back();
        camera.device.nDeviceID = static_cast<qint32>(cameras.size());
        camera.device.nStatus = static_cast<qint32>(entry.availability);
        camera.device.stDeviceInfo = entry.info;
        const ie::DeviceNames names = ie::deviceNames(entry.info, ie::FieldEnd::AtSize);
        camera.model = names.model;
        camera.serial = names.serial;
        camera.status = statusWord(entry.availability);
        addTransportTexts(entry.info, camera);
    }
    return cameras;
}

} // namespace companion
