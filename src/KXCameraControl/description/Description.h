// The camera's GenICam description: where it lies, how it is fetched, and whether it may be parsed.
#pragma once

#include "KXCameraControl/ports/Port.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace kx
{

// What one description may hold, fetched or unpacked. More is refused before memory is taken for it.
constexpr uint64_t maximumFetchedBytes = 64u << 20;
// What is handed to the XML parser; the largest descriptions in use stay below a fifth of it.
constexpr size_t maximumParsedBytes = 16u << 20;
constexpr unsigned maximumXmlDepth = 1000;

// A description in device memory: "Local:name.xml;HEXADDR;HEXLEN[?SchemaVersion=...]".
struct LocalUrl
{
    std::string fileName;
    uint64_t address = 0;
    uint64_t length = 0;

    bool isZip() const; // by the name's ending
};

// False, with a reason, for every other form: files and web addresses are never followed.
bool parseLocalUrl(const std::string& url, LocalUrl& parsed, std::string& problem);

// Unpacks the first .xml of an archive (the first file when none is called so).
bool unzip(const std::string& archive, std::string& text, std::string& problem);

// Reads the description from the first URL that yields one. KX_OK with `text` (without terminator, cut at the
// first zero byte); KX_E_DESCRIPTION when no URL yields one; a status of a failed line ends the search at
// once.
KX_Status fetchDescription(Port& port, std::string& text, std::string& problem);

// Whether the text may go to the XML parser: one well-balanced document element of at most maximumXmlDepth
// levels and maximumParsedBytes, without a document type declaration (the only place where entities are
// declared).
bool isParsable(const std::string& text, std::string& problem);

} // namespace kx
