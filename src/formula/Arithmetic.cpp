#include "formula/Arithmetic.h"

#include <cmath>

namespace formula
{

void fail(Fault& fault, Fault::Kind kind, std::int64_t count)
{
    if (fault.kind != Fault::Kind::None)
        return;
    fault.kind = kind;
    fault.count = count;
}

namespace
{

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

// Rounds half away from zero, at `digits` places behind the point (before it, when negative).
double roundToDigits(double x, double digits)
{
    const double places = std::trunc(digits);
    const double scale = std::pow(10.0, std::fabs(places));
    if (places < 0)
        return std::isfinite(scale) ? std::round(x / scale) * scale : 0.0;
    const double scaled = x * scale;
    return std::isfinite(scaled) ? std::round(scaled) / scale : x; // no double has that many places
}

} // namespace

double functionOfReal(Operation operation, double x)
{
    switch (operation) {
    case Operation::Negate:
        return -x;
    case Operation::Abs:
        return std::fabs(x);
    case Operation::Sgn:
        return x > 0 ? 1 : x < 0 ? -1 : 0;
    case Operation::Atan:
        return std::atan(x);
    case Operation::Cos:
        return std::cos(x);
    case Operation::Sin:
        return std::sin(x);
    case Operation::Tan:
        return std::tan(x);
    case Operation::Asin:
        return std::asin(x);
    case Operation::Acos:
        return std::acos(x);
    case Operation::Exp:
        return std::exp(x);
    case Operation::Ln:
        return std::log(x);
    case Operation::Lg:
        return std::log10(x);
    case Operation::Sqrt:
        return std::sqrt(x);
    case Operation::Trunc:
        return std::trunc(x);
    case Operation::Floor:
        return std::floor(x);
    case Operation::Ceil:
        return std::ceil(x);
    default:
        return std::round(x);
    }
}

double arithmeticOfReals(Operation operation, double a, double b, Fault& fault)
{
    const bool divides = operation == Operation::Divide || operation == Operation::Remainder;
    if (divides && b == 0) {
        fail(fault, Fault::Kind::DivisionByZero);
        return 0;
    }
    switch (operation) {
    case Operation::RoundToDigits:
        return roundToDigits(a, b);
    case Operation::Power:
        return std::pow(a, b);
    case Operation::Multiply:
        return a * b;
    case Operation::Divide:
        return a / b;
    case Operation::Remainder:
        return std::fmod(a, b);
    case Operation::Add:
        return a + b;
    default:
        return a - b;
    }
}

std::int64_t bitsOf(double x, Fault& fault)
{
    const double whole = std::trunc(x);
    if (!(whole >= -twoTo63 && whole < twoTo64)) {
        fail(fault, Fault::Kind::TooLarge);
        return 0;
    }
    return whole < twoTo63 ? static_cast<std::int64_t>(whole)
                           : static_cast<std::int64_t>(static_cast<std::uint64_t>(whole));
}

std::int64_t remainder(std::int64_t a, std::int64_t b, Fault& fault)
{
    if (b == 0)
        fail(fault, Fault::Kind::DivisionByZero);
    return b == 0 || b == -1 ? 0 : a % b; // the lowest number divided by -1 has no quotient
}

std::int64_t operationOnBits(Operation operation, std::int64_t a, std::int64_t b, Fault& fault)
{
    const bool shifts = operation == Operation::ShiftLeft || operation == Operation::ShiftRight;
    if (shifts && (b < 0 || b > 63)) {
        fail(fault, Fault::Kind::ShiftCount, b);
        return 0;
    }
    switch (operation) {
    case Operation::ShiftLeft:
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) << b);
    case Operation::ShiftRight:
        return a >> b;
    case Operation::BitAnd:
        return a & b;
    case Operation::BitXor:
        return a ^ b;
    default:
        return a | b;
    }
}

} // namespace formula
