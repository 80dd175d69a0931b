// Where the two machines have to differ, how, and why. Whatever is not told here, both work out alike; a test
// runs one list of formulas through both and holds each row of this table.
//
// What no formula of numbers can show: only nodes have variables and named parts, so only their formulas may
// grow beyond their text and are bounded in signs pending and in steps (Grammar.h); and each words a fault
// for its own readers, since log lines of the jobs and messages of the camera library are looked for in the
// field.
#pragma once

#include <string_view>

namespace formula
{

enum class Reason
{
    WholeQuotients,
    ExactIntegers,
    IntegersEnd,
    RemaindersOfReals,
    InfiniteOnTheWay
};

struct ReasonText
{
    Reason reason;
    std::string_view why;
};

constexpr ReasonText reasonTexts[] = {
    {Reason::WholeQuotients,
     "The standard's integer nodes divide whole numbers; Compute knows doubles only and keeps the fraction."},
    {Reason::ExactIntegers,
     "Registers have 64 bits, and an address or a mask must not lose one; a double keeps "
     "53, and Compute promises a double."},
    {Reason::IntegersEnd,
     "A node's integer that does not fit its 64 bits is an error and never another number; "
     "a double goes on to 1.8e308."},
    {Reason::RemaindersOfReals, "Compute's % is one of the operators on whole numbers; a node's formula over "
                                "reals keeps the fraction, as its other arithmetic does."},
    {Reason::InfiniteOnTheWay,
     "The range of a converter is worked out from the ends of the type behind it, and "
     "may pass infinity on its way to a number; Compute's values come from registers, "
     "and one that is not finite shows a fault."},
};

// Results as text: a whole number below 2^63 in its digits, other reals in the fewest digits that tell them,
// or "error". The nodes' formulas are worked out in real and in integer arithmetic.
struct Difference
{
    std::string_view formula;
    std::string_view suite;
    std::string_view realNodes;
    std::string_view integerNodes;
    Reason reason;
};

constexpr Difference differences[] = {
    {"7/2", "3.5", "3.5", "3", Reason::WholeQuotients},
    {"1/3", "0.3333333333333333", "0.3333333333333333", "0", Reason::WholeQuotients},
    {"1/128", "0.0078125", "0.0078125", "0", Reason::WholeQuotients},
    {"-7/2", "-3.5", "-3.5", "-3", Reason::WholeQuotients},
    {"0.5=1/2", "1", "1", "0", Reason::WholeQuotients},
    {"(-8)**(1/3)", "error", "error", "1", Reason::WholeQuotients},
    {"1/3*3", "1", "1", "0", Reason::WholeQuotients},
    {"(5&6)/(3|2)", "1.3333333333333333", "1.3333333333333333", "1", Reason::WholeQuotients},
    {"NEG(3)/2", "-1.5", "-1.5", "-1", Reason::WholeQuotients},
    {"ABS(-3)/2", "1.5", "1.5", "1", Reason::WholeQuotients},
    {"7/2*2", "7", "7", "6", Reason::WholeQuotients},
    {"(7/2)**2", "12.25", "12.25", "9", Reason::WholeQuotients},
    {"7*7/2", "24.5", "24.5", "24", Reason::WholeQuotients},
    {"123456789012345678", "123456789012345680", "123456789012345680", "123456789012345678",
     Reason::ExactIntegers},
    {"~9223372036854775807", "9223372036854775808", "9223372036854775807", "-9223372036854775808",
     Reason::ExactIntegers},
    {"9007199254740993", "9007199254740992", "9007199254740992", "9007199254740993", Reason::ExactIntegers},
    {"9007199254740993+0", "9007199254740992", "9007199254740992", "9007199254740993", Reason::ExactIntegers},
    {"0x7FFFFFFFFFFFFFFF", "9223372036854775808", "9223372036854775808", "9223372036854775807",
     Reason::ExactIntegers},
    {"0x7FFFFFFFFFFFFFFF & 0x7FFFFFFFFFFFFFFF", "-9223372036854775808", "-9223372036854775808",
     "9223372036854775807", Reason::ExactIntegers},
    {"0x7FFFFFFFFFFFFFFF = 0x7FFFFFFFFFFFFFFE", "1", "1", "0", Reason::ExactIntegers},
    {"(1<<53)+1", "9007199254740992", "9007199254740992", "9007199254740993", Reason::ExactIntegers},
    {"((1<<53)|1)-1", "9007199254740991", "9007199254740991", "9007199254740992", Reason::ExactIntegers},
    {"4294967296*4294967296", "18446744073709551616", "18446744073709551616", "error", Reason::IntegersEnd},
    {"2**63", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"2**64", "18446744073709551616", "18446744073709551616", "error", Reason::IntegersEnd},
    {"2**1023", "8.98846567431158e+307", "8.98846567431158e+307", "error", Reason::IntegersEnd},
    {"(2**63)&(2**63)", "-9223372036854775808", "-9223372036854775808", "error", Reason::IntegersEnd},
    {"0x7FFFFFFFFFFFFFFF + 1", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"0x4000000000000000 * 2", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"-0x8000000000000000", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"0x8000000000000000 / -1", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"ABS(0x8000000000000000)", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"10 ** 19", "1e+19", "1e+19", "error", Reason::IntegersEnd},
    {"3 ** 40", "12157665459056928768", "12157665459056928768", "error", Reason::IntegersEnd},
    {"-(1<<63)", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"ABS(1<<63)", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"(1<<62)*4", "18446744073709551616", "18446744073709551616", "error", Reason::IntegersEnd},
    {"~0x7FFFFFFFFFFFFFFF - 1", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"7.9%3", "1", "1.9000000000000004", "1.9000000000000004", Reason::RemaindersOfReals},
    {"7%3.9", "1", "3.1", "3.1", Reason::RemaindersOfReals},
    {"-7.9%3", "-1", "-1.9000000000000004", "-1.9000000000000004", Reason::RemaindersOfReals},
    {"5%0.9", "error", "0.4999999999999999", "0.4999999999999999", Reason::RemaindersOfReals},
    {"1e20%3", "error", "1", "1", Reason::RemaindersOfReals},
    {"7.5 % 2", "1", "1.5", "1.5", Reason::RemaindersOfReals},
    {"-7.5 % 2", "-1", "-1.5", "-1.5", Reason::RemaindersOfReals},
    {"5 % 0.9", "error", "0.4999999999999999", "0.4999999999999999", Reason::RemaindersOfReals},
    {"1 < 1e308*10", "error", "1", "1", Reason::InfiniteOnTheWay},
    {"1e308*10 = 1e308*10", "error", "1", "1", Reason::InfiniteOnTheWay},
    {"1/(1e308*10)", "error", "0", "0", Reason::InfiniteOnTheWay},
    {"LN(0) < 0", "error", "1", "1", Reason::InfiniteOnTheWay},
    {"SQRT(-1) = 0", "error", "0", "0", Reason::InfiniteOnTheWay},
};

} // namespace formula
