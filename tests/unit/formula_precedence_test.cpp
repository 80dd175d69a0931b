// Which of two neighbouring signs binds tighter, for every pair of them: a formula without parentheses is
// worked out as the one with the parentheses that the table of levels asks for.
#include "formula/DoubleMachine.h"
#include "formula/NumberMachine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace
{

using namespace formula;

using Signs = std::vector<std::string>;
using Evaluate = std::function<std::string(const std::string&)>;

std::string suiteValue(const std::string& text)
{
    const DoubleResult result = calculate(text);
    return result.fault.kind == Fault::Kind::None ? std::to_string(result.value + 0) : "error";
}

std::string nodesValue(const std::string& text)
{
    try {
        const Number value =
            NumberMachine(text, {}, NumberMachine::Arithmetic::Real).evaluate([](std::size_t) {
                return Number();
            });
        return std::to_string(value.asReal() + 0);
    } catch (const FormulaError&) {
        return "error";
    }
}

struct Precedence
{
    Evaluate evaluate;
    std::vector<Signs> levels; // loosest first
    Signs fromTheRight;        // of several equal ones, the last binds first
};

const Precedence suite = {suiteValue,
                          {{"||"},
                           {"&&"},
                           {"|"},
                           {"^"},
                           {"&"},
                           {"=", "<>"},
                           {"<", ">", "<=", ">="},
                           {"<<", ">>"},
                           {"+", "-"},
                           {"*", "/", "%"},
                           {"**"}},
                          {"**"}};

const Precedence nodes = {nodesValue,
                          {{"||", "&&", "=", "<>", "<", ">", "<=", ">="},
                           {"+", "-"},
                           {"*", "/", "%"},
                           {"&", "|", "^", "<<", ">>", "**"}},
                          {}};

// Either way of reading these gives the same numbers.
const std::set<std::string> sameEitherWay = {"+ +", "+ -", "* *",   "* /",   "& &",
                                             "| |", "^ ^", "|| ||", "&& &&", "|| **"};
const std::set<std::string> sameBeforeAnOperand = {"- <<", "- *", "- /", "- %", "~ ^", "~ >>"};

Signs signsOf(const Precedence& precedence)
{
    Signs all;
    for (const Signs& level : precedence.levels)
        all.insert(all.end(), level.begin(), level.end());
    return all;
}

std::size_t levelOf(const Precedence& precedence, const std::string& sign)
{
    const auto holds = [&](const Signs& level) {
        return std::find(level.begin(), level.end(), sign) != level.end();
    };
    const auto level = std::find_if(precedence.levels.begin(), precedence.levels.end(), holds);
    return static_cast<std::size_t>(level - precedence.levels.begin());
}

bool leftBindsFirst(const Precedence& precedence, const std::string& left, const std::string& right)
{
    const std::size_t level = levelOf(precedence, left);
    if (level != levelOf(precedence, right))
        return level > levelOf(precedence, right);
    return std::count(precedence.fromTheRight.begin(), precedence.fromTheRight.end(), left) == 0;
}

struct Readings
{
    std::string plain, asked, other;
};

// Compares the readings of formulas made from every triple of small numbers; how many tell the two apart.
std::size_t compare(const Precedence& precedence,
                    const std::function<Readings(std::array<std::string, 3>)>& readings)
{
    static const Signs numbers = {"0", "1", "2", "3", "5", "0.5"};
    std::size_t apart = 0;
    for (const std::string& a : numbers)
        for (const std::string& b : numbers)
            for (const std::string& c : numbers) {
                const Readings texts = readings({a, b, c});
                const std::string asked = precedence.evaluate(texts.asked);
                EXPECT_EQ(precedence.evaluate(texts.plain), asked) << texts.plain;
                apart += asked != precedence.evaluate(texts.other);
            }
    return apart;
}

void holdsEveryPair(const Precedence& precedence)
{
    for (const std::string& left : signsOf(precedence))
        for (const std::string& right : signsOf(precedence)) {
            const bool leftFirst = leftBindsFirst(precedence, left, right);
            const std::size_t apart = compare(precedence, [&](const auto& n) {
                const std::string byLeft = "(" + n[0] + left + n[1] + ")" + right + n[2];
                const std::string byRight = n[0] + left + "(" + n[1] + right + n[2] + ")";
                return Readings{n[0] + left + n[1] + right + n[2], leftFirst ? byLeft : byRight,
                                leftFirst ? byRight : byLeft};
            });
            const std::string pair = left + " " + right;
            EXPECT_EQ(apart == 0, sameEitherWay.count(pair) == 1) << pair;
        }
}

void holdsSigns(const Precedence& precedence)
{
    for (const std::string& sign : Signs{"-", "~"})
        for (const std::string& right : signsOf(precedence)) {
            const std::size_t apart = compare(precedence, [&](const auto& n) {
                const std::string tail = right + n[1];
                return Readings{sign + n[0] + tail, "(" + sign + n[0] + ")" + tail,
                                sign + "(" + n[0] + tail + ")"};
            });
            const std::string pair = sign + " " + right;
            EXPECT_EQ(apart == 0, sameBeforeAnOperand.count(pair) == 1) << pair;
        }
}

// Of what stands before a question mark.
Readings condition(const std::array<std::string, 3>& n, const std::string& sign)
{
    const std::string end = "?" + n[2] + ":7";
    return {n[0] + sign + n[1] + end, "(" + n[0] + sign + n[1] + ")" + end,
            n[0] + sign + "(" + n[1] + end + ")"};
}

} // namespace

