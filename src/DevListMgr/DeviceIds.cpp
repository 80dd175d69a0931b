#include "DeviceIds.h"

#include <cstring>

namespace
{

template <std::size_t Size>
QString rawText(const uint8_t (&field)[Size])
{
    const char* text = reinterpret_cast<const char*>(field);
    return QString::fromLatin1(text, int(strnlen(text, Size)));
}

QString serialOf(const KX_DeviceInfo& device)
{
    switch (device.transportType) {
    case KX_TRANSPORT_GIGE:
        return rawText(device.special.gige.serialNumber);
    case KX_TRANSPORT_USB3:
        return rawText(device.special.usb3.serialNumber);
    case KX_TRANSPORT_CAMERA_LINK:
        return rawText(device.special.cameraLink.serialNumber);
    default:
        return {};
    }
}

} // namespace

QString DeviceIds::keyOf(const KX_DeviceInfo& device)
{
    return QString::number(device.transportType) + '|' + serialOf(device);
}

int DeviceIds::idOf(const KX_DeviceInfo& device, int occurrence)
{
    int& id = m_ids[keyOf(device) + '|' + QString::number(occurrence)];
    if (id == 0)
        id = m_ids.size();
    return id;
}
