// The register space of one emulated camera: 64-bit addresses, sparse, zero until written.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace emu
{

using Bytes = std::vector<uint8_t>;

class Memory
{
public:
    // Nothing goes round at the end of the address space: behind it bytes read as zero, and writes are
    // dropped.
    Bytes read(uint64_t address, size_t size) const;
    void write(uint64_t address, const uint8_t* data, size_t size);
    void write(uint64_t address, const Bytes& data) { write(address, data.data(), data.size()); }

    // What `other` has from one page's begin up to another's takes the place of what is here.
    void takeFrom(const Memory& other, uint64_t begin, uint64_t end);

    // Big-endian words, as the protocol counts them.
    uint32_t readWord(uint64_t address) const;
    void writeWord(uint64_t address, uint32_t value);
    // A zero-terminated text field: what does not fit is cut, the rest is zeros.
    void writeText(uint64_t address, const std::string& text, size_t size);

private:
    static constexpr size_t kPageSize = 4096;
    using Page = std::array<uint8_t, kPageSize>;
    std::unordered_map<uint64_t, Page> m_pages; // by address / kPageSize
};

// A set of address ranges; neighbouring ones melt together.
class AddressRanges
{
public:
    void add(uint64_t address, uint64_t size);
    void add(const AddressRanges& other);
    bool overlaps(uint64_t address, uint64_t size) const;
    const std::map<uint64_t, uint64_t>& endByBegin() const { return m_endByBegin; }

private:
    std::map<uint64_t, uint64_t> m_endByBegin;
};

} // namespace emu
