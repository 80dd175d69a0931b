// Texts that nobody wrote: the calculator answers each, and answers the same each time.
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

using namespace VELAInterface;

namespace
{

struct Tally
{
    int values = 0;
    int failures = 0;
};

void tryText(const std::string& text, Tally& tally)
{
    bool ok = false;
    const double value = Compute(text.c_str(), ok);
    EXPECT_TRUE(std::isfinite(value)) << text;
    if (!ok) {
        EXPECT_EQ(value, 0) << text;
        EXPECT_FALSE(GetCalculatorErro().isEmpty()) << text;
    }
    bool again = !ok;
    EXPECT_EQ(Compute(text.c_str(), again), value) << text;
    EXPECT_EQ(again, ok) << text;
    ++(ok ? tally.values : tally.failures);
}

const char* const kTokens[] = {"1",     "0",  "2.5", "-3", "0xFF", "1e300", "0x8000000000000000",
                               "64",    "+",  "-",   "*",  "/",    "%",     "**",
                               "&",     "|",  "^",   "~",  "<<",   ">>",    "&&",
                               "||",    "=",  "<>",  "<",  ">",    "<=",    ">=",
                               "?",     ":",  "(",   ")",  ",",    "ABS(",  "ROUND(",
                               "SQRT(", "PI", "E",   "X",  " "};

} // namespace

TEST(CalculatorStress, randomBytes)
{
    std::mt19937 random(20);
    Tally tally;
    for (int i = 0; i < 100000; ++i) {
        std::string text(random() % 40, ' ');
        for (char& c : text)
            c = static_cast<char>(random());
        tryText(text, tally);
    }
    EXPECT_GT(tally.failures, 50000);
}

TEST(CalculatorStress, randomTokens)
{
    std::mt19937 random(21);
    Tally tally;
    for (int i = 0; i < 200000; ++i) {
        std::string text;
        for (unsigned n = random() % 12; n > 0; --n)
            text += kTokens[random() % std::size(kTokens)];
        tryText(text, tally);
    }
    EXPECT_GT(tally.values, 5000);
    EXPECT_GT(tally.failures, 5000);
}

TEST(CalculatorStress, damagedFormulas)
{
    const std::string whole =
        "((0x1080001 & 0x00FF0000) >> 16) = 8 ? ROUND(-1.5e+2 / 7, 2) : ABS(3**2 - 10) || ~0 && 5%3";
    std::mt19937 random(22);
    Tally tally;
    for (int i = 0; i < 100000; ++i) {
        std::string text = whole;
        for (unsigned n = random() % 3; n > 0; --n) {
            const size_t at = random() % text.size();
            if (random() % 2 == 0)
                text.erase(at, 1 + random() % 4);
            else
                text[at] = whole[random() % whole.size()];
        }
        tryText(text, tally);
    }
    EXPECT_GT(tally.values, 5000);
    EXPECT_GT(tally.failures, 5000);
}
