#include "iefeatures/running/Progress.h"

#include "iefeatures/console/Text.h"

#include "jobs/worker/QOperateThread.h"

#include <algorithm>

namespace companion
{
namespace
{

bool isImport(unsigned type)
{
    return type == JOB_FEATURE_BAG_IMPORT || type == JOB_FEATURE_XML_IMPORT;
}

QString timeLeft(qint64 elapsed, int done, int all)
{
    const qint64 seconds = (elapsed * (all - done) / done + 999) / 1000; // rounded up
    if (seconds < 60)
        return QString("about %1 s left").arg(seconds);
    return QString("about %1 min left").arg((seconds + 59) / 60);
}

} // namespace

Progress::Progress(Console& console, const std::vector<ListedCamera>& cameras, const CallWatch& watch)
    : m_console(console), m_watch(watch)
{
    for (const ListedCamera& camera : cameras)
        m_lines.push_back({camera});
}

Progress::~Progress()
{
    m_console.drawBlock({});
}

void Progress::begin(const ListedCamera& camera, unsigned type)
{
    m_verb = isImport(type) ? "importing" : "exporting";
    Line& line = lineOf(camera);
    line.state = State::Running;
    line.clock.start();
    if (!m_console.redraws())
        tell(camera, m_verb);
}

void Progress::info(const ListedCamera& camera, const QString& message, bool isFailure)
{
    Line& line = lineOf(camera);
    line.hasFailed = line.hasFailed || isFailure;
    m_console.err(camera.title() + ": " + printable(message) + '\n');
}

void Progress::end(const ListedCamera& camera, unsigned type, const QString&)
{
    Line& line = lineOf(camera);
    line.state = endOf(line, type);
    if (!m_console.redraws())
        tell(camera, stateText(line));
    tick();
}

// The signals do not tell all of it.
Progress::State Progress::endOf(const Line& line, unsigned type) const
{
    const int id = line.camera.device.nDeviceID;
    if (line.hasFailed || m_watch.tally(id).hasOpenFailed)
        return State::Failed;
    return isImport(type) && !m_watch.findings(id).failures.empty() ? State::Incomplete : State::Done;
}

void Progress::tick()
{
    m_console.drawBlock(block());
}

Progress::Line& Progress::lineOf(const ListedCamera& camera)
{
    return *std::find_if(m_lines.begin(), m_lines.end(), [&](const Line& line) {
        return line.camera.device.nDeviceID == camera.device.nDeviceID;
    });
}

void Progress::tell(const ListedCamera& camera, const QString& text)
{
    m_console.note(camera.title() + ": " + text + '\n');
}

QString Progress::stateText(const Line& line) const
{
    switch (line.state) {
    case State::Waiting:
        return "waiting";
    case State::Running:
        return runningText(line);
    case State::Done:
        return "done";
    case State::Incomplete:
        return "incomplete";
    case State::Failed:
        return "failed";
    }
    return {};
}

// A job goes over its features once and then over those that have not settled: how long that takes, nobody
// knows.
QString Progress::runningText(const Line& line) const
{
    const CallWatch::Tally tally = m_watch.tally(line.camera.device.nDeviceID);
    if (tally.expected == 0)
        return QString("%1, %2 reads, %3 requests").arg(m_verb).arg(tally.reads).arg(tally.requests);
    const QString text = QString("%1, %2 of %3 features").arg(m_verb).arg(tally.features).arg(tally.expected);
    if (tally.features == 0 || tally.features >= tally.expected)
        return text;
    return text + ", " + timeLeft(line.clock.elapsed(), tally.features, tally.expected);
}

// Never as high as the screen: what has scrolled away cannot be drawn over. Where not all have room, those
// that run are shown.
QStringList Progress::block() const
{
    const TerminalSize size = m_console.size();
    const int room = std::max(1, size.rows - 2);
    const bool isCrowded = int(m_lines.size()) > room;
    int titleWidth = 0;
    for (const Line& line : m_lines)
        titleWidth = std::max(titleWidth, displayWidth(line.camera.title()));
    titleWidth = std::min(titleWidth, size.columns / 2);

    QStringList lines;
    for (const Line& line : m_lines) {
        if (lines.size() == room)
            break;
        if (isCrowded && line.state != State::Running)
            continue;
        const QString text = fitted(line.camera.title(), titleWidth) + "  " + stateText(line);
        const QString shown = fitted(text, size.columns - 1);
        const bool isRed = m_console.colours() && line.state == State::Failed;
        lines += isRed ? "\033[31m" + shown + "\033[0m" : shown;
    }
    return lines;
}

} // namespace companion
