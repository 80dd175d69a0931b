// The digest as the system's cryptography library computes it.
#include "digest/Digest.h"

#include <new>
#include <openssl/evp.h>

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

Sha256 sha256(std::string_view bytes)
{
    Sha256 digest;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc();
    return digest;
}

std::string hexText(const Sha256& digest)
{
    return hexOf(digest);
}

std::string sha1Text(std::string_view bytes)
{
    std::array<uint8_t, 20> digest{};
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha1(), nullptr) != 1)
        throw std::bad_alloc();
    return hexOf(digest);
}

} // namespace digest
