// First contents of a camera's registers, as JSON:
//   {"nodes": {"Width": 640, "DeviceFirmwareVersion": "1.2.3", "Gain": 1.5, "PixelFormat": "Mono8"},
//    "memory": {"0x1000": "00010203"}}
// A node stands for the register behind it: pValue is followed to a register at a constant address. Memory is
// given in hexadecimal, byte by byte from the address on, and is written after the nodes.
#pragma once

#include "camera_emulator/Description.h"
#include "camera_emulator/Memory.h"

#include <string>
#include <vector>

namespace emu
{

struct SeedResult
{
    std::vector<std::string> problems; // what was not written
    // What was, and may not be read so: of a text whose length another register or a formula gives a host
    // reads as much as that says.
    std::vector<std::string> remarks;
};

// A sentence for each problem and remark; what can be written is written. Text that is no such JSON is one
// problem.
SeedResult applySeed(const std::string& json, const Description& description, Memory& memory);

// Writes one node's register; gives what stands in the way as a sentence, or an empty text.
std::string writeNode(const Description& description, const std::string& name, const NodeValue& value,
                      Memory& memory);

} // namespace emu
