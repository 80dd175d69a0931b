// The bootstrap registers of an emulated camera (GigE Vision 1.2, chapter "Bootstrap Registers") and the
// place of its description.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Memory.h"

#include <cstdint>
#include <optional>
#include <string>

namespace emu
{

// Where descriptions lie: far from the registers that cameras are known to have.
constexpr uint32_t kDescriptionAddress = 0xC8000000;
constexpr uint32_t kZippedDescriptionAddress = 0xCC000000;
constexpr size_t kMaxDescriptionSize = kZippedDescriptionAddress - kDescriptionAddress;

// "02:00:00:00:00:01"; nothing: it is no MAC address.
std::optional<uint64_t> macIn(const std::string& text);

void writeBootstrap(const CameraConfig& config, uint32_t address, uint32_t mask, Memory& memory);

// The description, plain and zipped, and the two URLs that name them: the first in the form that the
// configuration asks for, the second in the other one. Both forms are cut to config.descriptionLimit bytes.
// Every place that hosts may not write is added to `readOnly`.
void writeDescription(const CameraConfig& config, const std::string& description,
                      const std::string& schemaVersion, Memory& memory, AddressRanges& readOnly);

AddressRanges readOnlyBootstrap();

} // namespace emu
