#pragma once

#include <optional>
#include <string>

namespace emu
{

// The whole file; nothing when it cannot be read.
std::optional<std::string> readFile(const std::string& path);
// Through a temporary, so that whoever waits for the file sees all of it. False when it cannot be written.
bool writeFile(const std::string& path, const std::string& text);

} // namespace emu
