// Watches the calls of all jobs on the camera library: counts them, and refuses further ones when asked to.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/running/FailedCalls.h"
#include "iefeatures/running/ObservedChanges.h"

#include <QSet>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace companion
{

class CallWatch
{
public:
    // Which call may still run once calls are to be refused.
    enum class Refusal
    {
        AtOnce,
        BehindFeature // a feature that was read may be written, a register block may be ended
    };
    // What the job on a camera is expected to come to; null: nobody knows. It must outlive the watch.
    // Registers that its blocks do not name are each taken for a block of their own.
    using Expected = std::function<const NamedFeatures*(const ListedCamera& camera)>;

    // Watches every handle that is made for one of `cameras` while this lives; one watch at a time, and it
    // must outlive those handles. `refuse` is asked before each call, on the calling thread.
    CallWatch(const std::vector<ListedCamera>& cameras, std::function<bool()> refuse,
              Refusal refusal = Refusal::AtOnce, const Expected& expected = {});
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    struct Tally
    {
        quint64 requests = 0; // sent over the connection, retries included
        quint64 reads = 0;    // of features and memory, that are over
        int features = 0;     // of the expected ones, that the job has come to
        int expected = 0;     // all of them; of an export those that the description lists
        bool hasLineFailed = false;
        bool wasShort = false; // of memory: something may be missing, and not all may be told
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
        ObservedChanges changes;
        QString openingFailure;                  // of the last try, a sentence; empty: none
        std::optional<FailedCall> lineFailure;   // the first call behind the opening that the line failed
        QString lineText;                        // its cause, a sentence; empty: not known
        std::map<QString, KX_Status> unreadable; // features whose last read failed, and were there
    };
    // Of a camera that another host controls: asks it who that is.
    Findings findings(int deviceId) const;

private:
    static int observe(void* user, const KX_CallEvent* event);
    int take(const KX_CallEvent& event);

    struct Entry
    {
        int deviceId = 0;
        KX_DeviceInfo info{};
        Tally tally;
        FailedCalls failedCalls;
        Findings findings; // but for the failures and what asks the camera
        KX_Status openStatus = KX_OK;
        const NamedFeatures* expected = nullptr;
        QStringList listed; // where none are expected: what the description lists, in the order of names
        QString inHand;     // the feature of the last call that was not refused
        QSet<QString> metFeatures;
    };
    bool refuses(const KX_CallEvent& event, Entry& entry) const;
    static QString featureOf(const KX_CallEvent& event, const Entry& entry);
    bool takeBegun(const KX_CallEvent& event, Entry& entry);
    bool takeFinished(const KX_CallEvent& event, Entry& entry);
    static void takeListed(const KX_CallEvent& event, Entry& entry);
    static void takeFailure(const KX_CallEvent& event, Findings& found);
    static void takeLineText(const KX_CallEvent& event, Findings& found);
    const Entry* entryOf(int deviceId) const;

    const std::function<bool()> m_refuse;
    const Refusal m_refusal;
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

// Why the camera of a job could not be opened.
QString openRemark(const CallWatch::Findings& findings);
// Where the line failed first, and how; empty when it did not.
QString lineRemark(const CallWatch::Findings& findings);
// Which of these features could not be read, and why; empty when none.
QString unreadableRemark(const CallWatch::Findings& findings, const QStringList& features);
// A message of the camera library or of a job, where a call that was refused because somebody has asked for
// the end is told as what it is.
QString withInterruption(QString message);

} // namespace companion
