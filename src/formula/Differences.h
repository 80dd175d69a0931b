// Where the two machines have to differ, how, and why; and where the nodes' one differs from the standard's
// reference implementation. Whatever is not told here, both work out alike; a test
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
    InfiniteOnTheWay,
    FewLevels,
    BitsOfReals,
    SmallLetters
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
    {Reason::FewLevels, "Makers try their descriptions with the standard's reference implementation, whose "
                        "precedence has four levels, all from left to right; Compute keeps C's."},
    {Reason::BitsOfReals,
     "In formulas over reals the reference implementation cuts what & | ^ ~ << >> work on "
     "to 32-bit integers with a sign, refuses larger ones, and reads hexadecimal digits "
     "as such; Compute has 64 bits."},
    {Reason::SmallLetters,
     "The reference implementation reads names of functions and constants in small letters "
     "too, and descriptions have them; Compute's names are in capitals."},
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
    {"9007199254740993", "9007199254740992", "9007199254740992", "9007199254740993", Reason::ExactIntegers},
    {"9007199254740993+0", "9007199254740992", "9007199254740992", "9007199254740993", Reason::ExactIntegers},
    {"0x7FFFFFFFFFFFFFFF", "9223372036854775808", "9223372036854775808", "9223372036854775807",
     Reason::ExactIntegers},
    {"0x7FFFFFFFFFFFFFFF = 0x7FFFFFFFFFFFFFFE", "1", "1", "0", Reason::ExactIntegers},
    {"4294967296*4294967296", "18446744073709551616", "18446744073709551616", "error", Reason::IntegersEnd},
    {"2**63", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"2**64", "18446744073709551616", "18446744073709551616", "error", Reason::IntegersEnd},
    {"2**1023", "8.98846567431158e+307", "8.98846567431158e+307", "error", Reason::IntegersEnd},
    {"0x7FFFFFFFFFFFFFFF + 1", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"0x4000000000000000 * 2", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"-0x8000000000000000", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"0x8000000000000000 / -1", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"ABS(0x8000000000000000)", "9223372036854775808", "9223372036854775808", "error", Reason::IntegersEnd},
    {"10 ** 19", "1e+19", "1e+19", "error", Reason::IntegersEnd},
    {"3 ** 40", "12157665459056928768", "12157665459056928768", "error", Reason::IntegersEnd},
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
    {"1 ? 2 : 0 ? 4 : 5", "2", "4", "4", Reason::FewLevels},
    {"1+1<<2", "8", "5", "5", Reason::FewLevels},
    {"16>>3-1", "4", "1", "1", Reason::FewLevels},
    {"1<2=2>1", "1", "0", "0", Reason::FewLevels},
    {"1<<2+1", "8", "5", "5", Reason::FewLevels},
    {"1?2:0?3:4", "2", "3", "3", Reason::FewLevels},
    {"1^3&2", "3", "2", "2", Reason::FewLevels},
    {"1|3^1", "3", "2", "2", Reason::FewLevels},
    {"1||0&&0", "1", "0", "0", Reason::FewLevels},
    {"1||1/0&&1/0", "1", "error", "error", Reason::FewLevels},
    {"2**-3**2", "512", "0.015625", "0.015625", Reason::FewLevels},
    {"2**3**2", "512", "64", "64", Reason::FewLevels},
    {"2=1<3", "0", "1", "1", Reason::FewLevels},
    {"3>2&&2>1", "1", "0", "0", Reason::FewLevels},
    {"4&4=4", "0", "1", "1", Reason::FewLevels},
    {"8|12^10&6", "14", "6", "6", Reason::FewLevels},
    {"ABS(-1)=1&&SGN(-1)=-1", "1", "0", "0", Reason::FewLevels},
    {"~9223372036854775807", "9223372036854775808", "error", "-9223372036854775808", Reason::BitsOfReals},
    {"0x7FFFFFFFFFFFFFFF & 0x7FFFFFFFFFFFFFFF", "-9223372036854775808", "error", "9223372036854775807",
     Reason::BitsOfReals},
    {"(1<<53)+1", "9007199254740992", "error", "9007199254740993", Reason::BitsOfReals},
    {"((1<<53)|1)-1", "9007199254740991", "error", "9007199254740992", Reason::BitsOfReals},
    {"(2**63)&(2**63)", "-9223372036854775808", "error", "error", Reason::BitsOfReals},
    {"-(1<<63)", "9223372036854775808", "error", "error", Reason::BitsOfReals},
    {"ABS(1<<63)", "9223372036854775808", "error", "error", Reason::BitsOfReals},
    {"(1<<62)*4", "18446744073709551616", "error", "error", Reason::BitsOfReals},
    {"~0x7FFFFFFFFFFFFFFF - 1", "9223372036854775808", "error", "error", Reason::BitsOfReals},
    {"-1>>63", "-1", "error", "-1", Reason::BitsOfReals},
    {"0x0000200000000000|0", "35184372088832", "error", "35184372088832", Reason::BitsOfReals},
    {"0xFF000000>>24", "255", "-1", "255", Reason::BitsOfReals},
    {"0xFFFFFFFF", "4294967295", "-1", "4294967295", Reason::BitsOfReals},
    {"18446744073709549568 & 4096", "4096", "error", "4096", Reason::BitsOfReals},
    {"18446744073709549568&4096", "4096", "error", "4096", Reason::BitsOfReals},
    {"18446744073709549568|0", "-2048", "error", "-2048", Reason::BitsOfReals},
    {"1<<31", "2147483648", "-2147483648", "2147483648", Reason::BitsOfReals},
    {"1<<32", "4294967296", "error", "4294967296", Reason::BitsOfReals},
    {"1<<62", "4611686018427387904", "error", "4611686018427387904", Reason::BitsOfReals},
    {"1<<63", "-9223372036854775808", "error", "-9223372036854775808", Reason::BitsOfReals},
    {"2<<63", "0", "error", "0", Reason::BitsOfReals},
    {"3<<63", "-9223372036854775808", "error", "-9223372036854775808", Reason::BitsOfReals},
    {"9223372036854775808 | 0", "-9223372036854775808", "error", "-9223372036854775808", Reason::BitsOfReals},
    {"9223372036854775808|0", "-9223372036854775808", "error", "-9223372036854775808", Reason::BitsOfReals},
    {"0xFFFFFFFF + 0", "4294967295", "-1", "4294967295", Reason::BitsOfReals},
    {"65000<<16", "4259840000", "-35127296", "4259840000", Reason::BitsOfReals},
    {"(65000<<16)>>16", "65000", "-536", "65000", Reason::BitsOfReals},
    {"4294967295&4294967295", "4294967295", "error", "4294967295", Reason::BitsOfReals},
    {"2147483648|0", "2147483648", "error", "2147483648", Reason::BitsOfReals},
    {"3000000000.5|0", "3000000000", "error", "3000000000", Reason::BitsOfReals},
    {"abs(1)", "error", "1", "1", Reason::SmallLetters},
    {"e", "error", "2.718281828459045", "2.718281828459045", Reason::SmallLetters},
    {"pi", "error", "3.141592653589793", "3.141592653589793", Reason::SmallLetters},
    {"PI*pi", "error", "9.869604401089358", "9.869604401089358", Reason::SmallLetters},
    {"Sin(0)", "error", "0", "0", Reason::SmallLetters},
};

