// What every emulated camera is, whatever line it hangs on: its description, and the nodes that seeds and
// tests speak of. The registers belong to whoever answers for them.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Description.h"
#include "camera_emulator/Memory.h"
#include "camera_emulator/Seed.h"

#include <optional>
#include <string>
#include <vector>

namespace emu
{

struct CameraCore
{
    // `builtIn`: the description of a configuration that names none.
    CameraCore(const CameraConfig& wanted, const std::string& builtIn);

    // First contents; bootstrap registers and description lie there already.
    void seed(Memory& memory);
    // Gives what could not be applied, and what may not be read as it is meant.
    std::vector<std::string> change(const std::string& json, Memory& memory) const;

    const CameraConfig config;
    std::string description;
    std::string problem; // with the configuration
    SeedResult seeded;
    std::optional<Description> nodes; // constant after construction

private:
    bool m_isBuiltIn = false;
};

} // namespace emu
