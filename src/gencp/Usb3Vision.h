// What USB3 Vision adds to GenCP: how its control interface is told from others, the prefix of its packets,
// and the registers that hosts need (USB3 Vision 1.1, chapters "Device Identification" and "Control
// Interface").
#pragma once

#include <cstddef>
#include <cstdint>

namespace gencp
{

// Class, subclass and protocol of the control interface.
constexpr uint8_t kUsbClass = 0xEF;
constexpr uint8_t kUsbSubclass = 0x05;
constexpr uint8_t kUsbControlProtocol = 0x00;

// The device information descriptor behind that interface: its type and subtype, and where in it the numbers
// of the texts stand.
constexpr uint8_t kUsbInfoType = 0x24;
constexpr uint8_t kUsbInfoSubtype = 0x01;
constexpr size_t kUsbInfoSize = 20;
enum UsbInfoText : size_t
{
    UsbInfoGuid = 11,
    UsbInfoVendor = 12,
    UsbInfoModel = 13,
    UsbInfoFamily = 14,
    UsbInfoDeviceVersion = 15,
    UsbInfoManufacturerInfo = 16,
    UsbInfoSerialNumber = 17,
    UsbInfoUserName = 18
};

constexpr uint8_t kUsbPrefix[4] = {'U', '3', 'V', 'C'};

// Of the SBRM, from its beginning; 4 bytes each.
constexpr uint64_t kUsbVersion = 0x00;
constexpr uint64_t kUsbMaxCommandLength = 0x14;
constexpr uint64_t kUsbMaxAckLength = 0x18;
constexpr uint64_t kUsbCurrentSpeed = 0x40;

} // namespace gencp
