// Descriptions that cameras carry as archives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kx
{

// What one description may hold, fetched or unpacked. More is refused before memory is taken for it.
constexpr uint64_t maximumFetchedBytes = 64u << 20;

// Where the archive's directory lies, its end record included: from `begin` up to `end`. False: it is none.
bool archiveDirectory(const std::string& archive, size_t& begin, size_t& end);

// Unpacks the first .xml of an archive (the first file when none is called so).
bool unzip(const std::string& archive, std::string& text, std::string& problem);

} // namespace kx
