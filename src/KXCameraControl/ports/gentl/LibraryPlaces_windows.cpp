#include "KXCameraControl/ports/gentl/LibraryPlaces.h"

#include "KXCameraControl/ports/EnvironmentPath.h"
#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <windows.h>

#include <cerrno>
#include <cstring>
#include <cwctype>
#include <fstream>
#include <sstream>

namespace kx
{

namespace fs = std::filesystem;

namespace
{

std::vector<fs::path> foldersOf(const std::wstring& setting)
{
    std::wistringstream list(setting);
    std::vector<fs::path> folders;
    for (std::wstring folder; std::getline(list, folder, L';');)
        folders.emplace_back(folder);
    return folders;
}

// Camera Link 1.1, "API Functions": a value of that name.
std::wstring registeredFolders()
{
    constexpr wchar_t key[] = L"SOFTWARE\\cameralink";
    constexpr wchar_t name[] = L"CLSERIALPATH";
    DWORD size = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return {};
    std::wstring text(size / sizeof(wchar_t), L'\0');
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key, name, RRF_RT_REG_SZ, nullptr, text.data(), &size) !=
        ERROR_SUCCESS)
        return {};
    text.resize(size / sizeof(wchar_t) - 1); // without the zero at its end
    return text;
}

std::wstring lowerCase(std::wstring text)
{
    for (wchar_t& sign : text)
        sign = static_cast<wchar_t>(std::towlower(sign));
    return text;
}

// The beginning of a portable executable: where its own head is, and for which machine it is made.
struct Head
{
    bool isOne = false;
    WORD machine = 0;
};

Head headOf(std::ifstream& file)
{
    IMAGE_DOS_HEADER dos{};
    file.read(reinterpret_cast<char*>(&dos), sizeof dos);
    if (!file || dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew < 0)
        return {};
    DWORD signature = 0;
    IMAGE_FILE_HEADER head{};
    file.seekg(dos.e_lfanew);
    file.read(reinterpret_cast<char*>(&signature), sizeof signature);
    file.read(reinterpret_cast<char*>(&head), sizeof head);
    const bool isLibrary =
        file && signature == IMAGE_NT_SIGNATURE && (head.Characteristics & IMAGE_FILE_DLL) != 0;
    return {isLibrary, head.Machine};
}

} // namespace

std::vector<fs::path> producerFolders()
{
    return foldersOf(environmentPath("GENICAM_GENTL64_PATH").wstring());
}

// The variable, which is for tries, goes before what installers have entered.
std::vector<fs::path> serialLibraryFolders()
{
    const std::wstring setting = environmentPath("CLSERIALPATH").wstring();
    return foldersOf(setting.empty() ? registeredFolders() : setting);
}

bool isProducer(const fs::path& file)
{
    return lowerCase(file.extension().wstring()) == L".cti";
}

bool isSerialLibrary(const fs::path& file)
{
    return lowerCase(file.extension().wstring()) == L".dll" &&
           lowerCase(file.filename().wstring()).rfind(L"clser", 0) == 0;
}

std::string libraryFileProblem(const std::string& path)
{
    const fs::path file = fs::u8path(path);
    std::error_code problem;
    if (!fs::is_regular_file(file, problem))
        return "is no file";
    std::ifstream bytes(file, std::ios::binary);
    if (!bytes)
        return std::string("cannot be read: ") + std::strerror(errno);
    const Head head = headOf(bytes);
    if (!head.isOne)
        return "is no shared library";
    if (head.machine != IMAGE_FILE_MACHINE_AMD64)
        return "is made for another kind of machine";
    return {};
}

} // namespace kx
