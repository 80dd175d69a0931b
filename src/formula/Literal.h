// Number literals of formulas.
#pragma once

#include "formula/Program.h"

#include <string_view>

namespace formula
{

struct Literal
{
    std::size_t length = 0;     // characters taken
    Step step = integerStep(0); // the number, pushed
    Fault::Kind fault = Fault::Kind::None;
};

// Decimal ("12", ".5", "5.", "1.2e-3") and hexadecimal ("0x1F") numbers, whatever the locale. Digits alone
// are an integer where 64 bits hold them. Hexadecimal digits are a 64-bit pattern, so 0xFFFFFFFFFFFFFFFF is
// -1, as in the registers that formulas work on. What is too small for a double is 0. An "e" without digits
// does not belong to the number.
Literal scanLiteral(std::string_view text);

} // namespace formula
