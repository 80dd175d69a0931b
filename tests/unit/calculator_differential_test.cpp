// The calculator against the evaluator of Aravis, another reading of the same grammar, on random formulas.
//
// The formulas leave out what that evaluator is known to do otherwise: a fraction below 1 is false there, a
// remainder by 0 ends the process, shift counts are taken by the machine's leave, "~" binds more loosely than
// sums, ".5" is no number, literals from 2^63 - 1 on turn negative, deep nesting overflows the stack.
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <arv.h>

#include <cmath>
#include <random>
#include <string>

using namespace VELAInterface;

namespace
{

class FormulaMaker
{
public:
    explicit FormulaMaker(unsigned seed) : m_random(seed) {}

    std::string number(int depth)
    {
        if (depth == 0)
            return literal();
        switch (m_random() % 10) {
        case 0:
            return "(" + number(depth - 1) + ")";
        case 1:
            return pick({"-(", "+(", "- -("}) + number(depth - 1) + ")";
        case 2:
            return "(~(" + number(depth - 1) + "))";
        case 3:
            return function() + number(depth - 1) + ")";
        case 4:
            return "(" + truth(depth - 1) + " ? " + number(depth - 1) + ":" + number(depth - 1) + ")";
        case 5:
            return number(depth - 1) +
                   pick({"%3", "%7", "%-4", " << 3", ">>2", "<<0", ">>31", "/3", "/ -2.5", "/0x10"});
        case 6:
            return "(" + truth(depth - 1) + ")";
        default:
            return number(depth - 1) + arithmetic() + number(depth - 1);
        }
    }

private:
    std::string literal()
    {
        return pick({"0",     "1",     "2",    "3",   "7",    "10",          "255",   "0x1F", "0x80", "1.5",
                     "2.25",  "12.75", "5.",   "1e2", "1E-1", "1.23457e+06", "25e-1", "-1",   "-4",   "-2.5",
                     "-0x10", "--5",   "(-3)", "PI",  "E"});
    }

    std::string function()
    {
        return pick({"ABS(", "SGN(", "NEG(", "ATAN(", "COS(", "SIN(", "TAN(", "ASIN(", "ACOS(", "EXP(", "LN(",
                     "LG(", "SQRT(", "TRUNC(", "FLOOR(", "CEIL("});
    }

    std::string arithmetic()
    {
        return pick(
            {"+", "-", "*", "**", "&", "|", "^", "=", "<>", "<", ">", "<=", ">=", " + ", " - ", "\t*"});
    }

    std::string truth(int depth)
    {
        const std::string left =
            "(" + number(depth > 0 ? depth - 1 : 0) + pick({"=", "<>", "<", ">", "<=", ">="});
        const std::string right = number(depth > 0 ? depth - 1 : 0) + ")";
        return left + right + (depth > 1 ? pick({"&&", " || "}) + truth(depth - 1) : std::string());
    }

    std::string pick(std::initializer_list<const char*> choices)
    {
        return choices.begin()[m_random() % choices.size()];
    }

    std::mt19937 m_random;
};

struct Outcome
{
    bool ok = false;
    double value = 0;
};

Outcome byAravis(const std::string& formula)
{
    ArvEvaluator* evaluator = arv_evaluator_new(formula.c_str());
    GError* error = nullptr;
    Outcome outcome;
    outcome.value = arv_evaluator_evaluate_as_double(evaluator, &error);
    outcome.ok = !error && std::isfinite(outcome.value);
    g_clear_error(&error);
    g_object_unref(evaluator);
    return outcome;
}

bool isNear(double a, double b)
{
    return a == b || std::fabs(a - b) <= 1e-12 * std::fabs(a);
}

} // namespace

TEST(CalculatorDifferential, agreesWithAnotherEvaluator)
{
    FormulaMaker maker(4711);
    int values = 0;
    constexpr int kFormulas = 30000;
    for (int i = 0; i < kFormulas; ++i) {
        const std::string formula = maker.number(1 + i % 4);
        Outcome mine;
        mine.value = Compute(formula.c_str(), mine.ok);
        const Outcome other = byAravis(formula);
        if (!mine.ok) // a value that is not finite, or a number too large for bits, on the way to a finite
                      // result
            continue;
        ++values;
        EXPECT_TRUE(other.ok && isNear(mine.value, other.value))
            << formula << " is " << mine.value << ", and there " << other.value
            << (other.ok ? "" : " (failed)");
    }
    EXPECT_GT(values, kFormulas * 3 / 4);
}
