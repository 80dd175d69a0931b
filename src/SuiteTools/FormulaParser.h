// Formulas of the GenICam SwissKnife grammar, turned into steps for a machine with one stack of numbers.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace VELAInterface::Formula
{

enum class Operation
{
    Number, // push `number`
    // Control: what makes ?: && || lazy.
    Jump,       // go on at `target`
    JumpUnless, // pop; go on at `target` when it was 0
    DecideAnd,  // top is 0: leave 0 and go on at `target`; else pop
    DecideOr,   // top is not 0: leave 1 and go on at `target`; else pop
    Truth,      // top becomes 1 or 0
    // One operand.
    Negate,
    Complement,
    Abs,
    Sgn,
    Atan,
    Cos,
    Sin,
    Tan,
    Asin,
    Acos,
    Exp,
    Ln,
    Lg,
    Sqrt,
    Trunc,
    Floor,
    Ceil,
    Round,
    // Two operands.
    RoundToDigits,
    Power,
    Multiply,
    Divide,
    Remainder,
    Add,
    Subtract,
    ShiftLeft,
    ShiftRight,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Equal,
    NotEqual,
    BitAnd,
    BitXor,
    BitOr
};

struct Step
{
    Operation operation;
    double number;      // of Operation::Number
    std::size_t target; // of the four that may jump: index of the next step
};

struct Program
{
    std::vector<Step> steps;
    std::string error; // empty when the text was a formula
};

// Pending parentheses and calls beyond which a text is refused.
constexpr std::size_t kMaximumDepth = 10000;

// Time and memory grow linearly with the text; the thread's stack is not used for nesting.
Program parse(std::string_view text);

} // namespace VELAInterface::Formula
