// What fuzz targets share. Each target is one file, NAME.cpp, with libFuzzer's function in it; it takes any
// bytes, keeps nothing from one input to the next, and ends the process where a promise is broken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz
{

// Ends the process unless `holds`: a promise is broken by this input.
inline void promise(bool holds, const char* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

// The input, piece by piece; behind its end all is zero or empty.
class Input
{
public:
    Input(const uint8_t* data, size_t size) : m_at(data), m_end(data + size) {}

    bool isAtEnd() const { return m_at == m_end; }
    size_t left() const { return static_cast<size_t>(m_end - m_at); }

    uint8_t byte() { return isAtEnd() ? uint8_t(0) : *m_at++; }
    uint64_t number(size_t bytes)
    {
        uint64_t value = 0;
        for (size_t i = 0; i < bytes; ++i)
            value = value << 8 | byte();
        return value;
    }
    std::vector<uint8_t> bytes(size_t most)
    {
        const size_t size = most < left() ? most : left();
        std::vector<uint8_t> taken(m_at, m_at + size);
        m_at += size;
        return taken;
    }
    std::string text(size_t most)
    {
        const std::vector<uint8_t> taken = bytes(most);
        return std::string(taken.begin(), taken.end());
    }
    std::string rest() { return text(left()); }
    // Up to the separator, which is taken too, or the end.
    std::string textUpTo(const char* separator)
    {
        const std::string all(m_at, m_end);
        const size_t length = all.find(separator);
        const std::string part = all.substr(0, length);
        m_at = length == std::string::npos ? m_end : m_at + length + std::strlen(separator);
        return part;
    }

private:
    const uint8_t* m_at;
    const uint8_t* m_end;
};

} // namespace fuzz
