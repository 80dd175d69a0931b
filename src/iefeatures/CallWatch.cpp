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

bool isBag(uint32_t operation)
{
    return operation == KX_OP_FEATURE_SAVE || operation == KX_OP_FEATURE_LOAD;
}

// Of the calling thread.
QString lastErrorText()
{
    uint32_t length = 0;
    KX_CC_GetLastErrorText(nullptr, nullptr, 0, &length);
    std::string text(length + 1, '\0');
    KX_CC_GetLastErrorText(nullptr, text.data(), length + 1, &length);
    return QString::fromUtf8(text.c_str());
}

} // namespace

CallWatch::CallWatch(const std::vector<Camera>& cameras, std::function<bool()> refuse)
    : m_refuse(std::move(refuse))
{
    for (const Camera& camera : cameras)
        m_entries.push_back({camera.device.nDeviceID, camera.device.stDeviceInfo, {}, {}, KX_OK, {}});
    KX_CC_SetCallObserver(nullptr, &CallWatch::observe, this);
}

CallWatch::~CallWatch()
{
    KX_CC_SetCallObserver(nullptr, nullptr, nullptr);
}

const CallWatch::Entry* CallWatch::entryOf(int deviceId) const
{
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(),
                                    [deviceId](const Entry& known) { return known.deviceId == deviceId; });
    return entry == m_entries.end() ? nullptr : &*entry;
}

CallWatch::Tally CallWatch::tally(int deviceId) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Entry* entry = entryOf(deviceId);
    return entry ? entry->tally : Tally();
}

CallWatch::Findings CallWatch::findings(int deviceId) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Entry* entry = entryOf(deviceId);
    return entry ? Findings{entry->ledger.failures(), entry->bagStatus, entry->bagText} : Findings();
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
    if (event.finished)
        takeFinished(event, *entry);
    return refuses;
}

void CallWatch::takeFinished(const KX_CallEvent& event, Entry& entry)
{
    Tally& tally = entry.tally;
    tally.reads += isRead(event.operation);
    tally.hasLineFailed = tally.hasLineFailed || isLineFailure(event.status);
    if (event.operation == KX_OP_OPEN)
        (event.status == KX_OK ? tally.wasOpened : tally.hasOpenFailed) = true;
    entry.ledger.take(event);
    if (isBag(event.operation))
        entry.bagStatus = event.status;
    // The bag's text is there once its call has returned; closing is what comes next on this thread.
    if (event.operation == KX_OP_CLOSE && entry.bagStatus != KX_OK)
        entry.bagText = lastErrorText();
}

} // namespace companion
