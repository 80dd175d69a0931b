#include "DeviceNames.h"

#include <SuiteTools/SuiteTools.h>

#include <cstddef>

namespace ie
{
namespace
{

template <std::size_t Size>
QString fieldText(const uint8_t (&field)[Size], FieldEnd end)
{
    return VELAInterface::GetEncodeQStringFromUnChar(field, end == FieldEnd::AtZero ? -1 : int(Size));
}

template <typename Part>
DeviceNames namesOf(const Part& part, FieldEnd end)
{
    return {fieldText(part.modelName, end), fieldText(part.serialNumber, end)};
}

} // namespace

DeviceNames deviceNames(const KX_DeviceInfo& device, FieldEnd end)
{
    switch (device.transportType) {
    case KX_TRANSPORT_GIGE:
        return namesOf(device.special.gige, end);
    case KX_TRANSPORT_USB3:
        return namesOf(device.special.usb3, end);
    case KX_TRANSPORT_CAMERA_LINK:
        return namesOf(device.special.cameraLink, end);
    default:
        return {};
    }
}

QString featuresFileName(const DeviceNames& names)
{
    return QString("%1_%2.fpk").arg(names.model, names.serial);
}

} // namespace ie
