#include "KXCameraControl/ports/Stamp.h"
#include "KXCameraControl/ports/usb3/Usb.h"
#include "KXCameraControl/ports/usb3/UsbNodes.h"

#include <windows.h>

#include <cwchar>
#include <setupapi.h>

namespace kx
{

namespace
{

// Of every USB device that is plugged in (GUID_DEVINTERFACE_USB_DEVICE).
constexpr GUID kUsbDevices = {0xA5DCBF10, 0x6530, 0x11D2, {0x90, 0x1F, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xED}};

} // namespace

bool isUsbNodeThere(const UsbPlace& place)
{
    const UsbContext context = newUsbContext();
    libusb_device** list = nullptr;
    const ssize_t count = context ? libusb_get_device_list(context.get(), &list) : 0;
    bool isThere = false;
    for (ssize_t i = 0; i < count; ++i)
        isThere =
            isThere || UsbPlace{libusb_get_bus_number(list[i]), libusb_get_device_address(list[i])} == place;
    if (list)
        libusb_free_device_list(list, 1);
    return isThere;
}

uint32_t usbNodesStamp()
{
    const HDEVINFO devices =
        SetupDiGetClassDevsW(&kUsbDevices, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (devices == INVALID_HANDLE_VALUE)
        return 0;
    Stamp stamp;
    SP_DEVINFO_DATA device{};
    device.cbSize = sizeof device;
    DWORD count = 0;
    for (; SetupDiEnumDeviceInfo(devices, count, &device); ++count) {
        wchar_t name[512] = {};
        if (SetupDiGetDeviceInstanceIdW(devices, &device, name, 512, nullptr))
            stamp.add(name, (std::wcslen(name) + 1) * sizeof *name);
    }
    SetupDiDestroyDeviceInfoList(devices);
    return count == 0 ? 0 : stamp.value();
}

// What a camera says of itself can be read by whoever has its driver, and by nobody else.
std::string usbSystemText(const std::string&, const char*)
{
    return {};
}

bool areUsbEventsTold()
{
    return false;
}

bool isUsbOpeningRefused(int code)
{
    return code == LIBUSB_ERROR_NOT_SUPPORTED || code == LIBUSB_ERROR_NOT_FOUND;
}

bool isUsbInUse(int code)
{
    return code == LIBUSB_ERROR_ACCESS;
}

const char* usbOpeningHelp()
{
    return "the camera has no driver that programs may use. Its control interface needs WinUSB, which its "
           "maker's "
           "software or a driver installer puts there.";
}

} // namespace kx
