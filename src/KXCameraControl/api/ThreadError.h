// What went wrong last on each thread.
#pragma once

#include <string>

namespace kx::api
{

// Of the last failure on the calling thread; until that thread ends.
std::string& lastThreadError();

} // namespace kx::api
