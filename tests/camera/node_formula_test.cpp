// Formulas of the nodes: exact results and exact complaints, and agreement with another evaluator where that
// one is right (it fails on a division by zero in a branch that is not taken, and takes no functions in
// integer formulas).
#include "formula/NumberMachine.h"

#include <arv.h>
#include <gtest/gtest.h>

#include <random>

namespace
{

using Formula = formula::NumberMachine;
using Arithmetic = Formula::Arithmetic;
using formula::FormulaError;
using formula::Number;
using formula::Scope;

const Scope scope = {{"A", "B", "EXP", "Gain.Max"}, {{"C", "-3"}, {"S", "A + C"}, {"LOOP", "LOOP + 1"}}};

Number variable(size_t index)
{
    const int64_t values[] = {7, 2, 5, 40};
    return Number::ofInteger(values[index]);
}

std::string result(const std::string& text, Arithmetic arithmetic)
{
    try {
        const Number number = Formula(text, scope, arithmetic).evaluate(variable);
        if (number.isInteger())
            return std::to_string(number.asInteger());
        char buffer[40];
        std::snprintf(buffer, sizeof buffer, "%.12g r", number.asReal());
        return buffer;
    } catch (const FormulaError& error) {
        return error.text;
    }
}

std::string integer(const std::string& text)
{
    return result(text, Arithmetic::Integer);
}

std::string real(const std::string& text)
{
    return result(text, Arithmetic::Real);
}

TEST(NodeFormula, calculatesWithIntegers)
{
    const std::vector<std::pair<const char*, const char*>> table = {
        {"1 + 2 * 3", "7"},
        {"(1 + 2) * 3", "9"},
        {"5/2", "2"},
        {"-7/2", "-3"},
        {"-7 % 3", "-1"},
        {"2 ** 10", "1024"},
        {"2**3**2", "64"},
        {"-2**2", "4"},
        {"5--5", "10"},
        {"~1", "-2"},
        {"1 << 3 + 1", "9"},
        {"0xF0 >> 4", "15"},
        {"-1 >> 1", "-1"},
        {"1 << 63 >> 63", "-1"},
        {"6 & 3 = 3", "0"},
        {"3 & 6 = 2", "1"},
        {"6 | 1 ^ 3 & 2", "0"},
        {"1 <> 2", "1"},
        {"2 = 2", "1"},
        {"2 < 2", "0"},
        {"2 <= 2", "1"},
        {"3 > 2 && 2 >= 3 || 1", "1"},
        {"3 > 2 && 2 > 1", "0"},
        {"1 ? 2 : 3 ? 4 : 5", "4"},
        {"0 ? 2 : 0 ? 4 : 5", "5"},
        {"A - B", "5"},
        {"EXP * 2", "10"},
        {"EXP(0)", "1 r"},
        {"Gain.Max + 1", "41"},
        {"abs(0-3) + Neg(2)", "1"},
        {"S * 2", "8"}, // a named part is one operand
        {"A-C", "10"},
        {"ABS(0-3) + SGN(-8) + NEG(2)", "0"},
        {"9007199254740993 + 0", "9007199254740993"}, // beyond 53 bits
        {"0xFFFFFFFFFFFFFFFF", "-1"},
        {"0x7FFFFFFFFFFFFFFF", "9223372036854775807"},
        {" 1\t+\r\n1 ", "2"},
        {"7.5 * 2", "15 r"},
        {"2 ** -1", "0.5 r"},
    };
    for (const auto& [text, expected] : table)
        EXPECT_EQ(integer(text), expected) << text;
}

TEST(NodeFormula, calculatesWithReals)
{
    const std::vector<std::pair<const char*, const char*>> table = {
        {"5/2", "2.5 r"},           {"A/B", "3.5 r"},
        {".5 + 1.", "1.5 r"},       {"1e3 + 1.5E-1", "1000.15 r"},
        {"2*E", "5.43656365692 r"}, {"SIN(0)", "0 r"},
        {"COS(0)", "1 r"},          {"TAN(0)", "0 r"},
        {"ASIN(1)*2 - PI", "0 r"},  {"ACOS(1)", "0 r"},
        {"ATAN(0)", "0 r"},         {"LN(E)", "1 r"},
        {"LG(1000)", "3 r"},        {"SQRT(16)", "4 r"},
        {"TRUNC(-2.7)", "-2 r"},    {"FLOOR(-2.2)", "-3 r"},
        {"CEIL(2.2)", "3 r"},       {"ROUND(2.5)", "3 r"},
        {"ROUND(-2.5)", "-3 r"},    {"ROUND(2.347, 2)", "2.35 r"},
        {"NEG(2.5)", "-2.5 r"},     {"ABS(-2.5)", "2.5 r"},
        {"7.5 % 2", "1.5 r"},       {"5 & 6", "4"},
        {"1 = 1.0", "1"},           {"pi - PI + sin(0)", "0 r"},
    };
    for (const auto& [text, expected] : table)
        EXPECT_EQ(real(text), expected) << text;
}

TEST(NodeFormula, cutsWhatBitsWorkOnTo32InRealFormulas)
{
    const std::vector<std::pair<const char*, const char*>> table = {
        {"(0/1.024 + 0.5) & 0xFFFF", "0"},
        {"-0.5 | 0", "0"},
        {"~1.7", "-2"},
        {"1 << 2.9", "4"},
        {"(65000 << 16) >> 16", "-536"},
        {"1 << 31", "-2147483648"},
        {"2147483647 ^ -1", "-2147483648"},
        {"-2147483648 | 0", "-2147483648"},
        {"2147483648 | 0", "an operand does not fit 32 bits"},
        {"2147483647.5 | 0", "an operand does not fit 32 bits"},
        {"-2147483648.5 | 0", "an operand does not fit 32 bits"},
        {"1 << 32", "a shift by 32 bits"},
        {"1 >> -1", "a shift by -1 bits"},
        {"0xFFFFFFFF", "-1 r"},
        {"0x80000000 >> 31", "-1"},
        {"0x7FFFFFFF", "2147483647 r"},
        {"0x100000000", "4294967296 r"},
    };
    for (const auto& [text, expected] : table)
        EXPECT_EQ(real(text), expected) << text;
    EXPECT_EQ(integer("(65000 << 16) >> 16"), "65000"); // integer nodes keep 64 bits
}

TEST(NodeFormula, evaluatesOnlyWhatItNeeds)
{
    EXPECT_EQ(integer("1 ? 7 : 1/0"), "7");
    EXPECT_EQ(integer("0 ? 1/0 : 7"), "7");
    EXPECT_EQ(integer("0 && 1/0"), "0");
    EXPECT_EQ(integer("1 || 1/0"), "1");
    std::vector<size_t> asked;
    const Formula knife("A > 5 ? A : B", scope, Arithmetic::Integer);
    knife.evaluate([&](size_t index) {
        asked.push_back(index);
        return variable(index);
    });
    EXPECT_EQ(asked, (std::vector<size_t>{0, 0}));
}

TEST(NodeFormula, complainsInsteadOfGuessing)
{
    const std::vector<std::pair<const char*, const char*>> table = {
        {"", "an operand is missing"},
        {"1 +", "an operand is missing"},
        {"(1", "\")\" is missing"},
        {"1)", "\")\" is not expected"},
        {"1 2", "\"2\" is not expected"},
        {"1 ? 2", "\":\" is missing"},
        {"1 == 1", "\"=\" is not expected"},
        {"!1", "\"!\" is not expected"},
        {"0x", "a number has no digits"},
        {"0x10000000000000000", "a number does not fit 64 bits"},
        {".", "\".\" is no number"},
        {"X", "\"X\" is unknown"},
        {"SIN 1", "\"SIN\" is unknown"},
        {"SIN(1, 2)", "\")\" is missing"},
        {"LOOP", "it is nested too deeply"},
        {"1/0", "a division by zero"},
        {"1 % 0", "a division by zero"},
        {"1 << 64", "a shift by 64 bits"},
        {"1 << -1", "a shift by -1 bits"},
        {"0x7FFFFFFFFFFFFFFF + 1", "a result does not fit 64 bits"},
        {"0x4000000000000000 * 2", "a result does not fit 64 bits"},
        {"0x8000000000000000 / -1", "a result does not fit 64 bits"},
        {"-0x8000000000000000", "a result does not fit 64 bits"},
        {"10 ** 19", "a result does not fit 64 bits"},
        {"1e300 & 1", "a result does not fit 64 bits"},
    };
    for (const auto& [text, expected] : table)
        EXPECT_EQ(integer(text), expected) << text;
    EXPECT_EQ(real("1/0"), "a division by zero");
    EXPECT_EQ(real("SQRT(-1)"), "the result is no number");
    EXPECT_EQ(real("LN(0)"), "the result is no number");
    EXPECT_EQ(real("10 ** 400"), "the result is no number");
}

TEST(NodeFormula, survivesNestingAndLength)
{
    const auto repeated = [](const std::string& part, size_t count) {
        std::string text;
        for (size_t i = 0; i < count; ++i)
            text += part;
        return text;
    };
    EXPECT_EQ(integer(repeated("(", 300) + "7" + repeated(")", 300)), "7");
    EXPECT_EQ(integer(repeated("0?1:(", 300) + "7" + repeated(")", 300)), "7");
    EXPECT_EQ(integer("1" + repeated("+1", 1000)), "1001");
    EXPECT_EQ(integer(repeated("(", 100000) + "7" + repeated(")", 100000)), "it is nested too deeply");
    EXPECT_EQ(integer(repeated("-", 100000) + "7"), "it is nested too deeply");
    EXPECT_EQ(integer("1" + repeated("+1", 100000)), "it is too long");
    EXPECT_EQ(integer("1" + repeated("**1", 100000)), "it is too long");
    EXPECT_EQ(integer(repeated("1?1:", 100000) + "7"), "it is too long");
    Scope doubling; // 2^60 copies of the first part
    doubling.expressions["E0"] = "1";
    for (int i = 1; i <= 60; ++i)
        doubling.expressions["E" + std::to_string(i)] =
            "E" + std::to_string(i - 1) + "+E" + std::to_string(i - 1);
    EXPECT_THROW(Formula("E60", doubling, Arithmetic::Integer), FormulaError);
}

// Expressions of small numbers, where the other evaluator has none of its limits; in parentheses, since its
// precedence is C's.
std::string randomExpression(std::mt19937& random, int depth)
{
    const auto pick = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    if (depth == 0 || pick(5) == 0)
        return pick(4) == 0 ? std::string("A") : std::to_string(1 + pick(9));
    static const char* const signs[] = {"+", "-",  "*", "/",  "%", "&",  "|",  "^",
                                        "=", "<>", "<", "<=", ">", ">=", "&&", "||"};
    const std::string left = randomExpression(random, depth - 1);
    const std::string right = randomExpression(random, depth - 1);
    switch (pick(8)) {
    case 0:
        return "((" + left + ") ? (" + right + ") : (" + randomExpression(random, depth - 1) + "))";
    case 1:
        return "(-(" + left + "))";
    default:
        return "(" + left + " " + signs[pick(16)] + " " + right + ")";
    }
}

TEST(NodeFormula, agreesWithAnotherEvaluator)
{
    std::mt19937 random(20240501);
    unsigned compared = 0;
    for (int round = 0; round < 20000; ++round) {
        const std::string text = randomExpression(random, 3);
        ArvEvaluator* const other = arv_evaluator_new(text.c_str());
        arv_evaluator_set_int64_variable(other, "A", 7);
        GError* failure = nullptr;
        const gint64 expected = arv_evaluator_evaluate_as_int64(other, &failure);
        if (!failure) {
            EXPECT_EQ(integer(text), std::to_string(expected)) << text;
            ++compared;
        }
        g_clear_error(&failure);
        g_object_unref(other);
    }
    EXPECT_GT(compared, 15000u);
}

} // namespace
