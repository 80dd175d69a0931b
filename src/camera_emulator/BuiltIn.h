// The emulator's own camera, compiled in from description/.
#pragma once

#include <string>

namespace emu
{

const std::string& builtInDescription();
// The same for cameras that speak GenCP: its names stand in the bootstrap registers of that protocol.
const std::string& builtInDescriptionOverGenCp();
const std::string& builtInSeed(); // JSON as in Seed.h

} // namespace emu
