// One number for many things, to see whether any of them changed (FNV-1a).
#pragma once

#include <cstddef>
#include <cstdint>

namespace kx
{

class Stamp
{
public:
    void add(const void* data, size_t size)
    {
        for (size_t i = 0; i < size; ++i)
            m_value = (m_value ^ static_cast<const uint8_t*>(data)[i]) * 16777619u;
    }
    uint32_t value() const { return m_value ? m_value : 1; } // 0 means: unknown

private:
    uint32_t m_value = 2166136261u;
};

} // namespace kx
