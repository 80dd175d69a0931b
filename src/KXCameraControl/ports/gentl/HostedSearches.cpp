#include "KXCameraControl/ports/gentl/HostedSearches.h"

#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <map>
#include <mutex>

namespace kx
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kRest{30};

struct LastSearch
{
    std::string problem;
    Clock::time_point restsUntil;
};

// Never destroyed: threads may outlive main.
struct Searches
{
    std::mutex mutex;
    std::map<std::string, LastSearch> byLibrary;
};

Searches& searches()
{
    static auto* const instance = new Searches;
    return *instance;
}

} // namespace

bool restsFromSearches(const std::string& library)
{
    Searches& all = searches();
    const std::lock_guard lock(all.mutex);
    const auto last = all.byLibrary.find(library);
    return last != all.byLibrary.end() && Clock::now() < last->second.restsUntil;
}

void rememberSearch(const std::string& library, const HostReply& reply)
{
    Searches& all = searches();
    const std::lock_guard lock(all.mutex);
    LastSearch& last = all.byLibrary[library];
    last.problem = reply.text;
    last.restsUntil = reply.status == KX_OK ? Clock::time_point() : Clock::now() + kRest;
}

std::string searchProblem(Hosted kind, const std::string& library)
{
    const std::string unfit = libraryFileProblem(library);
    if (!unfit.empty())
        return calledBy(kind, library) + " " + unfit + ".";
    Searches& all = searches();
    const std::lock_guard lock(all.mutex);
    const auto last = all.byLibrary.find(library);
    return last == all.byLibrary.end() ? std::string() : last->second.problem;
}

} // namespace kx
