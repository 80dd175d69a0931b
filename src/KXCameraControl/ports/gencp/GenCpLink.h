// What carries GenCP packets to a camera: two bulk endpoints, a serial line.
#pragma once

#include "gencp/Gencp.h"

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <string>

namespace kx
{

// One caller at a time. Packets go without the prefix that the transport puts before them.
class GenCpLink
{
public:
    using Clock = std::chrono::steady_clock;
    enum class Outcome
    {
        Done,
        TimedOut,
        Malformed, // something arrived that is no packet
        Gone,      // the device or the line left
        Failed     // the operating system refused; errorText() says why
    };

    virtual ~GenCpLink() = default;

    // Takes the line for this process alone. KX_E_CONTROL_REFUSED: another program has it. KX_E_NO_DEVICE:
    // there is no such line. KX_E_NETWORK: the operating system refuses it. errorText() says more.
    virtual KX_Status open() = 0;
    virtual void close() = 0; // idempotent
    virtual bool isOpen() const = 0;

    virtual gencp::ByteOrder byteOrder() const = 0; // of packets and bootstrap registers
    virtual size_t prefixSize() const = 0;          // counts in the limits of a camera's packets

    // The answer that is waited for from now on is a packet of that size; others may come instead.
    virtual void expect(size_t /*packetSize*/) {}
    virtual Outcome send(const gencp::Bytes& packet, Clock::time_point deadline) = 0;
    virtual Outcome receive(gencp::Bytes& packet, Clock::time_point deadline) = 0;
    // How long so many bytes are under way; what a time-out has to be longer by.
    virtual std::chrono::milliseconds wireTime(size_t) const { return std::chrono::milliseconds(0); }

    virtual std::string name() const = 0; // for messages: "the camera at ..."
    virtual std::string errorText() const = 0;
    // Why a link that is Gone has gone: a clause.
    virtual std::string lossText() const { return name() + " is gone"; }
};

} // namespace kx
