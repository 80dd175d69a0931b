#include "gentl_host/LibraryFile.h"

#include <dlfcn.h>

namespace gentl_host
{

std::string LibraryFile::open(const std::string& path)
{
    m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (m_library)
        return {};
    const char* reason = dlerror();
    return std::string("it cannot be loaded: ") + (reason ? reason : "no reason is given");
}

void* LibraryFile::address(const char* name) const
{
    return dlsym(m_library, name);
}

} // namespace gentl_host
