#include "iefeatures/CallWatch.h"

#include <algorithm>
#include <cstring>

namespace companion
{
namespace
{

bool isRead(uint32_t operation)
{
    return (operation >= KX_OP_GET_BOOL && operation <= KX_OP_GET_STRING) || operation == KX_OP_READ_MEMORY;
}

bool isLineFailure(KX_Status status)
{
    return status >= KX_E_NO_ANSWER && status <= KX_E_NO_DEVICE;
}

} // namespace

CallWatch::CallWatch(const std::vector<Camera>& cameras, std::function<bool()> refuse)
    : m_refuse(std::move(refuse))
{
    for (const Camera& camera : cameras)
        m_entries.push_back({camera.device.nDeviceID, camera.device.stDeviceInfo, {}});
    KX_CC_SetCallObserver(nullptr, &CallWatch::observe, this);
}

CallWatch::~CallWatch()
{
    KX_CC_SetCallObserver(nullptr, nullptr, nullptr);
}

CallWatch::Tally CallWatch::tally(int deviceId) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const Entry& entry : m_entries)
        if (entry.deviceId == deviceId)
            return entry.tally;
    return {};
}

int CallWatch::observe(void* user, const KX_CallEvent* event)
{
    return static_cast<CallWatch*>(user)->take(*event);
}

int CallWatch::take(const KX_CallEvent& event)
{
    const bool refuses = !event.finished && event.operation != KX_OP_CLOSE && m_refuse();
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& known) {
        return std::memcmp(&known.info, event.device, sizeof known.info) == 0;
    });
    if (entry == m_entries.end())
        return refuses;
    Tally& tally = entry->tally;
    tally.requests = std::max<quint64>(tally.requests, event.requests);
    tally.wasRefused = tally.wasRefused || refuses;
    if (event.finished) {
        tally.reads += isRead(event.operation);
        tally.hasLineFailed = tally.hasLineFailed || isLineFailure(event.status);
    }
    return refuses;
}

} // namespace companion
