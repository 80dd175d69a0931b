// How far the work on several cameras is, for people: on a terminal lines that are drawn over themselves, a
// camera each; elsewhere one line when nothing else was told for a while. From any thread.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"
#include "iefeatures/console/Console.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <chrono>
#include <mutex>
#include <vector>

namespace companion
{

QStringList titlesOf(const std::vector<ListedCamera>& cameras);

class ProgressBoard
{
public:
    // `silence`: off a terminal, how long nothing may have been told before a line is.
    ProgressBoard(Console& console, const QStringList& titles,
                  std::chrono::milliseconds silence = std::chrono::seconds(10));
    ~ProgressBoard(); // takes the drawn lines away
    ProgressBoard(const ProgressBoard&) = delete;
    ProgressBoard& operator=(const ProgressBoard&) = delete;

    // Features that are done of all; `all` 0: not known, then `text` says how far it is.
    struct Step
    {
        int done = 0;
        int all = 0;
        QString text = {};
    };
    void begin(size_t camera, const QString& verb);
    void advance(size_t camera, const Step& step);
    void end(size_t camera, const QString& state, bool isRed);
    // Something else was told.
    void breakSilence();
    // Draws, or tells where it is time to; to be called every now and then.
    void tick();

private:
    struct Line
    {
        QString title;
        QString verb = {};  // empty: it waits
        QString state = {}; // of one that is over
        bool isRed = false;
        Step step = {};
        QElapsedTimer clock = {}; // since the begin

        bool isRunning() const { return state.isEmpty() && !verb.isEmpty(); }
        QString text() const;
    };
    QStringList block() const;
    QString sum() const;

    Console& m_console;
    const std::chrono::milliseconds m_silence;
    mutable std::mutex m_mutex;
    std::vector<Line> m_lines;
    QElapsedTimer m_spoken; // since something was told
};

} // namespace companion