// Where the nodes' formulas do not follow the standard's reference implementation (GenApi 3.4, as PyPI's
// genicam 1.6.0 has it), because ours is of more use. Whatever is not told here, both work out alike.
enum class ReferenceReason
{
    BranchesNotTaken,
    RealsAmongIntegers,
    FractionsOfPowers,
    NoInfinity,
    NoOverflow,
    LongPatterns,
    ShiftsBeyondTheWidth,
    SignsBehindSigns,
    SignsOfParentheses,
    ChoicesInChoices
};

struct ReferenceReasonText
{
    ReferenceReason reason;
    std::string_view why;
};

constexpr ReferenceReasonText referenceReasonTexts[] = {
    {ReferenceReason::BranchesNotTaken, "(D = 0) ? 7 : (100 / D) is 7; the reference works out both "
                                        "branches, and fails by the one that nobody asked for."},
    {ReferenceReason::RealsAmongIntegers,
     "A point, an exponent or a function in an integer formula has one meaning only; the reference refuses "
     "to read it, and the feature is lost."},
    {ReferenceReason::FractionsOfPowers, "2**-1 is a half, also on the way to an integer; the reference cuts "
                                         "it to 0, which makes 100*2**-1 nothing."},
    {ReferenceReason::NoInfinity, "A result that is no number is an error; the reference hands it out."},
    {ReferenceReason::NoOverflow, "A result that does not fit 64 bits is an error and never another number; "
                                  "the reference wraps it, or gives the lowest."},
    {ReferenceReason::LongPatterns,
     "Hexadecimal digits keep all their bits; the reference drops those above 32 in real formulas, and takes "
     "64-bit masks for the largest number in integer ones."},
    {ReferenceReason::ShiftsBeyondTheWidth, "A count that is negative or beyond the width is an error; the "
                                            "reference leaves to the processor what becomes of it."},
    {ReferenceReason::SignsBehindSigns,
     "3--2 has one meaning only, and a variable may be put in as text; the reference refuses it."},
    {ReferenceReason::SignsOfParentheses,
     "A sign belongs to the operand behind it; the reference takes what follows a parenthesis as well, so "
     "that -(2)+3 is -5, and what stands before ~ among bits."},
    {ReferenceReason::ChoicesInChoices,
     "A choice between ? and : has one meaning only; the reference refuses it."},
};

