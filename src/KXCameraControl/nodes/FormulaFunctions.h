// What the parser and the evaluation of formulas share.
#pragma once

#include <cstddef>
#include <limits>
#include <string_view>

namespace kx
{

// ABS, SGN, NEG and ROUND stand apart: they keep integers, or take a second argument.
enum SpecialFunction : size_t
{
    Abs,
    Sgn,
    Neg,
    Round,
    firstReal
};

constexpr size_t noFunction = std::numeric_limits<size_t>::max();
constexpr size_t noOperand = std::numeric_limits<size_t>::max();

// By its name in capitals; noFunction when there is none.
size_t functionIndex(std::string_view name);

} // namespace kx
