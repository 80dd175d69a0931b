// Number literals of the SwissKnife grammar.
#pragma once

#include <cstddef>
#include <string_view>

namespace VELAInterface::Formula
{

struct NumberToken
{
    std::size_t length = 0; // characters taken; 0: the text does not begin with a number
    double value = 0;
    bool fits = true; // false: a number by its form, but too large
};

// Decimal ("12", ".5", "5.", "1.2e-3") and hexadecimal ("0x1F") numbers, whatever the locale. Hexadecimal
// digits are a 64-bit pattern, so 0xFFFFFFFFFFFFFFFF is -1, as in the integer nodes that formulas work on.
NumberToken scanNumber(std::string_view text);

} // namespace VELAInterface::Formula
