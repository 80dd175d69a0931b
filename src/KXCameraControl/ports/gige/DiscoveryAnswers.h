// What cameras answer to those who look for them (GigE Vision, chapters "GVCP" and "Bootstrap Registers").
// Packets in, records out: no sockets.
#pragma once

#include "gvcp/Gvcp.h"

#include <KXCameraControl/KXCameraControl.h>

#include <optional>
#include <string>

namespace kx
{

// A way out of this host: how it is called.
struct Route
{
    std::string name;
    uint32_t localAddress = 0; // 0: unicast, by whatever way the system chooses
    uint32_t mask = 0;
};

// The camera at `address` that answers the discovery `id`, not asked yet who has it; nothing for every other
// answer.
std::optional<KX_DeviceEntry> entryFrom(const gvcp::AckPacket& ack, uint16_t id, uint32_t address,
                                        const Route& route);

// What the answer to a read of the control register says; nothing when it says that the camera wants to be
// asked again.
std::optional<uint32_t> availabilityFrom(const gvcp::AckPacket& ack);

// The value of a register; nothing for an answer to something else. 0 where the camera has no such register
// or does not show it.
std::optional<uint32_t> shownValue(const gvcp::AckPacket& ack, uint16_t id);

} // namespace kx
