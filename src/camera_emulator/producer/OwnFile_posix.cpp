#include "camera_emulator/producer/OwnFile.h"

#include <dlfcn.h>

namespace producer
{

std::string ownFile()
{
    Dl_info info{};
    const bool isKnown = ::dladdr(reinterpret_cast<void*>(&ownFile), &info) != 0 && info.dli_fname;
    return isKnown ? info.dli_fname : "";
}

} // namespace producer
