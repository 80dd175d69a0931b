// Bytes by address.
#include "KXCameraControl/nodes/DescribedLine.h"

namespace kx
{

KX_Status DescribedLine::readBlock(uint64_t address, void* data, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        const auto known = m_bytes.find(address + i);
        // A bit field reads its register before it writes it (Freshness::Wire); any bits around it will do.
        if (known == m_bytes.end() && m_freshness != Freshness::Wire)
            return KX_E_GC_ACCESS;
        static_cast<uint8_t*>(data)[i] = known == m_bytes.end() ? uint8_t{0} : known->second;
    }
    return KX_OK;
}

KX_Status DescribedLine::writeBlock(uint64_t address, const void* data, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        m_bytes[address + i] = static_cast<const uint8_t*>(data)[i];
    return KX_OK;
}

KX_Status DescribedLine::readRegister(uint64_t address, uint32_t& value)
{
    uint8_t bytes[4] = {};
    const KX_Status status = readBlock(address, bytes, sizeof bytes);
    if (status == KX_OK)
        value = static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
                static_cast<uint32_t>(bytes[2]) << 8 | static_cast<uint32_t>(bytes[3]);
    return status;
}

KX_Status DescribedLine::writeRegister(uint64_t address, uint32_t value)
{
    const uint8_t bytes[4] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                              static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
    return writeBlock(address, bytes, sizeof bytes);
}

} // namespace kx