// Results as above. What the reference refuses is "error".
struct ReferenceDifference
{
    std::string_view formula;
    std::string_view real;
    std::string_view referenceReal;
    std::string_view integer;
    std::string_view referenceInteger;
    ReferenceReason reason;
};

constexpr ReferenceDifference referenceDifferences[] = {
    {"1 ? 7 : 1/0", "7", "error", "7", "error", ReferenceReason::BranchesNotTaken},
    {"0 ? 1/0 : 7", "7", "error", "7", "error", ReferenceReason::BranchesNotTaken},
    {"0 && 1/0", "0", "error", "0", "error", ReferenceReason::BranchesNotTaken},
    {"1 || 5%0", "1", "error", "1", "error", ReferenceReason::BranchesNotTaken},
    {"7.5*2", "15", "15", "15", "error", ReferenceReason::RealsAmongIntegers},
    {"1e3", "1000", "1000", "1000", "error", ReferenceReason::RealsAmongIntegers},
    {"ABS(0-3)", "3", "3", "3", "error", ReferenceReason::RealsAmongIntegers},
    {"TRUNC(2)", "2", "2", "2", "error", ReferenceReason::RealsAmongIntegers},
    {"2*PI", "6.283185307179586", "6.283185307179586", "6.283185307179586", "error",
     ReferenceReason::RealsAmongIntegers},
    {".5+.5", "1", "error", "1", "error", ReferenceReason::RealsAmongIntegers},
    {"2**-1", "0.5", "0.5", "0.5", "0", ReferenceReason::FractionsOfPowers},
    {"100*2**-1", "50", "50", "50", "0", ReferenceReason::FractionsOfPowers},
    {"5**-3>0", "1", "1", "1", "0", ReferenceReason::FractionsOfPowers},
    {"0**-1", "error", "inf", "error", "-9223372036854775808", ReferenceReason::NoInfinity},
    {"LN(0)", "error", "-inf", "error", "error", ReferenceReason::NoInfinity},
    {"SQRT(-1)", "error", "nan", "error", "error", ReferenceReason::NoInfinity},
    {"10**400", "error", "inf", "error", "-9223372036854775808", ReferenceReason::NoInfinity},
    {"9223372036854775807+1", "9223372036854775808", "9223372036854775808", "error", "-9223372036854775808",
     ReferenceReason::NoOverflow},
    {"9223372036854775807*2", "18446744073709551616", "18446744073709551616", "error", "-2",
     ReferenceReason::NoOverflow},
    {"2**63", "9223372036854775808", "9223372036854775808", "error", "-9223372036854775808",
     ReferenceReason::NoOverflow},
    {"(0-9223372036854775807)-2", "-9223372036854775808", "-9223372036854775808", "error",
     "9223372036854775807", ReferenceReason::NoOverflow},
    {"0x100000000", "4294967296", "0", "4294967296", "4294967296", ReferenceReason::LongPatterns},
    {"0x1FFFFFFFF", "8589934591", "-1", "8589934591", "8589934591", ReferenceReason::LongPatterns},
    {"0x8000000000000000", "-9223372036854775808", "-1", "-9223372036854775808", "9223372036854775807",
     ReferenceReason::LongPatterns},
    {"0xFFFFFFFFFFFFFFFF", "-1", "-1", "-1", "9223372036854775807", ReferenceReason::LongPatterns},
    {"0x10000000000000000", "error", "-1", "error", "9223372036854775807", ReferenceReason::LongPatterns},
    {"0x1FFFFFFFF & 0xFF", "error", "255", "255", "255", ReferenceReason::LongPatterns},
    {"1<<32", "error", "1", "4294967296", "4294967296", ReferenceReason::ShiftsBeyondTheWidth},
    {"8>>33", "error", "4", "0", "0", ReferenceReason::ShiftsBeyondTheWidth},
    {"1<<64", "error", "1", "error", "1", ReferenceReason::ShiftsBeyondTheWidth},
    {"1<<-1", "error", "-2147483648", "error", "-9223372036854775808", ReferenceReason::ShiftsBeyondTheWidth},
    {"1>>(0-1)", "error", "0", "error", "0", ReferenceReason::ShiftsBeyondTheWidth},
    {"3--2", "5", "error", "5", "error", ReferenceReason::SignsBehindSigns},
    {"3-+2", "1", "error", "1", "error", ReferenceReason::SignsBehindSigns},
    {"+-5", "-5", "error", "-5", "error", ReferenceReason::SignsBehindSigns},
    {"--5", "5", "error", "5", "error", ReferenceReason::SignsBehindSigns},
    {"3+-(2)", "1", "error", "1", "error", ReferenceReason::SignsBehindSigns},
    {"-(2)+3", "1", "-5", "1", "-5", ReferenceReason::SignsOfParentheses},
    {"-(5)**2", "25", "-25", "25", "-25", ReferenceReason::SignsOfParentheses},
    {"-(1)<=12", "1", "-1", "1", "-1", ReferenceReason::SignsOfParentheses},
    {"2*-(3)+1", "-5", "-8", "-5", "-8", ReferenceReason::SignsOfParentheses},
    {"7&~5", "2", "-6", "2", "-6", ReferenceReason::SignsOfParentheses},
    {"1|~5", "-5", "-6", "-5", "-6", ReferenceReason::SignsOfParentheses},
    {"1 ? -(2) : 3", "-2", "error", "-2", "error", ReferenceReason::SignsOfParentheses},
    {"1?0?2:3:4", "3", "error", "3", "error", ReferenceReason::ChoicesInChoices},
    {"1?1?2:3:4", "2", "error", "2", "error", ReferenceReason::ChoicesInChoices},
};

} // namespace formula
