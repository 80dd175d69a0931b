#include "KXCameraControl/ports/gentl/LibraryPlaces.h"

#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <elf.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace kx
{

namespace fs = std::filesystem;

namespace
{

std::vector<fs::path> foldersOf(const char* variable)
{
    const char* setting = std::getenv(variable);
    std::istringstream list(setting ? setting : "");
    std::vector<fs::path> folders;
    for (std::string folder; std::getline(list, folder, ':');)
        folders.emplace_back(folder);
    return folders;
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

std::vector<fs::path> producerFolders()
{
    return foldersOf("GENICAM_GENTL64_PATH");
}

std::vector<fs::path> serialLibraryFolders()
{
    return foldersOf("CLSERIALPATH");
}

bool isProducer(const fs::path& file)
{
    return file.extension() == ".cti";
}

bool isSerialLibrary(const fs::path& file)
{
    const std::string name = file.filename().string();
    return file.extension() == ".so" && (name.rfind("clser", 0) == 0 || name.rfind("libclser", 0) == 0);
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
