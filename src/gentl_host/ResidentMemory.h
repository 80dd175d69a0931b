#pragma once

#include <cstdint>

namespace gentl_host
{

// What this process has in memory now, in KiB; 0: cannot be told.
uint32_t residentMemory();

} // namespace gentl_host
