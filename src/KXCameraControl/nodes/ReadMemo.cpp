// Keeping, finding and forgetting what was read.
#include "KXCameraControl/nodes/ReadMemo.h"

#include <algorithm>

namespace kx
{

namespace
{

constexpr uint64_t noCall = ~uint64_t{0};

} // namespace

void ReadMemo::outdate()
{
    ++m_writes;
    ++m_changes;
}

void ReadMemo::forget(uint64_t address, size_t size)
{
    ++m_changes;
    for (auto it = m_entries.begin(); it != m_entries.end();) {
        const RegisterPlace& place = it->first;
        const bool isBehind = place.address > address && place.address - address >= size;
        const bool isBefore = place.address <= address && address - place.address >= place.size;
        it = isBehind || isBefore ? std::next(it) : m_entries.erase(it);
    }
}

void ReadMemo::clear()
{
    ++m_changes;
    m_entries.clear();
}

bool ReadMemo::serves(const Entry& entry, Clock::time_point now) const
{
    if (entry.writes != m_writes)
        return false;
    const bool isKept = entry.reading.life == Life::Keep && now - entry.reading.readAt < m_keepTime;
    return isKept || entry.call == m_call;
}

const ReadMemo::Bytes* ReadMemo::find(const RegisterPlace& place, Clock::time_point now)
{
    const auto it = m_entries.find(place);
    if (it == m_entries.end() || !serves(it->second, now))
        return nullptr;
    use(it->second);
    it->second.call = m_call;
    return &it->second.reading.bytes;
}

void ReadMemo::use(Entry& entry)
{
    m_aheadUsed += entry.reading.isAhead ? 1 : 0;
    entry.reading.isAhead = false;
}

const ReadMemo::Bytes* ReadMemo::findFor(Reader reader, size_t number, const RegisterPlace& place,
                                         Clock::time_point now)
{
    const auto it = m_entries.find(place);
    if (it == m_entries.end() || !serves(it->second, now))
        return nullptr;
    Entry& entry = it->second;
    size_t& served = entry.served[static_cast<size_t>(reader)];
    const bool isOfThisCall = entry.call == m_call && reader == Reader::Node;
    if (!isOfThisCall && (!entry.isFromAhead || number <= served))
        return nullptr;
    served = std::max(served, number);
    use(entry);
    entry.call = m_call;
    return &entry.reading.bytes;
}

bool ReadMemo::isFresh(const RegisterPlace& place, Clock::time_point now) const
{
    const auto it = m_entries.find(place);
    return it != m_entries.end() && serves(it->second, now);
}

ReadMemo::Clock::time_point ReadMemo::freshUntil(const RegisterPlace& place, Clock::time_point now) const
{
    const auto it = m_entries.find(place);
    const bool isKept =
        it != m_entries.end() && it->second.reading.life == Life::Keep && serves(it->second, now);
    return isKept ? it->second.reading.readAt + m_keepTime : Clock::time_point::min();
}

bool ReadMemo::isRecent(const RegisterPlace& place, Clock::time_point now) const
{
    const auto it = m_entries.find(place);
    return it != m_entries.end() && it->second.writes == m_writes &&
           now - it->second.reading.readAt < m_keepTime;
}

const ReadMemo::Bytes* ReadMemo::lastKnown(const RegisterPlace& place) const
{
    const auto it = m_entries.find(place);
    return it == m_entries.end() ? nullptr : &it->second.reading.bytes;
}

void ReadMemo::store(const RegisterPlace& place, Reading reading)
{
    if (m_entries.size() >= maximumEntries)
        clear(); // a caller that walks through a window; what is forgotten is read again
    m_aheadStored += reading.isAhead ? 1 : 0;
    const bool isAhead = reading.isAhead;
    const uint64_t call = isAhead ? noCall : m_call;
    const auto known = m_entries.find(place);
    m_changes += known != m_entries.end() && known->second.reading.bytes != reading.bytes ? 1 : 0;
    m_entries[place] = Entry{std::move(reading), call, m_writes, isAhead};
}

} // namespace kx
