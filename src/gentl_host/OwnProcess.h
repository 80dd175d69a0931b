// What this process is to the operating system.
#pragma once

#include "gentl/Channel.h"

#include <string>

namespace gentl_host
{

// Closed: nobody has handed over any, so the camera library has not started this.
gentl::Channel controlChannel();
// The one argument, UTF-8 on Windows; empty: there is none, or there are more.
std::string libraryArgument(int argc, char** argv);
// Should all memory of the machine be used up before the limit is seen, this process goes first.
void volunteer();
// At once when that time is over, whatever the producer does meanwhile.
void endWithin(unsigned seconds);

} // namespace gentl_host
