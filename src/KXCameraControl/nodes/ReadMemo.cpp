// Keeping, finding and forgetting what was read.
#include "KXCameraControl/nodes/ReadMemo.h"

namespace kx
{

void ReadMemo::beginCall(Clock::time_point now)
{
    for (auto it = m_entries.begin(); it != m_entries.end();) {
        if (it->second.keep && now - it->second.readAt < RegisterLine::keepTime)
            ++it;
        else
            it = m_entries.erase(it);
    }
}

const std::vector<uint8_t>* ReadMemo::find(uint64_t address, size_t size) const
{
    const auto it = m_entries.find({address, size});
    return it == m_entries.end() ? nullptr : &it->second.bytes;
}

void ReadMemo::store(uint64_t address, std::vector<uint8_t> bytes, bool keep, Clock::time_point now)
{
    const auto key = std::make_pair(address, bytes.size());
    m_entries[key] = Entry{std::move(bytes), now, keep};
}

} // namespace kx
