// Depth, length, small stacks, threads, and what a failure leaves behind.
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <pthread.h>

#include <string>
#include <thread>
#include <vector>

using namespace VELAInterface;

namespace
{

struct Outcome
{
    bool ok = false;
    double value = 0;
};

Outcome compute(const std::string& formula)
{
    Outcome outcome;
    outcome.value = Compute(formula.c_str(), outcome.ok);
    return outcome;
}

std::string repeat(const std::string& text, int times)
{
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

std::string nested(int depth)
{
    return repeat("(", depth) + "1" + repeat("+1)", depth);
}

std::string errorOf(const std::string& formula)
{
    EXPECT_FALSE(compute(formula).ok) << formula;
    return GetCalculatorErro().toStdString();
}

template <typename Body>
void runOnStackOf(size_t bytes, Body body)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
    pthread_t thread;
    const auto start = [](void* argument) -> void* {
        (*static_cast<Body*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &body), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// Each is a formula of about `length` characters that keeps as much pending as it can.
std::vector<std::string> longFormulas(int length)
{
    return {
        "0" + repeat("+1", length / 2),   repeat("-", length) + "1",
        "1" + repeat("**1", length / 3),  repeat("1?", length / 4) + "7" + repeat(":1", length / 4),
        "0" + repeat("?1:0", length / 4), "1" + repeat("&&1", length / 3),
        "0." + repeat("1", length),       repeat(" ", length) + "1",
        repeat("~", length) + "1",
    };
}

} // namespace

TEST(CalculatorLimits, evaluatesAThousandAndTenThousandNestedParentheses)
{
    for (const int depth : {1000, 10000}) {
        const Outcome outcome = compute(nested(depth));
        EXPECT_TRUE(outcome.ok);
        EXPECT_EQ(outcome.value, 1 + depth);
    }
}

TEST(CalculatorLimits, refusesDeeperNesting)
{
    for (const int depth : {10001, 100000, 1000000}) {
        EXPECT_EQ(errorOf(nested(depth)), "parentheses are nested too deeply");
        EXPECT_EQ(errorOf(repeat("ABS(", depth) + "1" + repeat(")", depth)),
                  "parentheses are nested too deeply");
        EXPECT_EQ(errorOf(repeat("(", depth)), "parentheses are nested too deeply");
    }
}

TEST(CalculatorLimits, depthCountsWhatIsOpenNotWhatWasOpened)
{
    EXPECT_EQ(compute("0" + repeat("+(1)", 20000)).value, 20000);
}

TEST(CalculatorLimits, evaluatesAHundredThousandCharacters)
{
    const std::vector<double> expected = {50000, 1, 1, 7, 0, 1, 0.1111111111111111, 1, 1};
    const std::vector<std::string> formulas = longFormulas(100000);
    ASSERT_EQ(formulas.size(), expected.size());
    for (size_t i = 0; i < formulas.size(); ++i) {
        const Outcome outcome = compute(formulas[i]);
        EXPECT_TRUE(outcome.ok) << i;
        EXPECT_DOUBLE_EQ(outcome.value, expected[i]) << i;
    }
}

TEST(CalculatorLimits, needsNoMoreThanASmallStack)
{
    runOnStackOf(128 * 1024, [] {
        EXPECT_EQ(compute(nested(10000)).value, 10001);
        EXPECT_FALSE(compute(nested(1000000)).ok);
        for (const std::string& formula : longFormulas(500000))
            EXPECT_TRUE(compute(formula).ok);
    });
}

TEST(CalculatorLimits, threadsDoNotDisturbEachOther)
{
    std::vector<std::thread> threads;
    for (int t = 1; t <= 4; ++t) {
        threads.emplace_back([t] {
            const std::string good = "(" + std::to_string(t) + "?" + std::to_string(t) + "**2:0)*10";
            for (int i = 0; i < 2000; ++i) {
                EXPECT_EQ(compute(good).value, t * t * 10);
                EXPECT_FALSE(compute("NAME" + std::to_string(t)).ok);
                EXPECT_EQ(GetCalculatorErro().left(18), QStringLiteral("unknown name 'NAME"));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(CalculatorFailure, givesZeroAndNotOk)
{
    bool ok = true;
    EXPECT_EQ(Compute("1/0", ok), 0);
    EXPECT_FALSE(ok);
    ok = true;
    EXPECT_EQ(Compute(nullptr, ok), 0);
    EXPECT_FALSE(ok);
    EXPECT_EQ(GetCalculatorErro(), QStringLiteral("the formula is empty"));
}

TEST(CalculatorFailure, isKeptThroughLaterSuccess)
{
    EXPECT_FALSE(compute("5+WIDTH").ok);
    EXPECT_EQ(compute("1+1").value, 2);
    EXPECT_EQ(GetCalculatorErro(), QStringLiteral("unknown name 'WIDTH' at character 3"));
}

TEST(CalculatorFailure, isSeenByOtherThreads)
{
    std::thread([] { EXPECT_FALSE(compute("1/0").ok); }).join();
    EXPECT_EQ(GetCalculatorErro(), QStringLiteral("division by zero"));
}

TEST(CalculatorFailure, tellsWhatIsWrong)
{
    EXPECT_EQ(errorOf(""), "the formula is empty");
    EXPECT_EQ(errorOf("1 2"), "an operator is missing at character 3");
    EXPECT_EQ(errorOf("1+*2"), "a value is missing at character 3");
    EXPECT_EQ(errorOf("1+"), "a value is missing at the end");
    EXPECT_EQ(errorOf("(1"), "')' is missing");
    EXPECT_EQ(errorOf("1)"), "')' without '('");
    EXPECT_EQ(errorOf("1?2"), "':' is missing behind '?'");
    EXPECT_EQ(errorOf("1:2"), "':' without '?'");
    EXPECT_EQ(errorOf("1.2.3"), "malformed number at character 1");
    EXPECT_EQ(errorOf("1e999"), "number too large at character 1");
    EXPECT_EQ(errorOf("ABS 5"), "'(' is missing behind ABS at character 5");
    EXPECT_EQ(errorOf("PI(1)"), "PI takes no argument at character 4");
    EXPECT_EQ(errorOf("ABS(1,2)"), "',' where no second argument is known");
    EXPECT_EQ(errorOf("5%0"), "division by zero");
    EXPECT_EQ(errorOf("1<<64"), "the shift count is not in 0..63");
    EXPECT_EQ(errorOf("1e20&1"), "a number does not fit into 64 bits");
    EXPECT_EQ(errorOf("LN(0)"), "the value is not a finite number");
    EXPECT_EQ(errorOf(repeat("X", 1000)), "unknown name '" + repeat("X", 40) + "' at character 1");
}
