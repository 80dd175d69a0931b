#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <elf.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kx
{

namespace fs = std::filesystem;

namespace
{

using IsMeant = bool (*)(const fs::path& file);

bool isProducer(const fs::path& file)
{
    return file.extension() == ".cti";
}

bool isSerialLibrary(const fs::path& file)
{
    const std::string name = file.filename().string();
    return file.extension() == ".so" && (name.rfind("clser", 0) == 0 || name.rfind("libclser", 0) == 0);
}

std::vector<std::string> filesIn(const std::string& folder, IsMeant isMeant)
{
    std::vector<std::string> paths;
    std::error_code problem;
    fs::directory_iterator entry(folder, problem);
    for (; !problem && entry != fs::directory_iterator(); entry.increment(problem)) {
        const fs::path whole = fs::canonical(entry->path(), problem);
        if (!problem && isMeant(entry->path()))
            paths.push_back(whole.string());
        problem.clear();
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::vector<std::string> filesInFolders(const char* variable, IsMeant isMeant)
{
    const char* setting = std::getenv(variable);
    std::istringstream folders(setting ? setting : "");
    std::vector<std::string> all;
    for (std::string folder; std::getline(folders, folder, ':');)
        for (const std::string& path : folder.empty() ? std::vector<std::string>() : filesIn(folder, isMeant))
            if (std::find(all.begin(), all.end(), path) == all.end())
                all.push_back(path);
    return all;
}

bool readHead(const std::string& path, Elf64_Ehdr& head)
{
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(&head), sizeof head);
    return file.gcount() == sizeof head;
}

// As this program's own file says.
const Elf64_Ehdr& ownHead()
{
    static const Elf64_Ehdr head = [] {
        Elf64_Ehdr own{};
        readHead("/proc/self/exe", own);
        return own;
    }();
    return head;
}

} // namespace

std::vector<std::string> gentlProducers()
{
    return filesInFolders("GENICAM_GENTL64_PATH", isProducer);
}

std::vector<std::string> serialLibraries()
{
    return filesInFolders("CLSERIALPATH", isSerialLibrary);
}

std::string libraryFileProblem(const std::string& path)
{
    std::error_code problem;
    if (!fs::is_regular_file(path, problem))
        return "is no file";
    if (::access(path.c_str(), R_OK) != 0)
        return std::string("cannot be read: ") + std::strerror(errno);
    Elf64_Ehdr head{};
    const bool isWhole = readHead(path, head);
    if (std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0)
        return "is no shared library";
    if (head.e_ident[EI_CLASS] != ownHead().e_ident[EI_CLASS] || !isWhole ||
        head.e_machine != ownHead().e_machine)
        return "is made for another kind of machine";
    return {};
}

} // namespace kx
