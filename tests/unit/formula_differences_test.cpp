// One list of formulas through both machines: equal, unless the table of differences says otherwise; and each
// of its rows differs as it says. The columns of the reference implementation are held by
// formula_reference_test.
#include "formula/Differences.h"
#include "formula/DoubleMachine.h"
#include "formula/NumberMachine.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace
{

using namespace formula;
using Arithmetic = NumberMachine::Arithmetic;

std::string shown(double x)
{
    if (x == std::trunc(x) && std::fabs(x) < 9223372036854775808.0)
        return std::to_string(static_cast<std::int64_t>(x));
    char buffer[40];
    return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, x).ptr);
}

std::string nodesComplaint(const std::string& text)
{
    try {
        NumberMachine(text, {}, Arithmetic::Real).evaluate([](std::size_t) { return Number(); });
        return {};
    } catch (const FormulaError& error) {
        return error.text;
    }
}

struct Results
{
    std::string suite;
    std::string realNodes;
    std::string integerNodes;
};

std::string nodesResult(const std::string& text, Arithmetic arithmetic)
{
    try {
        const Number number =
            NumberMachine(text, {}, arithmetic).evaluate([](std::size_t) { return Number(); });
        return number.isInteger() ? std::to_string(number.asInteger()) : shown(number.asReal());
    } catch (const FormulaError&) {
        return "error";
    }
}

Results results(const std::string& text)
{
    const DoubleResult suite = calculate(text);
    return {suite.fault.kind == Fault::Kind::None ? shown(suite.value) : "error",
            nodesResult(text, Arithmetic::Real), nodesResult(text, Arithmetic::Integer)};
}

// Of the calculator's table, and those where the two once differed without need.
std::vector<std::string> formulas()
{
    std::vector<std::string> list = {
        "PI()",
        "E()+1",
        "1e-400",
        "5.6 & 7",
        "~1.7",
        "~-1.7",
        "-2.6 | 0",
        "1<<2.9",
        "1.9<<2",
        "1\v+\f1",
        "ROUND(5.5,400)",
        "ROUND(2.347, 2.9)",
        "(5&7)/(1=1)*0.5",
        "18446744073709549568 & 4096",
        "9223372036854775808 | 0",
        "0x8000000000000000 % -1",
        "10 ** 18",
        "2 ** -1",
        "2**3**2",
        "-2**2",
        "1 ? 2 : 0 ? 4 : 5",
        "1=1.0",
        "0*-1",
        "0 ? LN(0) : 1",
    };
    std::ifstream file(IE_TEST_DATA "/formulas.tsv");
    for (std::string line; std::getline(file, line);) {
        const std::size_t end = line.find('\t');
        if (line.rfind("# ", 0) != 0 && end != std::string::npos)
            list.push_back(line.substr(0, end));
    }
    return list;
}

const Difference* told(const std::string& formula)
{
    for (const Difference& difference : differences)
        if (difference.formula == formula)
            return &difference;
    return nullptr;
}

} // namespace

TEST(FormulaDifferences, formulasThatTheTableDoesNotNameAreWorkedOutAlike)
{
    std::size_t compared = 0;
    for (const std::string& formula : formulas()) {
        if (told(formula))
            continue;
        const Results got = results(formula);
        EXPECT_EQ(got.suite, got.realNodes) << formula;
        EXPECT_EQ(got.suite, got.integerNodes) << formula;
        ++compared;
    }
    EXPECT_GT(compared, 500u);
}

TEST(FormulaDifferences, eachRowDiffersAsItSays)
{
    for (const Difference& row : differences) {
        const Results got = results(std::string(row.formula));
        EXPECT_EQ(got.suite, row.suite) << row.formula;
        EXPECT_EQ(got.realNodes, row.realNodes) << row.formula;
        EXPECT_EQ(got.integerNodes, row.integerNodes) << row.formula;
        EXPECT_FALSE(row.suite == row.realNodes && row.suite == row.integerNodes) << row.formula;
    }
}

