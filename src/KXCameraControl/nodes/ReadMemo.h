// What was read from the camera a moment ago.
#pragma once

#include "KXCameraControl/nodes/RegisterLine.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace kx
{

// Remembers registers for two spans: within one call every register is read once at most, so that all parts
// of a feature see the same state; registers that may be kept also serve the calls of the span that a line
// may keep them.
class ReadMemo
{
public:
    using Clock = std::chrono::steady_clock;

    // Forgets what must not serve another call.
    void beginCall(Clock::time_point now);
    void clear() { m_entries.clear(); }

    // Null when unknown.
    const std::vector<uint8_t>* find(uint64_t address, size_t size) const;
    void store(uint64_t address, std::vector<uint8_t> bytes, bool keep, Clock::time_point now);

private:
    struct Entry
    {
        std::vector<uint8_t> bytes;
        Clock::time_point readAt;
        bool keep;
    };
    std::map<std::pair<uint64_t, size_t>, Entry> m_entries;
};

} // namespace kx
