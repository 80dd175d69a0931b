#include "gentl_host/ResidentMemory.h"

#include <windows.h>

#include <psapi.h>

namespace gentl_host
{

uint32_t residentMemory()
{
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof counters;
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters))
        return 0;
    return static_cast<uint32_t>(counters.WorkingSetSize / 1024);
}

} // namespace gentl_host
