// An integer of 64 bits or a double.
#pragma once

#include <cstdint>

namespace formula
{

// An integer keeps all its 64 bits as long as only integers meet.
class Number
{
public:
    constexpr Number() = default;
    static constexpr Number ofInteger(std::int64_t value) { return Number(value); }
    static constexpr Number ofReal(double value) { return Number(value); }

    bool isInteger() const { return m_isInteger; }
    double asReal() const { return m_isInteger ? static_cast<double>(m_integer) : m_real; }
    // Rounded to the nearest, halves away from zero. Throws FormulaError when no 64-bit integer is near.
    std::int64_t asInteger() const { return m_isInteger ? m_integer : rounded(); }
    bool isTrue() const { return m_isInteger ? m_integer != 0 : m_real != 0; }

private:
    explicit constexpr Number(std::int64_t value) : m_integer(value) {}
    explicit constexpr Number(double value) : m_isInteger(false), m_real(value) {}
    std::int64_t rounded() const;

    bool m_isInteger = true;
    union
    {
        std::int64_t m_integer = 0;
        double m_real;
    };
};

} // namespace formula
