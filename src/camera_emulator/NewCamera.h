// The camera that options ask for.
#pragma once

#include "camera_emulator/Options.h"
#include "camera_emulator/Shell.h"

#include <memory>

namespace emu
{

// Null: this system has none of that kind (Windows: GigE Vision cameras alone).
std::unique_ptr<Shell> newCamera(const CameraOptions& wanted);

} // namespace emu
