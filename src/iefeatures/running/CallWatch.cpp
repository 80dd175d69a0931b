#include "iefeatures/running/CallWatch.h"

#include "iefeatures/cameras/Controller.h"
#include "iefeatures/cameras/LastError.h"
#include "iefeatures/console/RegisterText.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/running/CallKind.h"

#include "jobs/rules/JobMemory.h"

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

bool isOfHead(const char* feature)
{
    return std::strcmp(feature, "DeviceFirmwareVersion") == 0 || std::strcmp(feature, "BoardDeviceType") == 0;
}

// Of the categories of a description: each once, in the order of names.
QStringList listedFeatures(const char* description)
{
    constexpr char begin[] = "<pFeature>";
    QStringList names;
    while ((description = std::strstr(description, begin))) {
        description += std::strlen(begin);
        const char* end = std::strchr(description, '<');
        if (!end)
            break;
        names += QString::fromUtf8(description, int(end - description)).trimmed();
    }
    names.sort();
    names.removeDuplicates();
    return names;
}

} // namespace

CallWatch::CallWatch(const std::vector<ListedCamera>& cameras, std::function<bool()> refuse, Refusal refusal,
                     const Expected& expected)
    : m_refuse(std::move(refuse)), m_refusal(refusal)
{
    for (const ListedCamera& camera : cameras) {
        Entry& entry = m_entries.emplace_back();
        entry.deviceId = camera.device.nDeviceID;
        entry.info = camera.device.stDeviceInfo;
        entry.expected = expected ? expected(camera) : nullptr;
        entry.tally.expected = entry.expected ? entry.expected->names.size() : 0;
    }
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
    Findings found;
    KX_DeviceInfo device{};
    KX_Status openStatus = KX_OK;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const Entry* entry = entryOf(deviceId);
        if (!entry)
            return found;
        found = entry->findings;
        found.failures = entry->failedCalls.failures();
        device = entry->info;
        openStatus = entry->openStatus;
    }
    if (openStatus != KX_OK)
        found.openingFailure = openingFailure(device, openStatus);
    return found;
}

int CallWatch::observe(void* user, const KX_CallEvent* event)
{
    return static_cast<CallWatch*>(user)->take(*event);
}

int CallWatch::take(const KX_CallEvent& event)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& known) {
        return std::memcmp(&known.info, event.device, sizeof known.info) == 0;
    });
    if (entry == m_entries.end())
        return !event.finished && event.operation != KX_OP_CLOSE && m_refuse();
    try {
        return event.finished ? takeFinished(event, *entry) : takeBegun(event, *entry);
    } catch (...) {
        entry->tally.wasShort = true;
        if (event.finished)
            return false;
        throw; // the call is not made
    }
}

bool CallWatch::takeBegun(const KX_CallEvent& event, Entry& entry)
{
    takeLineText(event, entry.findings);
    const bool isRefused = refuses(event, entry);
    entry.tally.wasRefused = entry.tally.wasRefused || isRefused;
    return isRefused;
}

bool CallWatch::refuses(const KX_CallEvent& event, Entry& entry) const
{
    const QString feature = featureOf(event, entry);
    const bool mayEnd = m_refusal == Refusal::BehindFeature && !entry.tally.wasRefused &&
                        !feature.isEmpty() && feature == entry.inHand;
    if (event.operation != KX_OP_CLOSE && !mayEnd && m_refuse())
        return true;
    entry.inHand = feature;
    return false;
}

QString CallWatch::featureOf(const KX_CallEvent& event, const Entry& entry)
{
    if (event.nodeName)
        return QString::fromUtf8(event.nodeName);
    if (!isOnMemory(event))
        return {};
    if (!entry.expected)
        return QString::number(event.address);
    const auto block = entry.expected->blocks.find(event.address);
    return block == entry.expected->blocks.end() ? QString::number(event.address) : block->second;
}

