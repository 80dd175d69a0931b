// Formulas of the GenICam SwissKnife grammar.
//
// Precedence as in C, with ** between the unary operators and the products (so -2**2 is 4), = and <> for
// equality.
// ?: && || evaluate, and ask for variables, only where they need to.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kx
{

// An integer keeps all its 64 bits as long as only integers meet.
class Number
{
public:
    Number() = default;
    static Number ofInteger(int64_t value) { return Number(true, value, 0); }
    static Number ofReal(double value) { return Number(false, 0, value); }

    bool isInteger() const { return m_isInteger; }
    double asReal() const { return m_isInteger ? static_cast<double>(m_integer) : m_real; }
    // Rounded to the nearest, halves away from zero. Throws FormulaError when no 64-bit integer is near.
    int64_t asInteger() const;
    bool isTrue() const { return m_isInteger ? m_integer != 0 : m_real != 0; }

private:
    Number(bool isInteger, int64_t integer, double real)
        : m_isInteger(isInteger), m_integer(integer), m_real(real)
    {}

    bool m_isInteger = true;
    int64_t m_integer = 0;
    double m_real = 0;
};

struct FormulaError
{
    std::string text;
};

class Formula
{
public:
    enum class Arithmetic
    {
        Integer, // 5/2 is 2; a result that does not fit 64 bits is an error
        Real     // 5/2 is 2.5
    };

    // The names that a formula may use. A declared name hides a constant of the language (PI, E), and a
    // function wherever no parenthesis follows.
    struct Scope
    {
        std::vector<std::string> variables;
        std::map<std::string, std::string> expressions; // named parts and constants, as formulas themselves
    };

    // Throws FormulaError for what is no formula, uses an undeclared name, or is nested or chained too far
    // (some hundred levels of parentheses, 2,000 operators in a row).
    Formula(std::string_view text, const Scope& scope, Arithmetic arithmetic);

    // `variable` gives the value of scope.variables[i]. Throws FormulaError for a division by zero and for
    // every result that is no number, and passes on what `variable` throws.
    Number evaluate(const std::function<Number(size_t)>& variable) const;

    // How deep evaluate() recurses.
    unsigned height() const { return m_steps[m_root].height; }

private:
    friend class FormulaParser;

    enum class Operation
    {
        Literal,
        Variable,
        Negate,
        Complement,
        Function,
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
        BitOr,
        And,
        Or,
        Choose
    };

    struct Step
    {
        Operation operation;
        size_t index = 0; // of a variable or a function
        Number literal;
        size_t operands[3] = {}; // steps
        unsigned height = 0;     // steps below this one, on the longest way
    };

    class Evaluation;

    Arithmetic m_arithmetic;
    std::vector<Step> m_steps;
    size_t m_root = 0;
};

} // namespace kx
