#include "gentl/Message.h"

#include <algorithm>
#include <cstring>

namespace gentl
{

Writer& Writer::raw(const void* data, size_t size)
{
    const auto* bytes = static_cast<const uint8_t*>(data);
    m_bytes.insert(m_bytes.end(), bytes, bytes + size);
    return *this;
}

Writer& Writer::text(const std::string& value)
{
    const size_t size = std::min(value.size(), kMaxText);
    return u32(static_cast<uint32_t>(size)).raw(value.data(), size);
}

Writer& Writer::block(const void* data, size_t size)
{
    size = std::min(size, kMaxBlock);
    return u32(static_cast<uint32_t>(size)).raw(data, size);
}

bool Reader::raw(void* data, size_t size)
{
    m_isGood = m_isGood && static_cast<size_t>(m_end - m_at) >= size;
    if (!m_isGood)
        return false;
    if (size > 0)
        std::memcpy(data, m_at, size);
    m_at += size;
    return true;
}

uint32_t Reader::u32()
{
    uint32_t value = 0;
    raw(&value, sizeof value);
    return value;
}

int32_t Reader::i32()
{
    int32_t value = 0;
    raw(&value, sizeof value);
    return value;
}

uint64_t Reader::u64()
{
    uint64_t value = 0;
    raw(&value, sizeof value);
    return value;
}

// Of what follows, 0 where that cannot be.
size_t Reader::length(size_t limit)
{
    const size_t size = u32();
    m_isGood = m_isGood && size <= limit && size <= static_cast<size_t>(m_end - m_at);
    return m_isGood ? size : 0;
}

std::string Reader::text()
{
    std::string value(length(kMaxText), '\0');
    raw(value.data(), value.size());
    return value;
}

Bytes Reader::block()
{
    Bytes value(length(kMaxBlock));
    raw(value.data(), value.size());
    return value;
}

} // namespace gentl
