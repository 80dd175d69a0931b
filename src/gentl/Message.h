// Messages between the camera library and its helper process: numbers in the machine's own order, texts and
// blocks with their length before them. Both ends run on one machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace gentl
{

using Bytes = std::vector<uint8_t>;

constexpr size_t kMaxMessage = 64 * 1024; // bytes
constexpr size_t kMaxText = 4096;         // longer ones are cut when they are written
constexpr size_t kMaxBlock = 32 * 1024;

class Writer
{
public:
    Writer& u32(uint32_t value) { return raw(&value, sizeof value); }
    Writer& i32(int32_t value) { return raw(&value, sizeof value); }
    Writer& u64(uint64_t value) { return raw(&value, sizeof value); }
    Writer& text(const std::string& value);
    Writer& block(const void* data, size_t size); // at most kMaxBlock

    const Bytes& bytes() const { return m_bytes; }

private:
    Writer& raw(const void* data, size_t size);

    Bytes m_bytes;
};

// Nothing that comes in is believed: behind the end, or over a limit, all values are zero or empty, and
// isGood() says so.
class Reader
{
public:
    explicit Reader(const Bytes& bytes) : m_at(bytes.data()), m_end(bytes.data() + bytes.size()) {}

    uint32_t u32();
    int32_t i32();
    uint64_t u64();
    std::string text();
    Bytes block();

    // All that was asked for was there.
    bool isGood() const { return m_isGood; }
    bool isAtEnd() const { return m_at == m_end; }

private:
    bool raw(void* data, size_t size);
    size_t length(size_t limit);

    const uint8_t* m_at;
    const uint8_t* m_end;
    bool m_isGood = true;
};

} // namespace gentl
