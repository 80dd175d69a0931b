// Lists in environment variables.
#pragma once

#include <string>
#include <vector>

namespace kx
{

// The non-empty parts of a comma-separated list, without surrounding blanks. `text` may be null.
std::vector<std::string> nameList(const char* text);

} // namespace kx
