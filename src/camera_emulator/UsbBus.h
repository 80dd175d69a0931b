// Where an emulated USB device is plugged in, and what it is asked there. Only who emulates the bus knows
// how the system under test comes by it.
#pragma once

#include "camera_emulator/Memory.h"

#include <array>
#include <chrono>
#include <optional>
#include <string>

namespace emu
{

// The device. Asked on any thread, one question at a time.
class UsbFunction
{
public:
    virtual ~UsbFunction() = default;

    // Device and configuration descriptors one behind the other, as a system reads them first.
    virtual Bytes descriptors() const = 0;
    // Of the bulk endpoints; a transfer ends with a packet that is shorter.
    virtual size_t packetSize() const = 0;
    // Endpoint 0, what a host asks to be sent; nothing: stall.
    virtual std::optional<Bytes> control(const std::array<uint8_t, 8>& setup) = 0;
    // False: stall.
    virtual bool bulkOut(uint8_t endpoint, const Bytes& data) = 0;
    // Nothing: there is nothing to send now.
    virtual std::optional<Bytes> bulkIn(uint8_t endpoint) = 0;
    // The host has cleared the endpoint's halt.
    virtual void haltCleared(uint8_t /*endpoint*/) {}
};

class UsbBus
{
public:
    virtual ~UsbBus() = default;

    // Gives where it hangs ("2-1"). The function must outlive unplug().
    virtual std::string plug(UsbFunction& function) = 0;
    virtual void unplug(UsbFunction& function) = 0;
    // Whoever waits for the function is served again after that time.
    virtual void askAgain(UsbFunction& function, std::chrono::milliseconds later) = 0;
};

} // namespace emu
