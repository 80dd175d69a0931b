#include "Recorder.h"

#include <atomic>

namespace tests
{
namespace
{

std::atomic<QtMessageHandler> g_previousHandler{nullptr};

void recordMessage(QtMsgType level, const QMessageLogContext& context, const QString& text)
{
    Recorder::instance().addLog(level, context, text);
    const QtMessageHandler previous = g_previousHandler.load();
    if (level == QtFatalMsg && previous)
        previous(level, context, text);
}

// Critical is what jobs log with, and stands without a word.
QString levelWord(QtMsgType level)
{
    switch (level) {
    case QtDebugMsg:
        return "debug: ";
    case QtInfoMsg:
        return "info: ";
    case QtWarningMsg:
        return "warning: ";
    case QtFatalMsg:
        return "fatal: ";
    default:
        return {};
    }
}

QString argumentText(const QVariant& argument)
{
    if (argument.type() == QVariant::ByteArray)
        return QString::fromLatin1(argument.toByteArray().toHex());
    return argument.toString();
}

} // namespace

QString TraceEntry::toString() const
{
    if (kind == Kind::Log)
        return levelWord(level) + "log " + text;
    QStringList words{QString::fromLatin1(operation)};
    if (!name.isEmpty())
        words.append(QString::fromLatin1(name));
    for (const QVariant& argument : arguments)
        words.append(argumentText(argument));
    if (kind == Kind::Call && !finished)
        words.append("...");
    else if (kind == Kind::Call && status != KX_OK)
        words.append("-> " + QString::number(status, 16));
    return words.join(' ');
}

Recorder& Recorder::instance()
{
    static Recorder recorder;
    return recorder;
}

void Recorder::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_first += m_entries.size();
    m_entries.clear();
}

QList<TraceEntry> Recorder::entries() const
{
    return filtered([](const TraceEntry&) { return true; });
}

QList<TraceEntry> Recorder::calls() const
{
    return filtered([](const TraceEntry& entry) { return entry.kind == TraceEntry::Kind::Call; });
}

QList<TraceEntry> Recorder::calls(const QByteArray& operation) const
{
    return filtered([&operation](const TraceEntry& entry) {
        return entry.kind == TraceEntry::Kind::Call && entry.operation == operation;
    });
}

QList<TraceEntry> Recorder::logs() const
{
    return filtered([](const TraceEntry& entry) { return entry.kind == TraceEntry::Kind::Log; });
}

QStringList Recorder::logTexts() const
{
    QStringList texts;
    for (const TraceEntry& entry : logs())
        texts.append(levelWord(entry.level) + entry.text);
    return texts;
}

QList<TraceEntry> Recorder::signalsSeen() const
{
    return filtered([](const TraceEntry& entry) { return entry.kind == TraceEntry::Kind::Signal; });
}

QStringList Recorder::texts() const
{
    QStringList words;
    for (const TraceEntry& entry : entries())
        words.append(entry.toString());
    return words;
}

int Recorder::beginCall(const QByteArray& operation, int handle, const QByteArray& name,
                        const QVariantList& arguments)
{
    TraceEntry entry;
    entry.kind = TraceEntry::Kind::Call;
    entry.operation = operation;
    entry.handle = handle;
    entry.name = name;
    entry.arguments = arguments;
    entry.finished = false;
    return append(entry);
}

void Recorder::finishCall(int sequence, KX_Status status)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (sequence < m_first)
        return; // cleared while the call ran
    m_entries[sequence - m_first].status = status;
    m_entries[sequence - m_first].finished = true;
}

void Recorder::nameHandle(int sequence, int handle)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (sequence >= m_first)
        m_entries[sequence - m_first].handle = handle;
}

void Recorder::addLog(QtMsgType level, const QMessageLogContext& context, const QString& text)
{
    TraceEntry entry;
    entry.kind = TraceEntry::Kind::Log;
    entry.level = level;
    entry.file = context.file;
    entry.line = context.line;
    entry.function = context.function;
    entry.text = text;
    append(entry);
}

void Recorder::addSignal(const QByteArray& name, const QVariantList& arguments)
{
    TraceEntry entry;
    entry.kind = TraceEntry::Kind::Signal;
    entry.operation = name;
    entry.arguments = arguments;
    append(entry);
}

int Recorder::append(TraceEntry entry)
{
    entry.thread = std::this_thread::get_id();
    const std::lock_guard<std::mutex> lock(m_mutex);
    entry.sequence = m_first + m_entries.size();
    m_entries.append(entry);
    return entry.sequence;
}

template <typename Wanted>
QList<TraceEntry> Recorder::filtered(Wanted wanted) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    QList<TraceEntry> found;
    for (const TraceEntry& entry : m_entries)
        if (wanted(entry))
            found.append(entry);
    return found;
}

LogCapture::LogCapture() : m_previous(qInstallMessageHandler(recordMessage))
{
    g_previousHandler.store(m_previous);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
}

} // namespace tests
