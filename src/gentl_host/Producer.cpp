#include "gentl_host/Producer.h"

namespace gentl_host
{

std::string Producer::load(const std::string& path)
{
    LibraryFile file;
    const std::string problem = file.open(path);
    if (!problem.empty())
        return problem;
#define GENTL_FIND(name, parameters, isNeeded) file.find(name);
    GENTL_FUNCTIONS(GENTL_FIND)
#undef GENTL_FIND
    return file.missing().empty() ? std::string() : "it is no GenTL producer: it lacks " + file.missing();
}

} // namespace gentl_host
