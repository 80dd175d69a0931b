#include "camera_emulator/producer/Infos.h"

#include <cstring>

namespace producer
{

Error give(const Fault& fault, int32_t* type, void* buffer, size_t* size, int32_t which, const void* data,
           size_t length)
{
    if (!size)
        return fail(ErrInvalidParameter, "no size");
    if (type)
        *type = which;
    const size_t room = *size;
    *size = fault.isTooLong ? size_t(1) << 40 : length;
    if (!buffer || fault.isTooLong)
        return Success;
    if (room < length)
        return fail(ErrBufferTooSmall, "the buffer is too small");
    std::memcpy(buffer, data, length);
    return Success;
}

Error giveText(const Fault& fault, int32_t* type, void* buffer, size_t* size, const std::string& text)
{
    return give(fault, type, buffer, size, TypeString, text.c_str(), text.size() + 1);
}

Error giveCount(const Fault& fault, uint32_t* count, size_t number)
{
    if (!count)
        return fail(ErrInvalidParameter, "no count");
    *count = fault.isTooLong ? ~0u : static_cast<uint32_t>(number);
    return Success;
}

Error systemInfo(const Fault& fault, int32_t what, int32_t* type, void* buffer, size_t* size)
{
    switch (what) {
    case SystemId:
        return giveText(fault, type, buffer, size, "EmulatedSystem");
    case SystemVendor:
        return giveText(fault, type, buffer, size, "Emulated cameras");
    case SystemModel:
    case SystemDisplayName:
        return giveText(fault, type, buffer, size, "camera_emulator_gentl");
    case SystemVersion:
        return giveText(fault, type, buffer, size, "1.0.0");
    case SystemType:
        return giveText(fault, type, buffer, size, "Mixed");
    case SystemFileName:
    case SystemPath:
        return giveText(fault, type, buffer, size, "camera_emulator_gentl.cti");
    case SystemEncoding:
        return giveNumber<int32_t>(fault, type, buffer, size, TypeInt32, 1); // UTF-8
    case SystemVersionMajor:
        return giveNumber<uint32_t>(fault, type, buffer, size, TypeUint32, 1);
    case SystemVersionMinor:
        return giveNumber<uint32_t>(fault, type, buffer, size, TypeUint32, 5);
    default:
        return fail(ErrNotImplemented, "no such information of the system");
    }
}

Error interfaceInfo(const Fault& fault, const Interface& interface, int32_t what, int32_t* type, void* buffer,
                    size_t* size)
{
    switch (what) {
    case InterfaceId:
        return giveText(fault, type, buffer, size, interface.id);
    case InterfaceDisplayName:
        return giveText(fault, type, buffer, size, interface.id + " (emulated)");
    case InterfaceType:
        return giveText(fault, type, buffer, size, interface.layer);
    default:
        return fail(ErrNotImplemented, "no such information of an interface");
    }
}

namespace
{

// A text that a camera does not have is "not available", as user names behind grabbers often are.
Error giveField(const Fault& fault, const Device& device, emu::GrabberField field, int32_t* type,
                void* buffer, size_t* size)
{
    const std::string& text = device.fields[field];
    return text.empty() ? fail(ErrNotAvailable, "not available") : giveText(fault, type, buffer, size, text);
}

int32_t accessStatus(const Device& device)
{
    if (device.isOpen)
        return device.mayWrite ? StatusOpenReadWrite : StatusOpenReadOnly;
    if (!device.isListed)
        return StatusNoAccess;
    return device.fields[emu::FieldControl] == "1" ? StatusReadOnly : StatusReadWrite;
}

} // namespace

Error deviceInfo(const Fault& fault, const Device& device, int32_t what, int32_t* type, void* buffer,
                 size_t* size)
{
    switch (what) {
    case DeviceId:
        return giveText(fault, type, buffer, size, device.id);
    case DeviceVendor:
        return giveField(fault, device, emu::FieldVendor, type, buffer, size);
    case DeviceModel:
        return giveField(fault, device, emu::FieldModel, type, buffer, size);
    case DeviceType:
        return giveField(fault, device, emu::FieldLayer, type, buffer, size);
    case DeviceDisplayName:
        return giveText(fault, type, buffer, size,
                        device.fields[emu::FieldModel] + " (" + device.fields[emu::FieldSerial] + ")");
    case DeviceAccessStatus:
        return giveNumber<int32_t>(fault, type, buffer, size, TypeInt32, accessStatus(device));
    case DeviceUserName:
        return giveField(fault, device, emu::FieldUserName, type, buffer, size);
    case DeviceSerialNumber:
        return giveField(fault, device, emu::FieldSerial, type, buffer, size);
    case DeviceVersion:
        return giveField(fault, device, emu::FieldVersion, type, buffer, size);
    default:
        return fail(ErrNotImplemented, "no such information of a device");
    }
}

} // namespace producer
