#include "camera_line/RecordTexts.h"

#include <SuiteTools/SuiteTools.h>

#include <cstring>

namespace camera_line
{
namespace
{

template <int Size>
Field fieldOf(const uint8_t (&bytes)[Size])
{
    return {bytes, Size};
}

// Model and serial number, which all three transports have.
template <typename Choose>
Field ofAnyTransport(const KX_DeviceInfo& device, Choose choose)
{
    switch (device.transportType) {
    case KX_TRANSPORT_GIGE:
        return choose(device.special.gige);
    case KX_TRANSPORT_USB3:
        return choose(device.special.usb3);
    case KX_TRANSPORT_CAMERA_LINK:
        return choose(device.special.cameraLink);
    default:
        return {};
    }
}

} // namespace

QByteArray Field::content() const
{
    if (!bytes)
        return {};
    const char* text = reinterpret_cast<const char*>(bytes);
    return {text, static_cast<int>(strnlen(text, static_cast<size_t>(size)))};
}

QString Field::text() const
{
    return bytes ? VELAInterface::GetEncodeQStringFromUnChar(bytes, size) : QString();
}

QString transportWord(uint32_t transport)
{
    switch (transport) {
    case KX_TRANSPORT_GIGE:
        return "GigE";
    case KX_TRANSPORT_USB3:
        return "U3V";
    case KX_TRANSPORT_CAMERA_LINK:
        return "CL";
    default:
        return {};
    }
}

QString layerWord(const KX_DeviceInfo& device)
{
    const bool mayHaveOne = device.transportType == KX_TRANSPORT_CAMERA_LINK;
    const QByteArray name =
        mayHaveOne ? fieldOf(device.special.cameraLink.layerName).content() : QByteArray();
    return name.isEmpty() ? transportWord(device.transportType) : QString::fromLatin1(name);
}

Field modelField(const KX_DeviceInfo& device)
{
    return ofAnyTransport(device, [](const auto& part) { return fieldOf(part.modelName); });
}

Field serialField(const KX_DeviceInfo& device)
{
    return ofAnyTransport(device, [](const auto& part) { return fieldOf(part.serialNumber); });
}

Field userNameField(const KX_DeviceInfo& device)
{
    switch (device.transportType) {
    case KX_TRANSPORT_GIGE:
        return fieldOf(device.special.gige.userDefinedName);
    case KX_TRANSPORT_USB3:
        return fieldOf(device.special.usb3.userDefinedName);
    default:
        return {};
    }
}

Field portIdField(const KX_DeviceInfo& device)
{
    return device.transportType == KX_TRANSPORT_CAMERA_LINK ? fieldOf(device.special.cameraLink.portId)
                                                            : Field();
}

std::vector<Field> identifyingFields(const KX_DeviceInfo& device)
{
    const KX_Usb3DeviceInfo& usb3 = device.special.usb3;
    const KX_CameraLinkDeviceInfo& link = device.special.cameraLink;
    switch (device.transportType) {
    case KX_TRANSPORT_USB3: // one with a GUID may be plugged in elsewhere
        return {fieldOf(usb3.modelName), usb3.guid[0] ? fieldOf(usb3.guid) : fieldOf(usb3.location)};
    case KX_TRANSPORT_CAMERA_LINK:
        return {fieldOf(link.modelName), fieldOf(link.portId), fieldOf(link.producerId),
                fieldOf(link.interfaceId), fieldOf(link.deviceId)};
    default:
        return {};
    }
}

QString macText(const KX_DeviceInfo& device)
{
    if (device.transportType != KX_TRANSPORT_GIGE)
        return {};
    return VELAInterface::int2StringMacAddress(device.special.gige.macHigh, device.special.gige.macLow);
}

QString dottedQuad(uint32_t address)
{
    return QString("%1.%2.%3.%4")
        .arg(address >> 24)
        .arg(address >> 16 & 0xFF)
        .arg(address >> 8 & 0xFF)
        .arg(address & 0xFF);
}

QString addressText(const KX_DeviceInfo& device)
{
    return device.transportType == KX_TRANSPORT_GIGE ? dottedQuad(device.special.gige.ipAddress)
                                                     : portIdField(device).text();
}

} // namespace camera_line
