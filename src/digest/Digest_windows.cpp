// The digest as the system's cryptography computes it (CNG).
#include "digest/Digest.h"

#include <windows.h>

#include <bcrypt.h>

#include <new>

namespace digest
{

namespace
{

template <size_t Size>
std::array<uint8_t, Size> hashOf(const wchar_t* algorithm, std::string_view bytes)
{
    struct Provider
    {
        explicit Provider(const wchar_t* name)
        {
            if (BCryptOpenAlgorithmProvider(&handle, name, nullptr, 0) < 0)
                throw std::bad_alloc();
        }
        ~Provider() { BCryptCloseAlgorithmProvider(handle, 0); }
        BCRYPT_ALG_HANDLE handle = nullptr;
    } const provider(algorithm);

    std::array<uint8_t, Size> digest{};
    auto* data = reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data()));
    if (BCryptHash(provider.handle, nullptr, 0, data, static_cast<ULONG>(bytes.size()), digest.data(),
                   static_cast<ULONG>(Size)) < 0)
        throw std::bad_alloc();
    return digest;
}

} // namespace

Sha256 sha256(std::string_view bytes)
{
    return hashOf<32>(BCRYPT_SHA256_ALGORITHM, bytes);
}

Sha1 sha1(std::string_view bytes)
{
    return hashOf<20>(BCRYPT_SHA1_ALGORITHM, bytes);
}

} // namespace digest