TEST(FormulaDifferences, eachReasonHasAFormula)
{
    for (const ReasonText& text : reasonTexts) {
        EXPECT_FALSE(text.why.empty());
        std::size_t rows = 0;
        for (const Difference& row : differences)
            rows += row.reason == text.reason;
        EXPECT_GT(rows, 0u) << text.why;
    }
}

TEST(FormulaDifferences, nodesKeepTheirOwnWhereTheReferenceIsWorse)
{
    for (const ReferenceDifference& row : referenceDifferences) {
        const Results got = results(std::string(row.formula));
        EXPECT_EQ(got.realNodes, row.real) << row.formula;
        EXPECT_EQ(got.integerNodes, row.integer) << row.formula;
        EXPECT_FALSE(row.real == row.referenceReal && row.integer == row.referenceInteger) << row.formula;
    }
    for (const ReferenceReasonText& text : referenceReasonTexts) {
        EXPECT_FALSE(text.why.empty());
        std::size_t rows = 0;
        for (const ReferenceDifference& row : referenceDifferences)
            rows += row.reason == text.reason;
        EXPECT_GT(rows, 0u) << text.why;
    }
}

TEST(FormulaDifferences, onlyTheNodesBoundWhatIsPendingAndHowLongAFormulaIs)
{
    const auto repeated = [](const std::string& part, int count) {
        std::string text;
        for (int i = 0; i < count; ++i)
            text += part;
        return text;
    };
    EXPECT_EQ(results(repeated("-", 2000) + "1").realNodes, "1");
    EXPECT_EQ(results(repeated("-", 2001) + "1").realNodes, "error");
    EXPECT_EQ(results(repeated("-", 2001) + "1").suite, "-1");
    EXPECT_EQ(results("1" + repeated("+1", 49999)).realNodes, "50000");
    EXPECT_EQ(results("1" + repeated("+1", 50000)).realNodes, "error");
    EXPECT_EQ(results("1" + repeated("+1", 50000)).suite, "50001");
    EXPECT_EQ(results(repeated("(", 10000) + "1" + repeated(")", 10000)).suite, "1");
    EXPECT_EQ(results(repeated("(", 10001) + "1" + repeated(")", 10001)).suite, "error");
}

// In parentheses, since the dialects' precedence is not the same. Small numbers: nothing grows beyond the 53
// bits that a double keeps.
std::string randomFormula(std::mt19937& random, int depth)
{
    static const char* const literals[] = {"0", "1", "2", "7", "0xFF", "2.5", "0.25", "1e2", "PI"};
    static const char* const signs[] = {"+",  "-", "*",  "/", "&",  "|",  "^",  ">>", "=",
                                        "<>", "<", "<=", ">", ">=", "&&", "||", "+",  "-"};
    static const char* const functions[] = {"ABS(", "SGN(", "NEG(", "SQRT(", "TRUNC(", "ROUND(", "SIN(", "("};
    if (depth == 0)
        return literals[random() % std::size(literals)];
    const std::string left = randomFormula(random, depth - 1);
    switch (random() % 8) {
    case 0:
        return functions[random() % std::size(functions)] + left + ")";
    case 1:
        return "(~" + left + ")";
    case 2:
        return "(-" + left + ")";
    case 3:
        return "(" + left + "?" + randomFormula(random, depth - 1) + ":" + randomFormula(random, depth - 1) +
               ")";
    default:
        return "(" + left + signs[random() % std::size(signs)] + randomFormula(random, depth - 1) + ")";
    }
}

TEST(FormulaDifferences, realNodesFollowTheSuiteOverRandomFormulas)
{
    std::mt19937 random(11);
    int values = 0;
    for (int i = 0; i < 30000; ++i) {
        const std::string formula = randomFormula(random, 1 + i % 4);
        const Results got = results(formula);
        const std::string complaint = got.realNodes == "error" ? nodesComplaint(formula) : "";
        const bool isWide =
            complaint == "an operand does not fit 32 bits" || complaint.rfind("a shift by", 0) == 0;
        if (got.suite == "error" || isWide) // the nodes may pass infinity, and the suite has 64 bits
            continue;
        ++values;
        EXPECT_EQ(got.suite, got.realNodes) << formula;
    }
    EXPECT_GT(values, 15000);
}
