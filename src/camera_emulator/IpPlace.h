// How an emulated GigE Vision camera comes by its address (GigE Vision, chapter "IP Configuration").
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Memory.h"

#include <cstdint>

namespace emu
{

struct IpPlace
{
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0;
};

IpPlace currentPlace(const Memory& memory);
void setCurrentPlace(const IpPlace& place, Memory& memory);

// What is kept, then DHCP, then a link-local address, as its switches say.
IpPlace placeAtPowerUp(const CameraConfig& config, const Memory& memory);

} // namespace emu
