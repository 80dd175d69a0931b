// Who has an address, by what the operating system has for it. System calls stand in Neighbours_posix.cpp and
// Neighbours_windows.cpp.
#pragma once

#include "KXCameraControl/ports/gige/Socket.h"

namespace kx
{

struct ArpAnswer
{
    bool isThere = false;
    uint32_t macHigh = 0; // the upper 16 bits
    uint32_t macLow = 0;
};

// Nothing where the system does not let this user ask, or the line has no ARP. Blocks for up to 750 ms.
std::optional<ArpAnswer> askByArp(const NetworkInterface& interface, uint32_t address);

// Whether a connection to the address (TCP, port 80) is taken or refused before the deadline: either is an
// answer.
bool answersConnections(uint32_t address, Clock::time_point deadline);

} // namespace kx
