// Where a camera's GenICam description lies, and fetching it.
#pragma once

#include "KXCameraControl/description/Description.h"
#include "KXCameraControl/ports/Port.h"

#include <cstdint>
#include <string>

namespace kx
{

// A description in device memory: "Local:name.xml;HEXADDR;HEXLEN[?SchemaVersion=...]", or
// "...?SHA1=..." with the digest of what lies there.
struct LocalUrl
{
    std::string fileName;
    uint64_t address = 0;
    uint64_t length = 0;
    std::string sha1; // lower-case hexadecimal; empty: not given

    bool isZip() const; // by the name's ending
};

// False, with a reason, for every other form: files and web addresses are never followed.
bool parseLocalUrl(const std::string& url, LocalUrl& parsed, std::string& problem);

// The description of the first URL that yields one: one that is remembered where the camera proves to have it
// still, else read from the camera. KX_OK with `description`; KX_E_DESCRIPTION when no URL yields one; a
// status of a failed line ends the search at once. `description` is null then.
KX_Status fetchDescription(Port& port, SharedDescription& description, std::string& problem);

} // namespace kx
