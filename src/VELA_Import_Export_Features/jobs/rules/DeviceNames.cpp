#include "jobs/rules/DeviceNames.h"

#include <SuiteTools/SuiteTools.h>

#include <cstddef>
#include <cstring>

namespace ie
{
namespace
{

template <std::size_t Size>
QString fieldText(const uint8_t (&field)[Size], FieldEnd end)
{
    return VELAInterface::GetEncodeQStringFromUnChar(field, end == FieldEnd::AtZero ? -1 : int(Size));
}

template <std::size_t Size>
QString utf8Text(const uint8_t (&field)[Size])
{
    const char* text = reinterpret_cast<const char*>(field);
    return QString::fromUtf8(text, int(strnlen(text, Size)));
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

QString modelNameAsUtf8(const KX_DeviceInfo& device)
{
    switch (device.transportType) {
    case KX_TRANSPORT_GIGE:
        return utf8Text(device.special.gige.modelName);
    case KX_TRANSPORT_USB3:
        return utf8Text(device.special.usb3.modelName);
    case KX_TRANSPORT_CAMERA_LINK:
        return utf8Text(device.special.cameraLink.modelName);
    default:
        return {};
    }
}

QString featuresFileName(const DeviceNames& names)
{
    return QString("%1_%2.fpk").arg(names.model, names.serial);
}

} // namespace ie
