// The USB side of an emulated camera, and what is wrong with it.
#pragma once

#include "camera_emulator/Memory.h"

#include <cstdint>
#include <functional>
#include <string>

namespace emu
{

struct Usb3Config
{
    std::string guid;           // empty: one made of the serial number
    uint16_t vendorId = 0x1209; // the pair that pid.codes leaves to tests
    uint16_t productId = 0x0001;
    uint32_t maxCommand = 1024; // bytes, of whole packets
    uint32_t maxAck = 1024;
    uint16_t packetSize = 1024;                   // of the endpoints
    std::function<void(Bytes&)> breakDescriptors; // before the system sees them; empty: nothing is broken
    std::function<void(Bytes&)> breakAnswer;      // before it is sent
};

} // namespace emu
