#include "KXCameraControl/nodes/Formula.h"

#include "KXCameraControl/nodes/FormulaFunctions.h"

#include <cmath>
#include <limits>

namespace kx
{

int64_t Number::asInteger() const
{
    if (m_isInteger)
        return m_integer;
    const double rounded = std::round(m_real);
    // -2^63 is a double, 2^63 - 1 is not.
    if (!(rounded >= -9223372036854775808.0 && rounded < 9223372036854775808.0))
        throw FormulaError{"a result does not fit 64 bits"};
    return static_cast<int64_t>(rounded);
}

namespace
{

[[noreturn]] void overflow()
{
    throw FormulaError{"a result does not fit 64 bits"};
}

Number truth(bool value)
{
    return Number::ofInteger(value ? 1 : 0);
}

int64_t integerPower(int64_t base, int64_t exponent)
{
    int64_t result = 1;
    for (; exponent > 0; exponent >>= 1) {
        if ((exponent & 1) != 0 && __builtin_mul_overflow(result, base, &result))
            overflow();
        if (exponent > 1 && __builtin_mul_overflow(base, base, &base))
            overflow();
    }
    return result;
}

} // namespace

class Formula::Evaluation
{
public:
    Evaluation(const Formula& formula, const std::function<Number(size_t)>& variable)
        : m_formula(formula), m_variable(variable)
    {}

    Number step(size_t index) const
    {
        const Step& it = m_formula.m_steps[index];
        switch (it.operation) {
        case Operation::Literal:
            return typed(it.literal);
        case Operation::Variable:
            return typed(m_variable(it.index));
        case Operation::Negate:
            return negated(step(it.operands[0]));
        case Operation::Complement:
            return Number::ofInteger(~step(it.operands[0]).asInteger());
        case Operation::Function:
            return function(it);
        case Operation::And:
            return truth(step(it.operands[0]).isTrue() && step(it.operands[1]).isTrue());
        case Operation::Or:
            return truth(step(it.operands[0]).isTrue() || step(it.operands[1]).isTrue());
        case Operation::Choose:
            return step(it.operands[step(it.operands[0]).isTrue() ? 1 : 2]);
        default: {
            // In this order, so that the requests behind them are the same with every compiler.
            const Number left = step(it.operands[0]);
            return binary(it.operation, left, step(it.operands[1]));
        }
        }
    }

private:
    // In real arithmetic every number is a real one, so that 5/2 is 2.5 whatever the operands' nodes are.
    Number typed(const Number& number) const
    {
        return m_formula.m_arithmetic == Arithmetic::Real ? Number::ofReal(number.asReal()) : number;
    }

    static Number negated(const Number& number)
    {
        if (!number.isInteger())
            return Number::ofReal(-number.asReal());
        int64_t result = 0;
        if (__builtin_sub_overflow(int64_t{0}, number.asInteger(), &result))
            overflow();
        return Number::ofInteger(result);
    }

    Number function(const Step& it) const;

    static Number binary(Operation operation, const Number& left, const Number& right)
    {
        switch (operation) {
        case Operation::Less:
            return truth(bothIntegers(left, right) ? left.asInteger() < right.asInteger()
                                                   : left.asReal() < right.asReal());
        case Operation::Greater:
            return binary(Operation::Less, right, left);
        case Operation::LessOrEqual:
            return truth(bothIntegers(left, right) ? left.asInteger() <= right.asInteger()
                                                   : left.asReal() <= right.asReal());
        case Operation::GreaterOrEqual:
            return binary(Operation::LessOrEqual, right, left);
        case Operation::Equal:
            return truth(bothIntegers(left, right) ? left.asInteger() == right.asInteger()
                                                   : left.asReal() == right.asReal());
        case Operation::NotEqual:
            return truth(!binary(Operation::Equal, left, right).isTrue());
        case Operation::BitAnd:
            return Number::ofInteger(left.asInteger() & right.asInteger());
        case Operation::BitXor:
            return Number::ofInteger(left.asInteger() ^ right.asInteger());
        case Operation::BitOr:
            return Number::ofInteger(left.asInteger() | right.asInteger());
        case Operation::ShiftLeft:
        case Operation::ShiftRight:
            return shifted(operation, left.asInteger(), right.asInteger());
        default:
            return bothIntegers(left, right) ? integerBinary(operation, left.asInteger(), right.asInteger())
                                             : realBinary(operation, left.asReal(), right.asReal());
        }
    }

    static bool bothIntegers(const Number& left, const Number& right)
    {
        return left.isInteger() && right.isInteger();
    }

