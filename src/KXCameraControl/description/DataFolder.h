// Where the system has a place for what programs keep for a user.
#pragma once

#include <filesystem>

namespace kx
{

// The user's folder for programs' data; empty where the environment names none.
std::filesystem::path userDataFolder();
// Whether a folder is this user's, and nobody else may write to it: what lies there is then his own.
bool isOwnFolder(const std::filesystem::path& folder);

} // namespace kx
