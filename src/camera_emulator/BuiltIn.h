// The emulator's own camera, compiled in from description/.
#pragma once

#include <string>

namespace emu
{

const std::string& builtInDescription();
const std::string& builtInSeed(); // JSON as in Seed.h

} // namespace emu
