// What tells contents apart without comparing them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace digest
{

// SHA-256 (FIPS 180-4): equal digests mean equal bytes.
using Sha256 = std::array<uint8_t, 32>;

Sha256 sha256(std::string_view bytes);
// 64 lower-case hexadecimal digits.
std::string hexText(const Sha256& digest);

// SHA-1 (FIPS 180-4): what cameras give of their files, and good against faults alone.
using Sha1 = std::array<uint8_t, 20>;

Sha1 sha1(std::string_view bytes);
// 40 lower-case hexadecimal digits.
std::string sha1Text(std::string_view bytes);

} // namespace digest
