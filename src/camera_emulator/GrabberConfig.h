// The emulated frame grabber that a camera is behind.
#pragma once

#include <string>

namespace emu
{

struct GrabberConfig
{
    std::string socket;                    // a path; what lies there is replaced
    std::string interface = "EMU-Grabber"; // cameras with the same one share it
    std::string layer = "CXP";             // the transport layer's name, as GenTL has them
};

} // namespace emu
