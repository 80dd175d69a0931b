#include "KXCameraControl/ports/usb3/Usb3Discovery.h"

#include "KXCameraControl/ports/Fields.h"
#include "KXCameraControl/ports/usb3/Usb3Port.h"

#include <cstdio>

namespace kx
{

using std::chrono::milliseconds;

namespace
{

constexpr milliseconds kClaimPatience{30};

void takeTexts(const UsbCamera& camera, libusb_device_handle* handle, KX_Usb3DeviceInfo& info)
{
    UsbTexts texts(handle);
    putIdentifier(info.guid, texts.of(camera.guidText));
    putText(info.manufacturerName, texts.of(camera.vendorText));
    putText(info.modelName, texts.of(camera.modelText));
    putText(info.serialNumber, texts.of(camera.serialText));
    putText(info.userDefinedName, texts.of(camera.userNameText));
}

// For a camera that may not be opened, so that it is known which one that is.
void takeSystemTexts(const std::string& location, KX_Usb3DeviceInfo& info)
{
    putText(info.manufacturerName, usbSystemText(location, "manufacturer"));
    putText(info.modelName, usbSystemText(location, "product"));
    putText(info.serialNumber, usbSystemText(location, "serial"));
}

uint32_t availabilityOf(const UsbCamera& camera, libusb_device_handle* handle)
{
    const int code = claimInterface(handle, camera.interfaceNumber, kClaimPatience);
    if (code == LIBUSB_ERROR_BUSY)
        return KX_AVAILABILITY_IN_USE;
    if (code != 0)
        return KX_AVAILABILITY_UNREACHABLE;
    libusb_release_interface(handle, camera.interfaceNumber);
    return KX_AVAILABILITY_FREE;
}

KX_DeviceEntry entryOf(const UsbCamera& camera)
{
    KX_DeviceEntry entry = newEntry(KX_TRANSPORT_USB3);
    KX_Usb3DeviceInfo& info = entry.info.special.usb3;
    const std::string location = usbLocation(camera.device.get());
    info.vendorId = camera.vendorId;
    info.productId = camera.productId;
    putIdentifier(info.location, location);
    std::snprintf(entry.interfaceName, sizeof entry.interfaceName, "USB %s", location.c_str());
    libusb_device_handle* raw = nullptr;
    const int code = libusb_open(camera.device.get(), &raw);
    const UsbHandle handle(raw);
    if (code == 0) {
        takeTexts(camera, raw, info);
        entry.availability = availabilityOf(camera, raw);
    } else {
        takeSystemTexts(location, info);
        entry.availability = KX_AVAILABILITY_UNREACHABLE;
    }
    return entry;
}

KX_Status findUsb3Cameras(std::vector<KX_DeviceEntry>& entries)
{
    const UsbContext context = newUsbContext();
    if (!context)
        return KX_OK; // a machine without USB has no USB cameras
    for (const UsbCamera& camera : usbCameras(context.get()))
        entries.push_back(entryOf(camera));
    return KX_OK;
}

KX_Status usb3Availability(const KX_DeviceInfo& device, uint32_t& availability)
{
    UsbLink link(device.special.usb3, kClaimPatience);
    const KX_Status status = link.open();
    availability = status == KX_OK                  ? KX_AVAILABILITY_FREE
                   : status == KX_E_CONTROL_REFUSED ? KX_AVAILABILITY_IN_USE
                                                    : KX_AVAILABILITY_UNREACHABLE;
    return KX_OK;
}

// Whoever has claimed the interface; the system does not tell who that is.
KX_Status usb3Controller(const KX_DeviceInfo&, KX_Controller&)
{
    return KX_E_NOT_SUPPORTED;
}

std::unique_ptr<Port> newUsb3Port(const KX_DeviceInfo& device)
{
    return std::make_unique<Usb3Port>(device.special.usb3);
}

// Opening a device sends it nothing.
std::vector<std::string> usb3Problems()
{
    std::vector<std::string> problems;
    const UsbContext context = newUsbContext();
    if (!context)
        return problems;
    for (const UsbCamera& camera : usbCameras(context.get())) {
        libusb_device_handle* raw = nullptr;
        const int code = libusb_open(camera.device.get(), &raw);
        const UsbHandle handle(raw);
        if (isUsbOpeningRefused(code))
            problems.push_back(mayNotOpenText(camera));
    }
    return problems;
}

std::string usb3SerialNumber(const KX_DeviceInfo& device)
{
    return textField(device.special.usb3.serialNumber);
}

std::string usb3Place(const KX_DeviceInfo& device)
{
    const std::string guid = textField(device.special.usb3.guid);
    return guid.empty() ? textField(device.special.usb3.location) : guid;
}

} // namespace

Transport usb3Transport()
{
    return {KX_TRANSPORT_USB3, findUsb3Cameras, usb3Availability, usb3Controller, newUsb3Port,
            usb3SerialNumber,  usb3Place,       usbNodesStamp,    nullptr,        usb3Problems};
}

} // namespace kx
