#include "camera_emulator/Files.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace emu
{

std::optional<std::string> readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
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
    const std::string temporary = path + ".part";
    std::ofstream file(temporary, std::ios::binary);
    file << text;
    file.close();
    return file && std::rename(temporary.c_str(), path.c_str()) == 0;
}

} // namespace emu
