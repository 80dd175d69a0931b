#include "digest/Digest.h"

namespace digest
{

namespace
{

template <size_t Size>
std::string hexOf(const std::array<uint8_t, Size>& bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

} // namespace

std::string hexText(const Sha256& digest)
{
    return hexOf(digest);
}

std::string sha1Text(std::string_view bytes)
{
    return hexOf(sha1(bytes));
}

} // namespace digest
