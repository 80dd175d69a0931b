// Which parts of a description have to agree with the camera before a remembered one is believed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kx
{

// In bytes; what one request of the slowest line carries.
constexpr size_t evidenceBlock = 512;

// Numbers of the blocks of `memory` (a description as it lies in a camera's memory) that are to be compared:
// the first and the last, three in between that `random` chooses, and those that change with any of the
// others: of an archive its directory, which holds the checksum of what is packed (APPNOTE 4.4.7), of a text
// the tag that names its version and GUIDs (GenICam: VersionGuid changes with every change of the file).
// Ascending, each once. Nothing where there is no such part or where it is long: then nothing but reading it
// tells what the camera has.
std::optional<std::vector<size_t>> evidenceOf(const std::string& memory, unsigned (*random)());

} // namespace kx
