#include "formula/Literal.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace formula
{

namespace
{

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t skipDigits(std::string_view text, std::size_t position)
{
    while (position < text.size() && isDigit(text[position]))
        ++position;
    return position;
}

// "1.2e-3" -> 6; `isWhole` when there is neither point nor exponent.
std::size_t decimalLength(std::string_view text, bool& isWhole)
{
    std::size_t end = skipDigits(text, 0);
    std::size_t digits = end;
    isWhole = true;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fraction = skipDigits(text, end + 1);
        digits += fraction - (end + 1);
        end = fraction;
        isWhole = false;
    }
    if (digits == 0)
        return 0;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::size_t exponent = end + 1;
        if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-'))
            ++exponent;
        const std::size_t stop = skipDigits(text, exponent);
        isWhole = isWhole && stop == exponent;
        if (stop > exponent)
            end = stop;
    }
    return end;
}

// Whether a number that does not fit into a double, and so has a digit other than 0, is nearer to 0 than to
// infinity.
bool isTiny(std::string_view number)
{
    const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), mantissaEnd);
    const std::size_t first = number.find_first_of("123456789");
    const auto magnitude = static_cast<double>(point) - static_cast<double>(first);
    double exponent = 0;
    for (std::size_t i = mantissaEnd + 1; i < number.size(); ++i)
        exponent = isDigit(number[i]) ? exponent * 10 + (number[i] - '0') : exponent;
    const bool negative = mantissaEnd + 1 < number.size() && number[mantissaEnd + 1] == '-';
    return magnitude + (negative ? -exponent : exponent) < 0;
}

Literal scanDecimal(std::string_view text)
{
    Literal literal;
    bool isWhole = false;
    literal.length = decimalLength(text, isWhole);
    if (literal.length == 0) {
        literal.fault = Fault::Kind::NoNumber;
        return literal;
    }
    const char* const first = text.data();
    const char* const last = first + literal.length;
    std::int64_t integer = 0;
    if (isWhole && std::from_chars(first, last, integer).ec == std::errc()) {
        literal.step = integerStep(integer);
        return literal;
    }
    double real = 0;
    const auto result = std::from_chars(first, last, real);
    const bool isOutOfRange = result.ec == std::errc::result_out_of_range;
    const bool fits = isOutOfRange ? isTiny(text.substr(0, literal.length)) : std::isfinite(real);
    literal.step = realStep(isOutOfRange ? 0 : real);
    literal.fault = fits ? Fault::Kind::None : Fault::Kind::NumberTooLarge;
    return literal;
}

Literal scanPattern(std::string_view text)
{
    std::uint64_t pattern = 0;
    const auto result = std::from_chars(text.data() + 2, text.data() + text.size(), pattern, 16);
    Literal literal;
    literal.length = static_cast<std::size_t>(result.ptr - text.data());
    literal.step = integerStep(static_cast<std::int64_t>(pattern), Operation::Pattern);
    if (result.ec == std::errc::invalid_argument)
        literal.fault = Fault::Kind::NoDigits;
    else if (result.ec != std::errc())
        literal.fault = Fault::Kind::PatternTooLarge;
    return literal;
}

} // namespace

Literal scanLiteral(std::string_view text)
{
    const bool isPattern = text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    return isPattern ? scanPattern(text) : scanDecimal(text);
}

} // namespace formula
