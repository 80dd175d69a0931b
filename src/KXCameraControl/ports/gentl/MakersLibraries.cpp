#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include "KXCameraControl/ports/gentl/LibraryPlaces.h"

#include <algorithm>

namespace kx
{

namespace fs = std::filesystem;

namespace
{

using IsMeant = bool (*)(const fs::path& file);

std::vector<std::string> filesIn(const fs::path& folder, IsMeant isMeant)
{
    std::vector<std::string> paths;
    std::error_code problem;
    fs::directory_iterator entry(folder, problem);
    for (; !problem && entry != fs::directory_iterator(); entry.increment(problem)) {
        const fs::path whole = fs::canonical(entry->path(), problem);
        if (!problem && isMeant(entry->path()))
            paths.push_back(whole.u8string());
        problem.clear();
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::string> filesInFolders(const std::vector<fs::path>& folders, IsMeant isMeant)
{
    std::vector<std::string> all;
    for (const fs::path& folder : folders)
        for (const std::string& path : folder.empty() ? std::vector<std::string>() : filesIn(folder, isMeant))
            if (std::find(all.begin(), all.end(), path) == all.end())
                all.push_back(path);
    return all;
}

} // namespace

std::vector<std::string> gentlProducers()
{
    return filesInFolders(producerFolders(), isProducer);
}

std::vector<std::string> serialLibraries()
{
    return filesInFolders(serialLibraryFolders(), isSerialLibrary);
}

} // namespace kx
