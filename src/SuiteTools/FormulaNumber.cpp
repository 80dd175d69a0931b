#include "FormulaNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace VELAInterface::Formula
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

// "1.2e-3" -> 6. An "e" without digits does not belong to the number.
std::size_t decimalLength(std::string_view text)
{
    std::size_t end = skipDigits(text, 0);
    std::size_t digits = end;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fraction = skipDigits(text, end + 1);
        digits += fraction - (end + 1);
        end = fraction;
    }
    if (digits == 0)
        return 0;
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        std::size_t exponent = end + 1;
        if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-'))
            ++exponent;
        const std::size_t stop = skipDigits(text, exponent);
        if (stop > exponent)
            end = stop;
    }
    return end;
}

// Whether a number that does not fit into a double is nearer to 0 than to infinity.
bool isTiny(std::string_view number)
{
    const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), mantissaEnd);
    const std::size_t first = number.find_first_of("123456789");
    if (first >= mantissaEnd)
        return true;
    const auto magnitude = static_cast<double>(point) - static_cast<double>(first);
    double exponent = 0;
    for (std::size_t i = mantissaEnd + 1; i < number.size(); ++i)
        exponent = isDigit(number[i]) ? exponent * 10 + (number[i] - '0') : exponent;
    const bool negative = mantissaEnd + 1 < number.size() && number[mantissaEnd + 1] == '-';
    return magnitude + (negative ? -exponent : exponent) < 0;
}

NumberToken scanDecimal(std::string_view text)
{
    NumberToken token;
    token.length = decimalLength(text);
    if (token.length == 0)
        return token;
    const std::string_view number = text.substr(0, token.length);
    const auto result = std::from_chars(number.data(), number.data() + number.size(), token.value);
    if (result.ec == std::errc::result_out_of_range) {
        token.value = 0;
        token.fits = isTiny(number);
    } else {
        token.fits = result.ec == std::errc() && std::isfinite(token.value);
    }
    return token;
}

} // namespace

NumberToken scanNumber(std::string_view text)
{
    if (text.size() < 2 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
        return scanDecimal(text);
    std::uint64_t pattern = 0;
    const auto result = std::from_chars(text.data() + 2, text.data() + text.size(), pattern, 16);
    NumberToken token;
    if (result.ec == std::errc::invalid_argument)
        return token;
    token.length = static_cast<std::size_t>(result.ptr - text.data());
    token.fits = result.ec == std::errc();
    token.value = static_cast<double>(static_cast<std::int64_t>(pattern));
    return token;
}

} // namespace VELAInterface::Formula
