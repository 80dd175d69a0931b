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
    static double literal(const Number& number) { return number.asReal(); }
    static double variable(std::size_t) { return 0; } // the dialect has none
    static bool isTrue(double x) { return x != 0; }
    static double truth(bool value) { return value ? 1 : 0; }

    static double one(Operation operation, double x)
    {
        if (operation == Operation::Complement)
            return static_cast<double>(~bitsOf(x));
        return finite(functionOfReal(operation, x));
    }

    static double two(Operation operation, double a, double b)
    {
        if (isComparison(operation))
            return truth(isRelation(operation, a, b));
        if (isArithmetic(operation) && operation != Operation::Remainder)
            return finite(arithmeticOfReals(operation, a, b));
        const std::int64_t left = bitsOf(a);
        const std::int64_t right = bitsOf(b);
        return static_cast<double>(operation == Operation::Remainder
                                       ? remainder(left, right)
                                       : operationOnBits(operation, left, right));
    }

    static double finite(double x)
    {
        if (!std::isfinite(x))
            fail(Fault::Kind::NotFinite);
        return x;
    }
};

} // namespace

DoubleResult calculate(std::string_view formula)
{
    try {
        const Program program = parse(formula, Dialect::Suite);
        DoubleRules rules;
        return {StackMachine<double, DoubleRules>(program, rules).run(), {}};
    } catch (const Fault& fault) {
        return {0, fault};
    }
}

} // namespace formula
