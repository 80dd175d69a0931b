// What the operating system shows of USB devices beside libusb.
#pragma once

#include <cstdint>
#include <string>

namespace kx
{

// A device as long as it stays plugged in.
struct UsbPlace
{
    uint8_t bus = 0;
    uint8_t address = 0;

    bool operator==(const UsbPlace& other) const { return bus == other.bus && address == other.address; }
};

bool isUsbNodeThere(const UsbPlace& place);

// A number that changes when a device comes or goes; 0: no USB here.
uint32_t usbNodesStamp();

// What the system has read of a device ("product", "serial", ...), for users who may not open it; empty where
// it has not. `location` as usbLocation() tells it.
std::string usbSystemText(const std::string& location, const char* name);

// Whether somebody tells of devices that come and go. Containers often have nobody.
bool areUsbEventsTold();

// Of libusb_open(): the system does not let this user, or libusb, have the camera; usbOpeningHelp() says what
// helps, a sentence behind the camera's place.
bool isUsbOpeningRefused(int code);
const char* usbOpeningHelp();
// Of libusb_open(): another program has the camera. Elsewhere only claiming its interface tells that.
bool isUsbInUse(int code);

} // namespace kx
