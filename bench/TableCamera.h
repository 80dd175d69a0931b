// A camera library without a line: every integer reads as 7, all memory as zeros, at no cost. What is left in
// a measurement is the program's own work.
#pragma once

#include <string>

namespace bench
{

void setDescription(std::string text);

} // namespace bench
