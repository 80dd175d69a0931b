// Serial lines that the operating system has under a name: /dev/ttyS0, /dev/ttyUSB1; COM3.
#pragma once

#include "KXCameraControl/ports/cameralink/SerialLine.h"

#include <memory>
#include <string>

namespace kx
{

std::unique_ptr<SerialLine> newTerminal(const std::string& name);

// Whether the system has a line of that name now. Opens nothing.
bool isTerminalThere(const std::string& name);
// Whether it is there, and not for this user. Opens nothing.
bool isTerminalForbidden(const std::string& name);

} // namespace kx
