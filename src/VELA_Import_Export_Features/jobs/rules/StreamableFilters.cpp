#include "jobs/rules/StreamableFilters.h"

#include <SuiteTools/SuiteTools.h>

namespace ie
{

std::vector<StreamableFilter> streamableFilters()
{
    const QString folder = VELAInterface::programDataPath() + "/Streamable";
    std::vector<StreamableFilter> filters;
    for (const QString word : {"CL", "CXP", "GigE", "U3V"})
        filters.push_back({word, QString("%1/%2.filter").arg(folder, word)});
    return filters;
}

} // namespace ie
