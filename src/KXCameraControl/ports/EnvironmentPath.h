// Variables of the environment that name places.
#pragma once

#include <filesystem>

namespace kx
{

// The value of an environment variable as a path, in whatever letters; empty without one.
std::filesystem::path environmentPath(const char* variable);

} // namespace kx
