// Values of formulas: the machine behind Compute.
#pragma once

#include <string>
#include <string_view>

namespace VELAInterface::Formula
{

struct Result
{
    double value = 0;
    std::string error; // empty: `value` holds, and is finite
};

// Numbers are doubles. % << >> & | ^ ~ work on 64-bit integers: operands lose their fraction and must lie in
// [-2^63, 2^64), where the upper half stands for the same bits as a negative number.
Result calculate(std::string_view formula);

} // namespace VELAInterface::Formula
