// What was read from the camera a moment ago.
#pragma once

#include "KXCameraControl/nodes/RegisterLine.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

namespace kx
{

// Remembers registers for two spans: within one call every register is read once at most, so that all parts
// of a feature see the same state; registers that may be kept also serve the calls of the span that a line
// may keep them, up to the next write.
class ReadMemo
{
public:
    using Clock = std::chrono::steady_clock;
    using Bytes = std::vector<uint8_t>;

    enum class Life
    {
        Call,
        Keep
    };
    struct Reading
    {
        Bytes bytes;
        Clock::time_point readAt; // when the camera was asked
        Life life;
        bool isAhead = false; // nobody has asked for it yet
    };

    explicit ReadMemo(std::chrono::milliseconds keepTime) : m_keepTime(keepTime) {}

    void beginCall() { ++m_call; }
    // From now on nothing serves; it stays known what it was (lastKnown).
    void outdate();
    // As if what shares a byte with the range had never been read.
    void forget(uint64_t address, size_t size);
    void clear();

    // What may serve the running call; null: nothing does. What has served a call serves it to its end.
    const Bytes* find(const RegisterPlace& place, Clock::time_point now);
    // The same for those who want to see what is there now, and are numbered from 1 in the order in which
    // they come: what was read ahead serves each of them once, and nobody who comes late or again. 0: nobody
    // known.
    enum class Reader
    {
        Node,   // of a register that changes by itself
        Address // whatever lies there
    };
    const Bytes* findFor(Reader reader, size_t number, const RegisterPlace& place, Clock::time_point now);
    // Whether the reading may still serve anybody.
    bool isFresh(const RegisterPlace& place, Clock::time_point now) const;
    // Until when it may, of what is kept beyond the running call; the clock's first moment for the rest.
    Clock::time_point freshUntil(const RegisterPlace& place, Clock::time_point now) const;
    // Whether it was read within the span and after the last write, served or not.
    bool isRecent(const RegisterPlace& place, Clock::time_point now) const;
    // Whatever was read there last, however long ago; null when nothing was.
    const Bytes* lastKnown(const RegisterPlace& place) const;
    void store(const RegisterPlace& place, Reading reading);
    // Another one as soon as lastKnown() may tell something else of a register that it knew, or less is fresh
    // than time alone takes away.
    uint64_t changes() const { return m_changes; }

    // Of those that were stored as read ahead.
    uint64_t aheadStored() const { return m_aheadStored; }
    uint64_t aheadUsed() const { return m_aheadUsed; }

private:
    static constexpr size_t maximumEntries = 32768;

    struct Entry
    {
        Reading reading;
        uint64_t call;   // that it serves in any case
        uint64_t writes; // there had been when it was read
        bool isFromAhead;
        size_t served[2] = {0, 0}; // of each kind of readers: those up to this number are through
    };
    void use(Entry& entry);
    bool serves(const Entry& entry, Clock::time_point now) const;

    const std::chrono::milliseconds m_keepTime;
    std::map<RegisterPlace, Entry> m_entries;
    uint64_t m_call = 0;
    uint64_t m_writes = 0;
    uint64_t m_changes = 1;
    uint64_t m_aheadStored = 0;
    uint64_t m_aheadUsed = 0;
};

} // namespace kx
