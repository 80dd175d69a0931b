// What both machines count alike: functions of reals, and the bits of whole numbers.
#pragma once

#include "formula/Program.h"

namespace formula
{

// Nothing here throws: what cannot be counted is kept as `fault`, the first of a formula, and gives 0.
void fail(Fault& fault, Fault::Kind kind, std::int64_t count = 0);

// Of the operations with one operand, all but Complement.
double functionOfReal(Operation operation, double x);

// RoundToDigits to Subtract; Remainder is fmod. A fault: a division by zero.
double arithmeticOfReals(Operation operation, double a, double b, Fault& fault);

// Less to NotEqual.
template <typename Operand>
bool isRelation(Operation operation, Operand a, Operand b)
{
    switch (operation) {
    case Operation::Less:
        return a < b;
    case Operation::LessOrEqual:
        return a <= b;
    case Operation::Greater:
        return a > b;
    case Operation::GreaterOrEqual:
        return a >= b;
    case Operation::Equal:
        return a == b;
    default:
        return a != b;
    }
}

inline bool isArithmetic(Operation operation)
{
    return operation >= Operation::RoundToDigits && operation <= Operation::Subtract;
}

inline bool isComparison(Operation operation)
{
    return operation >= Operation::Less && operation <= Operation::NotEqual;
}

// The number without its fraction. It has to lie in [-2^63, 2^64), where the upper half stands for the same
// bits as a negative number; a fault otherwise.
std::int64_t bitsOf(double x, Fault& fault);

// The sign is the left operand's. A fault: a division by zero.
std::int64_t remainder(std::int64_t a, std::int64_t b, Fault& fault);

// Shifts and the three of two operands. The right shift keeps the sign. A fault: a count that is not in
// 0..63.
std::int64_t operationOnBits(Operation operation, std::int64_t a, std::int64_t b, Fault& fault);

} // namespace formula