// The answer to the call: none.
bool CallWatch::takeFinished(const KX_CallEvent& event, Entry& entry)
{
    Tally& tally = entry.tally;
    tally.requests = std::max<quint64>(tally.requests, event.requests);
    tally.wasShort = ie::takeShortage() || tally.wasShort;
    tally.reads += isRead(event.operation);
    if (const QString feature = featureOf(event, entry);
        entry.expected && entry.expected->values.contains(feature))
        entry.metFeatures.insert(feature);
    if (entry.expected)
        tally.features = entry.metFeatures.size();
    else
        takeListed(event, entry);
    tally.hasLineFailed = tally.hasLineFailed || tellsLineFailure(event);
    if (event.operation == KX_OP_OPEN) {
        entry.openStatus = event.status;
        (event.status == KX_OK ? tally.wasOpened : tally.hasOpenFailed) = true;
    }
    takeFailure(event, entry.findings);
    entry.failedCalls.take(event);
    Findings& found = entry.findings;
    found.changes.take(event);
    if (isBag(event.operation))
        found.bagStatus = event.status;
    // The bag's text is there once its call has returned; closing is what comes next on this thread.
    if (event.operation == KX_OP_CLOSE && found.bagStatus != KX_OK)
        found.bagText = withInterruption(lastErrorText());
    return false;
}

// Exports visit what is listed once, in the order of names, and not all of it is asked for. What the file's
// head needs comes before.
void CallWatch::takeListed(const KX_CallEvent& event, Entry& entry)
{
    if (event.operation == KX_OP_OPEN && event.status == KX_OK && event.value) {
        entry.listed = listedFeatures(static_cast<const char*>(event.value));
        entry.tally.expected = entry.listed.size();
    } else if (event.nodeName && isRead(event.operation) && !isOfHead(event.nodeName)) {
        const auto behind =
            std::upper_bound(entry.listed.begin(), entry.listed.end(), QString::fromUtf8(event.nodeName));
        entry.tally.features = std::max(entry.tally.features, int(behind - entry.listed.begin()));
    }
}

void CallWatch::takeFailure(const KX_CallEvent& event, Findings& found)
{
    if (tellsLineFailure(event) && event.operation != KX_OP_OPEN && !found.lineFailure)
        found.lineFailure = {event.nodeName ? QString::fromUtf8(event.nodeName) : QString(),
                             isOnMemory(event), event.address, event.status};
    if (!event.nodeName || !isRead(event.operation))
        return;
    const QString feature = QString::fromUtf8(event.nodeName);
    if (event.status == KX_OK || event.status == KX_E_GC_PROPERTY || event.status == KX_E_ABORTED)
        found.unreadable.erase(feature);
    else
        found.unreadable[feature] = event.status;
}

// The text about a call is there once it has returned, so it is looked for at the next one of its thread. Of
// a feature bag the calls are told while its own has not returned.
void CallWatch::takeLineText(const KX_CallEvent& event, Findings& found)
{
    if (found.lineFailure && found.lineText.isEmpty() && !isBag(event.operation))
        found.lineText = failureText(found.lineFailure->status, lastErrorText());
}

QString openRemark(const CallWatch::Findings& findings)
{
    const QString& cause = findings.openingFailure;
    return "the camera could not be opened" + (cause.isEmpty() ? "." : ": " + cause);
}

QString lineRemark(const CallWatch::Findings& findings)
{
    if (!findings.lineFailure)
        return {};
    const FailedCall& call = *findings.lineFailure;
    if (call.status == KX_E_DESCRIPTION)
        return KX_CC_StatusText(call.status); // which is no matter of the line
    const QString where = call.isRegister ? "register " + hexAddress(call.address) : call.feature;
    const QString cause = findings.lineText.isEmpty() ? KX_CC_StatusText(call.status) : findings.lineText;
    return "the line failed" + (where.isEmpty() ? QString() : " at " + printable(where)) + ": " + cause;
}

QString unreadableRemark(const CallWatch::Findings& findings, const QStringList& features)
{
    for (const QString& feature : features) {
        const auto found = findings.unreadable.find(feature);
        if (found != findings.unreadable.end())
            return feature + " cannot be read: " + KX_CC_StatusText(found->second);
    }
    return {};
}

QString withInterruption(QString message)
{
    return message.replace(KX_CC_StatusText(KX_E_ABORTED), "Interrupted.");
}

} // namespace companion
