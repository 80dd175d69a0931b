// The memory of a camera that both sides of the comparison can work out for themselves: nodes_reference.py
// has the same rule.
#pragma once

#include "KXCameraControl/nodes/RegisterLine.h"

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace tests
{

class SeededMemory : public kx::RegisterLine
{
public:
    struct Write
    {
        uint64_t address;
        std::string bytes; // hexadecimal
    };

    // 0: zeros. 1: big-endian words from 0 to 4, so that selectors and divisors make sense. Others: any
    // bytes.
    explicit SeededMemory(unsigned seed) : m_seed(seed) {}

    // What was written since the last call; the memory is as it was then.
    std::vector<Write> takeWrites()
    {
        m_written.clear();
        return std::move(m_writes);
    }

    KX_Status readBlock(uint64_t address, void* data, size_t size) override
    {
        for (size_t i = 0; i < size; ++i)
            static_cast<uint8_t*>(data)[i] = byteAt(address + i);
        return KX_OK;
    }
    KX_Status writeBlock(uint64_t address, const void* data, size_t size) override
    {
        Write write{address, {}};
        for (size_t i = 0; i < size; ++i) {
            const uint8_t byte = static_cast<const uint8_t*>(data)[i];
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned>(byte));
            write.bytes += digits;
            m_written[address + i] = byte;
        }
        m_writes.push_back(write);
        return KX_OK;
    }
    KX_Status readRegister(uint64_t address, uint32_t& value) override
    {
        value = 0;
        for (uint64_t i = 0; i < 4; ++i)
            value = value << 8 | byteAt(address + i);
        return KX_OK;
    }
    KX_Status writeRegister(uint64_t address, uint32_t value) override
    {
        const uint8_t bytes[] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                                 static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
        return writeBlock(address, bytes, sizeof bytes);
    }
    void setFreshness(Freshness) override {}
    std::string lineError() const override { return {}; }

private:
    uint8_t byteAt(uint64_t address) const
    {
        const auto written = m_written.find(address);
        if (written != m_written.end())
            return written->second;
        const uint64_t mixed = (address * 2654435761U + m_seed * uint64_t{40503}) >> 20 & 0xFF;
        if (m_seed == 0 || (m_seed == 1 && address % 4 != 3))
            return 0;
        return static_cast<uint8_t>(m_seed == 1 ? mixed % 5 : mixed);
    }

    unsigned m_seed;
    std::map<uint64_t, uint8_t> m_written;
    std::vector<Write> m_writes;
};

} // namespace tests
