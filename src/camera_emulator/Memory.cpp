#include "camera_emulator/Memory.h"

#include "gvcp/Gvcp.h"

#include <algorithm>
#include <iterator>

namespace emu
{

namespace
{

uint64_t endOf(uint64_t address, uint64_t size)
{
    return size > ~address ? ~uint64_t(0) : address + size;
}

} // namespace

Bytes Memory::read(uint64_t address, size_t size) const
{
    Bytes data(size);
    const size_t end = endOf(address, size) - address;
    for (size_t done = 0; done < end;) {
        const size_t offset = (address + done) % kPageSize;
        const size_t part = std::min(kPageSize - offset, end - done);
        const auto page = m_pages.find((address + done) / kPageSize);
        if (page != m_pages.end())
            std::copy_n(page->second.begin() + offset, part, data.begin() + done);
        done += part;
    }
    return data;
}

void Memory::write(uint64_t address, const uint8_t* data, size_t size)
{
    const size_t end = endOf(address, size) - address;
    for (size_t done = 0; done < end;) {
        const size_t offset = (address + done) % kPageSize;
        const size_t part = std::min(kPageSize - offset, end - done);
        Page& page = m_pages[(address + done) / kPageSize]; // a new page is zeros
        std::copy_n(data + done, part, page.begin() + offset);
        done += part;
    }
}

void Memory::takeFrom(const Memory& other, uint64_t begin, uint64_t end)
{
    const auto isTaken = [&](uint64_t page) { return page >= begin / kPageSize && page < end / kPageSize; };
    for (auto page = m_pages.begin(); page != m_pages.end();)
        page = isTaken(page->first) ? m_pages.erase(page) : std::next(page);
    for (const auto& page : other.m_pages)
        if (isTaken(page.first))
            m_pages.insert(page);
}

uint32_t Memory::readWord(uint64_t address) const
{
    return gvcp::get32(read(address, 4).data());
}

void Memory::writeWord(uint64_t address, uint32_t value)
{
    uint8_t bytes[4];
    gvcp::put32(bytes, value);
    write(address, bytes, 4);
}

void Memory::writeText(uint64_t address, const std::string& text, size_t size)
{
    Bytes field(size);
    std::copy_n(text.begin(), std::min(text.size(), size - 1), field.begin());
    write(address, field);
}

void AddressRanges::add(uint64_t address, uint64_t size)
{
    if (size == 0)
        return;
    uint64_t begin = address;
    uint64_t end = endOf(begin, size);
    auto next = m_endByBegin.upper_bound(begin);
    if (next != m_endByBegin.begin() && std::prev(next)->second >= begin)
        --next;
    while (next != m_endByBegin.end() && next->first <= end) {
        begin = std::min(begin, next->first);
        end = std::max(end, next->second);
        next = m_endByBegin.erase(next);
    }
    m_endByBegin[begin] = end;
}

void AddressRanges::add(const AddressRanges& other)
{
    for (const auto& [begin, end] : other.m_endByBegin)
        add(begin, end - begin);
}

bool AddressRanges::overlaps(uint64_t address, uint64_t size) const
{
    const auto behind = m_endByBegin.lower_bound(endOf(address, size));
    return behind != m_endByBegin.begin() && std::prev(behind)->second > address;
}

} // namespace emu
