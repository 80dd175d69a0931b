// What the nodes' formulas say of what is wrong with them.
#pragma once

#include "formula/Program.h"

#include <string>

namespace formula
{

std::string textOf(const Fault& fault);

} // namespace formula