TEST(SuitePrecedence, holdsForEveryPairOfSigns)
{
    holdsEveryPair(suite);
}

TEST(SuitePrecedence, signsBindTighterThanAll)
{
    holdsSigns(suite);
}

TEST(SuitePrecedence, aChoiceIsLooserThanAllAndChainsFromTheRight)
{
    for (const std::string& sign : signsOf(suite)) {
        EXPECT_GT(compare(suite,
                          [&](const auto& n) {
                              const std::string start = n[0] + "?" + n[1] + ":";
                              return Readings{start + n[2] + sign + "3", start + "(" + n[2] + sign + "3)",
                                              "(" + start + n[2] + ")" + sign + "3"};
                          }),
                  0u)
            << sign;
        EXPECT_GT(compare(suite, [&](const auto& n) { return condition(n, sign); }), 0u) << sign;
    }
    EXPECT_GT(compare(suite,
                      [](const auto& n) {
                          return Readings{n[0] + "?2:" + n[1] + "?4:" + n[2],
                                          n[0] + "?2:(" + n[1] + "?4:" + n[2] + ")",
                                          "(" + n[0] + "?2:" + n[1] + ")?4:" + n[2]};
                      }),
              0u);
}

TEST(NodesPrecedence, holdsForEveryPairOfSigns)
{
    holdsEveryPair(nodes);
}

TEST(NodesPrecedence, signsBindTighterThanAll)
{
    holdsSigns(nodes);
}

TEST(NodesPrecedence, aChoiceStandsWithTheLoosestAndGoesFromTheLeft)
{
    for (const std::string& sign : signsOf(nodes)) {
        const bool isLoosest = levelOf(nodes, sign) == 0;
        EXPECT_GT(compare(nodes,
                          [&](const auto& n) {
                              const std::string start = n[0] + "?" + n[1] + ":";
                              const std::string whole = "(" + start + n[2] + ")" + sign + "3";
                              const std::string last = start + "(" + n[2] + sign + "3)";
                              return Readings{start + n[2] + sign + "3", isLoosest ? whole : last,
                                              isLoosest ? last : whole};
                          }),
                  0u)
            << sign;
        EXPECT_GT(compare(nodes, [&](const auto& n) { return condition(n, sign); }), 0u) << sign;
    }
    EXPECT_GT(compare(nodes,
                      [](const auto& n) {
                          return Readings{n[0] + "?2:" + n[1] + "?4:" + n[2],
                                          "(" + n[0] + "?2:" + n[1] + ")?4:" + n[2],
                                          n[0] + "?2:(" + n[1] + "?4:" + n[2] + ")"};
                      }),
              0u);
}
