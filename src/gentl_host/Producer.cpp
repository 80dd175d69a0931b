#include "gentl_host/Producer.h"

#include <dlfcn.h>

namespace gentl_host
{

namespace
{

template <class Signature>
void find(void* library, Function<Signature>& function, std::string& missing)
{
    function.address = reinterpret_cast<decltype(function.address)>(dlsym(library, function.name));
    if (!function.address && function.isNeeded)
        missing += (missing.empty() ? "" : ", ") + std::string(function.name);
}

} // namespace

std::string Producer::load(const std::string& path)
{
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        const char* reason = dlerror();
        return std::string("it cannot be loaded: ") + (reason ? reason : "no reason is given");
    }
    std::string missing;
#define GENTL_FIND(name, parameters, isNeeded) find(library, name, missing);
    GENTL_FUNCTIONS(GENTL_FIND)
#undef GENTL_FIND
    return missing.empty() ? missing : "it is no GenTL producer: it lacks " + missing;
}

} // namespace gentl_host
