#pragma once

#include "camera_emulator/Memory.h"

#include <chrono>

namespace emu
{

// A packet that an emulated camera sends, and when.
struct Reply
{
    Bytes bytes;
    std::chrono::steady_clock::time_point due;
    bool isForEverybody = false; // broadcast: who asked is of another network
};

} // namespace emu
