// Where a system keeps the libraries of grabbers' makers, and what they are called there.
#pragma once

#include <filesystem>
#include <vector>

namespace kx
{

std::vector<std::filesystem::path> producerFolders();
std::vector<std::filesystem::path> serialLibraryFolders();
// By their names.
bool isProducer(const std::filesystem::path& file);
bool isSerialLibrary(const std::filesystem::path& file);

} // namespace kx
