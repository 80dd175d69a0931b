#include "formula/DoubleMachine.h"

#include "formula/Arithmetic.h"
#include "formula/Grammar.h"
#include "formula/StackMachine.h"

#include <cmath>

namespace formula
{

namespace
{

struct DoubleRules
{
    Fault fault = {};

    static double integer(std::int64_t value) { return static_cast<double>(value); }
    static double pattern(std::int64_t value) { return integer(value); }
    static double real(double value) { return value; }
    static double variable(std::size_t) { return 0; } // the dialect has none
    static bool isTrue(double x) { return x != 0; }
    static double truth(bool value) { return value ? 1 : 0; }

    double one(Operation operation, double x)
    {
        if (operation == Operation::Complement)
            return static_cast<double>(~bitsOf(x, fault));
        return finite(functionOfReal(operation, x));
    }

    double two(Operation operation, double a, double b)
    {
        if (isComparison(operation))
            return truth(isRelation(operation, a, b));
        if (isArithmetic(operation) && operation != Operation::Remainder)
            return finite(arithmeticOfReals(operation, a, b, fault));
        const std::int64_t left = bitsOf(a, fault);
        const std::int64_t right = bitsOf(b, fault);
        return static_cast<double>(operation == Operation::Remainder
                                       ? remainder(left, right, fault)
                                       : operationOnBits(operation, left, right, fault));
    }

    double finite(double x)
    {
        if (!std::isfinite(x))
            fail(fault, Fault::Kind::NotFinite);
        return x;
    }
};

} // namespace

DoubleResult calculate(std::string_view formula)
{
    const Parsed parsed = parse(formula, Dialect::Suite);
    if (parsed.fault.kind != Fault::Kind::None)
        return {0, parsed.fault};
    DoubleRules rules;
    const double value = StackMachine<double, DoubleRules>(parsed.program, rules).run();
    const bool failed = rules.fault.kind != Fault::Kind::None;
    return {failed ? 0 : value, rules.fault};
}

} // namespace formula
