// A ZIP archive of one file, as cameras carry their description.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace emu
{

// `content` deflated under `fileName` (PKWARE APPNOTE 6.3.x: local header, data, central directory). The time
// stamp is fixed, so that the same content gives the same bytes.
std::vector<uint8_t> zipOneFile(const std::string& fileName, const std::string& content);

} // namespace emu
