#pragma once

#include <string>

namespace producer
{

// The path that this code was loaded from; empty: unknown.
std::string ownFile();

} // namespace producer
