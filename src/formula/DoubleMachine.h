// Formulas of numbers, in doubles: what the common library's Compute works with.
#pragma once

#include "formula/Program.h"

#include <string_view>

namespace formula
{

struct DoubleResult
{
    double value = 0;
    Fault fault; // Kind::None: `value` holds, and is finite
};

// Every number on the way has to be finite. % << >> & | ^ ~ work on 64-bit integers, cut as bitsOf() says.
// Throws nothing but std::bad_alloc. The fault's text lies in `formula`.
DoubleResult calculate(std::string_view formula);

} // namespace formula
