#include "formula/NumberMachine.h"

#include "formula/Arithmetic.h"
#include "formula/NumberMachine_Texts.h"
#include "formula/StackMachine.h"

#include <cmath>
#include <utility>

namespace formula
{

std::int64_t Number::rounded() const
{
    const double whole = std::round(m_real);
    // -2^63 is a double, 2^63 - 1 is not.
    if (!(whole >= -9223372036854775808.0 && whole < 9223372036854775808.0))
        throw FormulaError{"a result does not fit 64 bits"};
    return static_cast<std::int64_t>(whole);
}

namespace
{

void require(bool fits, Fault& fault)
{
    if (!fits)
        fail(fault, Fault::Kind::TooLarge);
}

std::int64_t integerPower(std::int64_t base, std::int64_t exponent, Fault& fault)
{
    std::int64_t result = 1;
    for (; exponent > 0; exponent >>= 1) {
        if ((exponent & 1) != 0)
            require(!__builtin_mul_overflow(result, base, &result), fault);
        if (exponent > 1)
            require(!__builtin_mul_overflow(base, base, &base), fault);
    }
    return result;
}

std::int64_t negated(std::int64_t value, Fault& fault)
{
    std::int64_t result = 0;
    require(!__builtin_sub_overflow(std::int64_t{0}, value, &result), fault);
    return result;
}

// Of the arithmetic ones, all but RoundToDigits; an exponent is not negative.
std::int64_t arithmeticOfIntegers(Operation operation, std::int64_t left, std::int64_t right, Fault& fault)
{
    std::int64_t result = 0;
    switch (operation) {
    case Operation::Add:
        require(!__builtin_add_overflow(left, right, &result), fault);
        return result;
    case Operation::Subtract:
        require(!__builtin_sub_overflow(left, right, &result), fault);
        return result;
    case Operation::Multiply:
        require(!__builtin_mul_overflow(left, right, &result), fault);
        return result;
    case Operation::Power:
        return integerPower(left, right, fault);
    case Operation::Remainder:
        return remainder(left, right, fault);
    default:
        if (right == -1)
            return negated(left, fault);
        if (right == 0)
            fail(fault, Fault::Kind::DivisionByZero);
        return right == 0 ? 0 : left / right;
    }
}

class NumberRules
{
public:
    Fault fault = {};

    NumberRules(bool isReal, const std::function<Number(std::size_t)>& variable)
        : m_isReal(isReal), m_variable(variable)
    {}

    // In real arithmetic every operand is a real one, so that 5/2 is 2.5 whatever its nodes are.
    Number integer(std::int64_t value) const { return typed(Number::ofInteger(value)); }
    // In real arithmetic, up to 32 bits are one of the numbers that its bit operators work on.
    Number pattern(std::int64_t value) const
    {
        const bool isShort = static_cast<std::uint64_t>(value) >> 32 == 0;
        return integer(m_isReal && isShort ? static_cast<std::int32_t>(value) : value);
    }
    static Number real(double value) { return Number::ofReal(value); }
    Number variable(std::size_t index) const { return typed(m_variable(index)); }
    static bool isTrue(const Number& number) { return number.isTrue(); }
    static Number truth(bool value) { return Number::ofInteger(value ? 1 : 0); }

    Number one(Operation operation, const Number& x)
    {
        if (operation == Operation::Complement)
            return Number::ofInteger(~bits(x)); // of 32 bits: 32 bits
        if (x.isInteger() && !m_isReal && operation == Operation::Negate)
            return Number::ofInteger(negated(x.asInteger(), fault));
        if (x.isInteger() && !m_isReal && operation == Operation::Abs)
            return x.asInteger() < 0 ? Number::ofInteger(negated(x.asInteger(), fault)) : x;
        const double result = functionOfReal(operation, x.asReal());
        if (operation == Operation::Sgn)
            return typed(Number::ofInteger(static_cast<std::int64_t>(result)));
        return Number::ofReal(result);
    }

    Number two(Operation operation, const Number& a, const Number& b)
    {
        const bool areIntegers = a.isInteger() && b.isInteger();
        if (isComparison(operation))
            return truth(areIntegers ? isRelation(operation, a.asInteger(), b.asInteger())
                                     : isRelation(operation, a.asReal(), b.asReal()));
        if (!isArithmetic(operation))
            return Number::ofInteger(onBits(operation, bits(a), bits(b)));
        if (areIntegers && !m_isReal && staysInteger(operation, b.asInteger()))
            return Number::ofInteger(arithmeticOfIntegers(operation, a.asInteger(), b.asInteger(), fault));
        return Number::ofReal(arithmeticOfReals(operation, a.asReal(), b.asReal(), fault));
    }

private:
    Number typed(const Number& number) const { return m_isReal ? Number::ofReal(number.asReal()) : number; }

    static bool staysInteger(Operation operation, std::int64_t right)
    {
        return operation != Operation::RoundToDigits && (operation != Operation::Power || right >= 0);
    }

    // Without the fraction.
    std::int64_t bits(const Number& number)
    {
        if (!m_isReal)
            return number.isInteger() ? number.asInteger() : bitsOf(number.asReal(), fault);
        const double real = number.asReal();
        const bool fits = real >= -2147483648.0 && real <= 2147483647.0;
        if (!fits)
            fail(fault, Fault::Kind::TooWide);
        return fits ? static_cast<std::int64_t>(real) : 0;
    }

    // In real arithmetic, what is shifted out of 32 bits is lost.
    std::int64_t onBits(Operation operation, std::int64_t a, std::int64_t b)
    {
        const bool shifts = operation == Operation::ShiftLeft || operation == Operation::ShiftRight;
        if (m_isReal && shifts && b > 31)
            fail(fault, Fault::Kind::ShiftCount, b);
        const std::int64_t result = operationOnBits(operation, a, b, fault);
        return m_isReal ? static_cast<std::int32_t>(result) : result;
    }

    const bool m_isReal;
    const std::function<Number(std::size_t)>& m_variable;
};

void throwIfAny(const Fault& fault)
{
    if (fault.kind != Fault::Kind::None)
        throw FormulaError{textOf(fault)};
}

} // namespace

NumberMachine::NumberMachine(std::string_view text, const Scope& scope, Arithmetic arithmetic)
    : m_arithmetic(arithmetic)
{
    Parsed parsed = parse(text, Dialect::Nodes, scope);
    throwIfAny(parsed.fault);
    m_program = std::move(parsed.program);
}

Number NumberMachine::evaluate(const std::function<Number(std::size_t)>& variable) const
{
    NumberRules rules(m_arithmetic == Arithmetic::Real, variable);
    const Number result = StackMachine<Number, NumberRules>(m_program, rules).run();
    if (!result.isInteger() && !std::isfinite(result.asReal()))
        fail(rules.fault, Fault::Kind::NotFinite);
    throwIfAny(rules.fault);
    return result;
}

} // namespace formula
