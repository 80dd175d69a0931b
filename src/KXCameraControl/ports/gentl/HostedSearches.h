// What came of the last searches of this process through the libraries of grabbers' makers. One that failed
// is left alone for half a minute. Thread-safe.
#pragma once

#include "KXCameraControl/ports/gentl/HostLink.h"

#include <string>

namespace kx
{

bool restsFromSearches(const std::string& library);
void rememberSearch(const std::string& library, const HostReply& reply);
// A sentence: why the file cannot be used at all, or what the last search met. Empty: nothing is known
// against it.
std::string searchProblem(Hosted kind, const std::string& library);

} // namespace kx
