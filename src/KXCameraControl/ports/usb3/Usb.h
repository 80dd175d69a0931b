// libusb's objects with owners, and the USB3 Vision control interface of a device, as its descriptors tell
// it.
#pragma once

#include <libusb.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kx
{

struct UsbExit
{
    void operator()(libusb_context* context) const { libusb_exit(context); }
};
// Sees the devices that were there when it was made.
using UsbContext = std::unique_ptr<libusb_context, UsbExit>;

// Null: this machine has no USB, or nothing that shows it; or KX_CAMERA_USB=none keeps the program off it.
UsbContext newUsbContext();

struct UsbUnref
{
    void operator()(libusb_device* device) const { libusb_unref_device(device); }
};
using UsbDevice = std::unique_ptr<libusb_device, UsbUnref>;

struct UsbClose
{
    void operator()(libusb_device_handle* handle) const { libusb_close(handle); }
};
using UsbHandle = std::unique_ptr<libusb_device_handle, UsbClose>;

struct UsbEndpoint
{
    uint8_t address = 0;
    size_t packetSize = 0; // wMaxPacketSize
};

// A device with a control interface: class EF, subclass 05, protocol 00 (USB3 Vision, "Interface
// Descriptors"), and one bulk endpoint each way. Numbers of texts are 0 where there is none.
struct UsbCamera
{
    UsbDevice device;
    int interfaceNumber = 0;
    UsbEndpoint in;
    UsbEndpoint out;
    uint16_t vendorId = 0;
    uint16_t productId = 0;
    uint8_t guidText = 0;
    uint8_t vendorText = 0;
    uint8_t modelText = 0;
    uint8_t serialText = 0;
    uint8_t userNameText = 0;
};

// Those of the context's devices whose descriptors make sense. Opens nothing.
std::vector<UsbCamera> usbCameras(libusb_context* context);

// "2-1.4": the bus, and the ports on the way from it.
std::string usbLocation(libusb_device* device);

// What to say of a camera that this user may not open.
std::string mayNotOpenText(const UsbCamera& camera);

// The texts of an open device, in its first language.
class UsbTexts
{
public:
    explicit UsbTexts(libusb_device_handle* handle);

    // As UTF-8; empty for number 0 and for what cannot be read. Asks the device, which has 0.2 s; one that
    // let them pass is asked no more.
    std::string of(uint8_t number);

private:
    // Without its head; empty when there is none.
    std::vector<uint8_t> descriptor(uint8_t number);

    libusb_device_handle* m_handle;
    uint16_t m_language = 0;
    bool m_answers = true;
};

// Takes the interface, waiting for a moment where somebody else only looks. 0 or LIBUSB_ERROR_...
int claimInterface(libusb_device_handle* handle, int number, std::chrono::milliseconds patience);

} // namespace kx
