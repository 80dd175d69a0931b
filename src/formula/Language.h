// The tables of the language: signs, their precedence in each dialect, functions and constants.
#pragma once

#include "formula/Grammar.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

namespace formula
{

struct BinaryOperator
{
    std::string_view sign;
    Operation operation;
};

// A sign that begins another one stands behind it.
inline constexpr BinaryOperator binaryOperators[] = {
    {"**", Operation::Power},          {"*", Operation::Multiply},    {"/", Operation::Divide},
    {"%", Operation::Remainder},       {"+", Operation::Add},         {"-", Operation::Subtract},
    {"<<", Operation::ShiftLeft},      {">>", Operation::ShiftRight}, {"<>", Operation::NotEqual},
    {"<=", Operation::LessOrEqual},    {"<", Operation::Less},        {"=", Operation::Equal},
    {">=", Operation::GreaterOrEqual}, {">", Operation::Greater},     {"&&", Operation::DecideAnd},
    {"||", Operation::DecideOr},       {"&", Operation::BitAnd},      {"^", Operation::BitXor},
    {"|", Operation::BitOr},
};
inline constexpr std::size_t operatorCount = std::size(binaryOperators);

// Precedence, loosest first; signs before an operand bind tighter than all of it.
//
// The suite's is that of C, with ** between the signs and the products: a variable's value may be put in as
// text, and "-2**2" must square the negative number. The nodes' is that of the standard's reference
// implementation, which makers of cameras try their descriptions with.
inline constexpr std::string_view suitePrecedence[] = {"?:",   "||",        "&&",    "|",   "^",     "&",
                                                       "= <>", "< > <= >=", "<< >>", "+ -", "* / %", "**"};
inline constexpr std::string_view nodesPrecedence[] = {"?: || && = <> < > <= >=", "+ -", "* / %",
                                                       "& | ^ << >> **"};
constexpr int bracketLevel = -1; // never completed by what follows, only by what closes it
constexpr int conditionalLevel = 0;
constexpr int signLevel = 100;

using Levels = std::array<int, operatorCount>;

constexpr bool hasWord(std::string_view words, std::string_view word)
{
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        if (words.substr(0, end) == word)
            return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

template <std::size_t rows>
constexpr Levels levelsOf(const std::string_view (&precedence)[rows])
{
    Levels levels{};
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t i = 0; i < operatorCount; ++i)
            if (hasWord(precedence[row], binaryOperators[i].sign))
                levels[i] = static_cast<int>(row);
    return levels;
}

struct Function
{
    std::string_view name;
    Operation operation;
};

inline constexpr Function functions[] = {
    {"ABS", Operation::Abs},   {"SGN", Operation::Sgn},     {"NEG", Operation::Negate},
    {"ATAN", Operation::Atan}, {"COS", Operation::Cos},     {"SIN", Operation::Sin},
    {"TAN", Operation::Tan},   {"ASIN", Operation::Asin},   {"ACOS", Operation::Acos},
    {"EXP", Operation::Exp},   {"LN", Operation::Ln},       {"LG", Operation::Lg},
    {"SQRT", Operation::Sqrt}, {"TRUNC", Operation::Trunc}, {"FLOOR", Operation::Floor},
    {"CEIL", Operation::Ceil}, {"ROUND", Operation::Round},
};

struct Constant
{
    std::string_view name;
    double value;
};

inline constexpr Constant constants[] = {{"E", 2.718281828459045235}, {"PI", 3.141592653589793238}};

// `word` stands in a formula, `name` in a table and so in capitals.
inline bool isNamed(std::string_view word, std::string_view name, bool ignoresCase)
{
    const auto isSame = [ignoresCase](char c, char capital) {
        return c == capital || (ignoresCase && c >= 'a' && c <= 'z' && c - 'a' + 'A' == capital);
    };
    return std::equal(word.begin(), word.end(), name.begin(), name.end(), isSame);
}

template <typename Entry, std::size_t size>
const Entry* findByName(const Entry (&table)[size], std::string_view word, bool ignoresCase)
{
    for (const Entry& entry : table)
        if (isNamed(word, entry.name, ignoresCase))
            return &entry;
    return nullptr;
}

struct Bounds
{
    std::size_t open;    // parentheses and calls
    std::size_t pending; // whatever waits for its right side
    std::size_t steps;
};

inline constexpr std::size_t unbounded = std::numeric_limits<std::size_t>::max();

struct Language
{
    Levels levels;
    bool chainsFromRight; // 2**3**2 and 1?2:3?4:5
    bool ignoresCase;     // of functions and constants
    Bounds bounds;
};

// In the order of Dialect.
inline constexpr Language languages[] = {
    {levelsOf(suitePrecedence), true, false, {10000, unbounded, unbounded}},
    {levelsOf(nodesPrecedence), false, true, {unbounded, 2000, 100000}},
};

} // namespace formula
