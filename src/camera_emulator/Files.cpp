#include "camera_emulator/Files.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

namespace emu
{

namespace fs = std::filesystem;

std::optional<std::string> readFile(const std::string& path)
{
    std::ifstream file(fs::u8path(path), std::ios::binary);
    std::ostringstream text;
    if (file.peek() != std::ifstream::traits_type::eof())
        text << file.rdbuf();
    // Opening a folder succeeds, reading it does not.
    if (!file.is_open() || file.bad() || !text)
        return std::nullopt;
    return text.str();
}

bool writeFile(const std::string& path, const std::string& text)
{
    std::random_device random; // a name that nobody can have prepared
    const fs::path temporary = fs::u8path(path + ".part-" + std::to_string(random()));
    std::ofstream file(temporary, std::ios::binary);
    file << text;
    file.close();
    std::error_code failure;
    if (file)
        fs::rename(temporary, fs::u8path(path), failure); // over an older one
    if (file && !failure)
        return true;
    fs::remove(temporary, failure);
    return false;
}

} // namespace emu
