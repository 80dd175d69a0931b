// A file in the place of another, in one step.
#pragma once

#include <string>

namespace kx
{

// Renames `from` to `to`, over an older file. Paths are as fopen() takes them. Gives the system's reason on
// failure, or an empty text.
std::string replaceFile(const std::string& from, const std::string& to);

} // namespace kx
