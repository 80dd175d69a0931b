// Watches the calls of all jobs on the camera library: counts them, and refuses further ones when asked to.
#pragma once

#include "iefeatures/CallLedger.h"
#include "iefeatures/Camera.h"

#include <functional>
#include <mutex>
#include <vector>

namespace companion
{

class CallWatch
{
public:
    // Watches every handle that is made for one of `cameras` while this lives; one watch at a time, and it
    // must outlive those handles. `refuse` is asked before each call, on the calling thread.
    CallWatch(const std::vector<Camera>& cameras, std::function<bool()> refuse);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    struct Tally
    {
        quint64 requests = 0; // sent over the connection, retries included
        quint64 reads = 0;    // of features and memory, that are over
        bool hasLineFailed = false;
        bool wasRefused = false;
        bool wasOpened = false;
        bool hasOpenFailed = false;
    };
    // From any thread; an empty one for an unknown id.
    Tally tally(int deviceId) const;

    // What a job leaves behind and its signals do not tell.
    struct Findings
    {
        std::vector<FailedCall> failures;
        KX_Status bagStatus = KX_OK; // of saving or loading a feature bag
        QString bagText;             // what the camera library had to say about that
    };
    Findings findings(int deviceId) const;

private:
    static int observe(void* user, const KX_CallEvent* event);
    int take(const KX_CallEvent& event);

    struct Entry
    {
        int deviceId;
        KX_DeviceInfo info;
        Tally tally;
        CallLedger ledger;
        KX_Status bagStatus = KX_OK;
        QString bagText;
    };
    void takeFinished(const KX_CallEvent& event, Entry& entry);
    const Entry* entryOf(int deviceId) const;

    const std::function<bool()> m_refuse;
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

} // namespace companion
