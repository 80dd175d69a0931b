// The fixed text fields of the public records: zero-terminated, cut to what they hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace kx
{

template <size_t Size>
void putText(uint8_t (&field)[Size], const std::string& text)
{
    std::memset(field, 0, Size);
    std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

// Up to the zero, or the field's end where there is none.
template <size_t Size>
std::string textField(const uint8_t (&field)[Size])
{
    return std::string(field, std::find(field, field + Size, uint8_t(0)));
}

} // namespace kx
