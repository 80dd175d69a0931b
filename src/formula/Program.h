// A formula after parsing: steps for a machine with one stack of numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace formula
{

// In this order: what stands on no operand, what decides where to go on, one operand, two operands.
enum class Operation : std::uint8_t
{
    Integer,  // push `integer`
    Pattern,  // the same, written as bits: hexadecimal
    Real,     // push `real`
    Variable, // push the variable `target`
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
    // Two operands: reals alone, numbers, comparisons, bits.
    RoundToDigits,
    Power,
    Multiply,
    Divide,
    Remainder,
    Add,
    Subtract,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Equal,
    NotEqual,
    ShiftLeft,
    ShiftRight,
    BitAnd,
    BitXor,
    BitOr
};

struct Step
{
    Operation operation;
    union
    {
        std::size_t target; // of the four that may jump: index of the next step; of a variable: its index
        std::int64_t integer;
        double real;
    };
};

inline Step integerStep(std::int64_t value, Operation operation = Operation::Integer)
{
    Step step{operation, {0}};
    step.integer = value;
    return step;
}

inline Step realStep(double value)
{
    Step step{Operation::Real, {0}};
    step.real = value;
    return step;
}

struct Program
{
    std::vector<Step> steps;
    std::size_t height = 0; // the most numbers that are ever on the stack
};

// What can be wrong with a text, and with the numbers that meet in a formula. Every user of the library words
// it for its own readers.
struct Fault
{
    enum class Kind
    {
        None,
        // The text; `rest` begins where it went wrong.
        Empty,
        ValueMissing,
        ValueMissingAtEnd,
        OperatorMissing,
        ParenthesisMissing,
        ParenthesisNotOpened,
        ColonMissing,
        ColonWithoutQuestion,
        SecondArgument,
        NoNumber,               // a point alone
        NoDigits,               // 0x alone
        NumberRunsOn,           // letters, digits or points behind a number; `rest` begins behind it
        NumberTooLarge,         // beyond a double; `rest` is the number
        PatternTooLarge,        // hexadecimal, beyond 64 bits
        UnknownName,            // `rest` is the name
        CallWithoutParenthesis, // `rest` is the function's name, `position` that of the missing sign
        ArgumentOfConstant,     // `rest` is the constant's name, `position` that of the argument
        TooDeep,
        TooLong,
        TooLongTogether, // with the formulas that share its count of characters
        // The numbers.
        DivisionByZero,
        ShiftCount, // `count` is not in 0..63
        TooLarge,   // for 64 bits
        TooWide,    // an operand, for 32 bits
        NotFinite
    };

    Kind kind = Kind::None;
    std::size_t position = 0;   // in the text, from 0
    std::string_view rest = {}; // of the text that was parsed; lives as long as that one
    char closing = 0;           // ')' or ':', where that was due; 0: the end of the text
    std::int64_t count = 0;
};

} // namespace formula
