// The digest as the system's cryptography library computes it.
#include "digest/Digest.h"

#include <new>
#include <openssl/evp.h>

namespace digest
{

Sha256 sha256(std::string_view bytes)
{
    Sha256 digest;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
        throw std::bad_alloc();
    return digest;
}

Sha1 sha1(std::string_view bytes)
{
    Sha1 digest;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha1(), nullptr) != 1)
        throw std::bad_alloc();
    return digest;
}

} // namespace digest
