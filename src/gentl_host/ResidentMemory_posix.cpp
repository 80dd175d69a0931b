#include "gentl_host/ResidentMemory.h"

#include <unistd.h>

#include <cstdio>

namespace gentl_host
{

// Not by getrusage(): its figure begins with that of the program which started this one.
uint32_t residentMemory()
{
    unsigned long pages = 0;
    std::FILE* const file = std::fopen("/proc/self/statm", "re");
    if (!file)
        return 0;
    if (std::fscanf(file, "%*u %lu", &pages) != 1)
        pages = 0;
    std::fclose(file);
    return static_cast<uint32_t>(pages * static_cast<unsigned long>(::sysconf(_SC_PAGESIZE)) / 1024);
}

} // namespace gentl_host
