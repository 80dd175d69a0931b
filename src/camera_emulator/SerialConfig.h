// The serial line of an emulated camera, and what is wrong with it.
#pragma once

#include <cstdint>
#include <string>

namespace emu
{

struct SerialConfig
{
    std::string link;          // a symbolic link to the terminal is put here; empty: none
    uint32_t baud = 9600;      // as a crashed host may have left it
    uint32_t supported = 0xFF; // rates, as bits of gencp::kBaudRates
    bool isPaced = false;      // answers take as long as the rate says
    unsigned noise = 0;        // every n-th answer has noise before it and a bit of it turned; 0: none
    unsigned dropped = 0;      // of every n-th answer a byte is missing
    bool speaksOnOtherChannels = false; // before each answer a packet of its id comes on another channel
    uint32_t fastest = 921600;          // what the line carries; bytes at faster rates are lost
};

} // namespace emu
