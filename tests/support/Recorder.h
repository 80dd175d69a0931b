// One sequence of what a test's subject does: calls of the camera library, log lines and signals, in the
// order in which they happened on whatever thread. Every function may be called from any thread.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QtGlobal>

#include <mutex>
#include <thread>

namespace tests
{

struct TraceEntry
{
    enum class Kind
    {
        Call,
        Log,
        Signal
    };

    Kind kind = Kind::Call;
    int sequence = 0; // ascending; never used twice in a process
    std::thread::id thread;

    // Of a call: the function without its prefix ("ReadMemory"); of a signal: its name.
    QByteArray operation;
    // Of a call: the handle's ordinal, counted from 1 by creation; 0: a null handle, -1: one that is not
    // known (any more). KX_CC_CreateHandle carries the ordinal that it made, 0 when it failed.
    int handle = 0;
    QByteArray name;        // of a call: the raw bytes of the node name or file path
    QVariantList arguments; // of a call: what stands behind handle and name; of a signal: all of them
    KX_Status status = KX_OK;
    bool finished = true; // of a call: false while it still runs

    // Of a log line.
    QtMsgType level = QtDebugMsg;
    QByteArray file;
    int line = 0;
    QByteArray function;
    QString text; // raw, with the quotes that the debug stream has put around it

    // "GetIntValueEx Width", "ReadMemory 4096 4", "log \"text\"", "SigEndThread 7 3 /path". Failed calls
    // carry their status: "OpenDevice 1 0 -> 80000202"; log lines that are not critical their level:
    // "warning: log \"text\"".
    QString toString() const;
};

class Recorder
{
public:
    static Recorder& instance();

    void clear();
    QList<TraceEntry> entries() const;
    QList<TraceEntry> calls() const;
    QList<TraceEntry> calls(const QByteArray& operation) const;
    // Log lines of every level; their raw texts, with the level in front ("warning: ...") where it is not
    // critical, so that an expected text holds the level too.
    QList<TraceEntry> logs() const;
    QStringList logTexts() const;
    QList<TraceEntry> signalsSeen() const;
    // The whole sequence in words.
    QStringList texts() const;

    // A call is entered when it begins, so that calls stand in the order of their beginnings.
    int beginCall(const QByteArray& operation, int handle, const QByteArray& name,
                  const QVariantList& arguments);
    void finishCall(int sequence, KX_Status status);
    void nameHandle(int sequence, int handle);
    void addLog(QtMsgType level, const QMessageLogContext& context, const QString& text);
    void addSignal(const QByteArray& name, const QVariantList& arguments);

    // Takes a signal in, on the thread that emits it. The arguments' types must be known to QVariant.
    template <typename Sender, typename Class, typename... Args>
    void watch(const Sender* sender, void (Class::*signal)(Args...), const QByteArray& name)
    {
        QObject::connect(
            sender, signal, sender,
            [this, name](Args... args) { addSignal(name, {QVariant::fromValue(args)...}); },
            Qt::DirectConnection);
    }

private:
    Recorder() = default;
    int append(TraceEntry entry);
    template <typename Wanted>
    QList<TraceEntry> filtered(Wanted wanted) const;

    mutable std::mutex m_mutex;
    QList<TraceEntry> m_entries;
    int m_first = 0; // sequence of the first entry kept
};

// While one lives, Qt's messages go to the recorder and are not printed (fatal ones are both).
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

private:
    QtMessageHandler m_previous;
};

} // namespace tests
