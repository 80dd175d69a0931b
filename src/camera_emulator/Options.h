// The command line of camera_emulator: one group of options per camera, each beginning with the place that
// the camera takes: --address (GigE Vision), --link (behind a serial line) or --socket (behind a frame
// grabber).
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Faults.h"
#include "camera_emulator/GrabberConfig.h"
#include "camera_emulator/SerialConfig.h"

#include <optional>
#include <string>
#include <vector>

namespace emu
{

struct CameraOptions
{
    CameraConfig config;
    // Those of the transports that the camera is not for have an empty place.
    SerialConfig serial;
    GrabberConfig grabber;
    Faults faults;
    std::string changesFile; // empty: none; read each time that the changes are asked for
};

struct Options
{
    std::vector<CameraOptions> cameras;
    std::string statsFile; // empty: standard output
    std::string readyFile; // empty: none
};

struct ParsedOptions
{
    std::optional<Options> options; // nothing: print `message` and end
    std::string message;
    bool isHelp = false; // the message was asked for
};

// `arguments` without the program's name. Seed files are read here.
ParsedOptions parseOptions(const std::vector<std::string>& arguments);

// Adds one fault ("busy=3", "refuse=0x1000:0x8006:4", ...); gives what is wrong with the text, or an empty
// text.
std::string parseFault(const std::string& text, CameraOptions& camera);

} // namespace emu
