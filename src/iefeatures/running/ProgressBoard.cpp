#include "iefeatures/running/ProgressBoard.h"

#include "iefeatures/console/Text.h"

#include <algorithm>

namespace companion
{
namespace
{

// Empty where nobody can tell.
QString timeLeft(qint64 elapsed, const ProgressBoard::Step& step)
{
    if (step.done == 0 || step.done >= step.all)
        return {};
    const qint64 seconds = (elapsed * (step.all - step.done) / step.done + 999) / 1000; // rounded up
    if (seconds < 60)
        return QString(", about %1 s left").arg(seconds);
    return QString(", about %1 min left").arg((seconds + 59) / 60);
}

} // namespace

QStringList titlesOf(const std::vector<ListedCamera>& cameras)
{
    QStringList titles;
    for (const ListedCamera& camera : cameras)
        titles += camera.title();
    return titles;
}

QString ProgressBoard::Line::text() const
{
    if (!state.isEmpty())
        return state;
    if (verb.isEmpty())
        return "waiting";
    if (step.all == 0)
        return step.text.isEmpty() ? verb : verb + ", " + step.text;
    return QString("%1, %2 of %3 features").arg(verb).arg(step.done).arg(step.all) +
           timeLeft(clock.elapsed(), step);
}

ProgressBoard::ProgressBoard(Console& console, const QStringList& titles, std::chrono::milliseconds silence)
    : m_console(console), m_silence(silence)
{
    for (const QString& title : titles)
        m_lines.push_back({title});
    m_spoken.start();
}

ProgressBoard::~ProgressBoard()
{
    m_console.drawBlock({});
}

void ProgressBoard::begin(size_t camera, const QString& verb)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lines[camera].verb = verb;
    m_lines[camera].clock.start();
}

void ProgressBoard::advance(size_t camera, const Step& step)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lines[camera].step = step;
}

void ProgressBoard::end(size_t camera, const QString& state, bool isRed)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lines[camera].state = state;
    m_lines[camera].isRed = isRed;
}

void ProgressBoard::breakSilence()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_spoken.restart();
}

void ProgressBoard::tick()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_console.redraws())
        return m_console.drawBlock(block());
    if (!m_spoken.hasExpired(m_silence.count()))
        return;
    m_spoken.restart();
    if (const QString text = sum(); !text.isEmpty())
        m_console.note(text + '\n');
}

// "EMU-1 S1: exporting, 12 of 300 features, about 20 s left"; of several cameras "3 of 16 cameras done; " and
// the one that has come least far.
QString ProgressBoard::sum() const
{
    const Line* last = nullptr;
    const auto part = [](const Line& line) { return double(line.step.done) / std::max(1, line.step.all); };
    for (const Line& line : m_lines)
        if (line.isRunning() && (!last || part(line) < part(*last)))
            last = &line;
    if (!last)
        return {};
    const QString text = last->title + ": " + last->text();
    const auto done =
        std::count_if(m_lines.begin(), m_lines.end(), [](const Line& line) { return !line.state.isEmpty(); });
    return m_lines.size() == 1 ? text
                               : QString("%1 of %2 cameras done; ").arg(done).arg(m_lines.size()) + text;
}

// Never as high as the screen: what has scrolled away cannot be drawn over. Where not all have room, those
// that run are shown.
QStringList ProgressBoard::block() const
{
    const TerminalSize size = m_console.size();
    const int room = std::max(1, size.rows - 2);
    const bool isCrowded = int(m_lines.size()) > room;
    int titleWidth = 0;
    for (const Line& line : m_lines)
        titleWidth = std::max(titleWidth, displayWidth(line.title));
    titleWidth = std::min(titleWidth, size.columns / 2);

    QStringList lines;
    for (const Line& line : m_lines) {
        if (lines.size() == room)
            break;
        if (isCrowded && !line.isRunning())
            continue;
        const QString shown = fitted(fitted(line.title, titleWidth) + "  " + line.text(), size.columns - 1);
        lines += m_console.colours() && line.isRed ? "\033[31m" + shown + "\033[0m" : shown;
    }
    return lines;
}

} // namespace companion