    static Number shifted(Operation operation, int64_t value, int64_t count)
    {
        if (count < 0 || count > 63)
            throw FormulaError{"a shift by " + std::to_string(count) + " bits"};
        if (operation == Operation::ShiftRight)
            return Number::ofInteger(value >> count);
        return Number::ofInteger(static_cast<int64_t>(static_cast<uint64_t>(value) << count));
    }

    static Number integerBinary(Operation operation, int64_t left, int64_t right)
    {
        int64_t result = 0;
        bool tooLarge = false;
        switch (operation) {
        case Operation::Add:
            tooLarge = __builtin_add_overflow(left, right, &result);
            break;
        case Operation::Subtract:
            tooLarge = __builtin_sub_overflow(left, right, &result);
            break;
        case Operation::Multiply:
            tooLarge = __builtin_mul_overflow(left, right, &result);
            break;
        case Operation::Power:
            if (right < 0)
                return realBinary(operation, static_cast<double>(left), static_cast<double>(right));
            result = integerPower(left, right);
            break;
        default:
            if (right == 0)
                throw FormulaError{"a division by zero"};
            if (right == -1)
                return operation == Operation::Divide ? negated(Number::ofInteger(left))
                                                      : Number::ofInteger(0);
            result = operation == Operation::Divide ? left / right : left % right;
        }
        if (tooLarge)
            overflow();
        return Number::ofInteger(result);
    }

    static Number realBinary(Operation operation, double left, double right)
    {
        switch (operation) {
        case Operation::Add:
            return Number::ofReal(left + right);
        case Operation::Subtract:
            return Number::ofReal(left - right);
        case Operation::Multiply:
            return Number::ofReal(left * right);
        case Operation::Power:
            return Number::ofReal(std::pow(left, right));
        default:
            if (right == 0)
                throw FormulaError{"a division by zero"};
            return Number::ofReal(operation == Operation::Divide ? left / right : std::fmod(left, right));
        }
    }

    const Formula& m_formula;
    const std::function<Number(size_t)>& m_variable;
};

Number Formula::evaluate(const std::function<Number(size_t)>& variable) const
{
    const Number result = Evaluation(*this, variable).step(m_root);
    if (!result.isInteger() && !std::isfinite(result.asReal()))
        throw FormulaError{"the result is no number"};
    return result;
}

// ---- functions ----

namespace
{

struct RealFunction
{
    const char* name;
    double (*function)(double);
};

constexpr const char* specialNames[] = {"ABS", "SGN", "NEG", "ROUND"};

constexpr RealFunction realFunctions[] = {
    {"SIN", [](double x) { return std::sin(x); }},     {"COS", [](double x) { return std::cos(x); }},
    {"TAN", [](double x) { return std::tan(x); }},     {"ASIN", [](double x) { return std::asin(x); }},
    {"ACOS", [](double x) { return std::acos(x); }},   {"ATAN", [](double x) { return std::atan(x); }},
    {"EXP", [](double x) { return std::exp(x); }},     {"LN", [](double x) { return std::log(x); }},
    {"LG", [](double x) { return std::log10(x); }},    {"SQRT", [](double x) { return std::sqrt(x); }},
    {"TRUNC", [](double x) { return std::trunc(x); }}, {"FLOOR", [](double x) { return std::floor(x); }},
    {"CEIL", [](double x) { return std::ceil(x); }},
};

double roundedTo(double value, double digits)
{
    const double scale = std::pow(10.0, digits);
    return std::round(value * scale) / scale;
}

} // namespace

size_t functionIndex(std::string_view name)
{
    for (size_t i = 0; i < firstReal; ++i) {
        if (name == specialNames[i])
            return i;
    }
    for (size_t i = 0; i < std::size(realFunctions); ++i) {
        if (name == realFunctions[i].name)
            return firstReal + i;
    }
    return noFunction;
}

Number Formula::Evaluation::function(const Step& it) const
{
    const Number argument = step(it.operands[0]);
    const double real = argument.asReal();
    if (it.index >= firstReal)
        return Number::ofReal(realFunctions[it.index - firstReal].function(real));
    switch (it.index) {
    case Abs:
        return real < 0 ? negated(argument) : argument;
    case Sgn:
        return typed(Number::ofInteger(real > 0 ? 1 : (real < 0 ? -1 : 0)));
    case Neg:
        return negated(argument);
    default:
        if (it.operands[1] == noOperand)
            return Number::ofReal(std::round(real));
        return Number::ofReal(roundedTo(real, step(it.operands[1]).asReal()));
    }
}

} // namespace kx
