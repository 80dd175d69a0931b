// How far the jobs are, for people: lines that are drawn over themselves on a terminal, a line an event
// elsewhere.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/running/CallWatch.h"
#include "iefeatures/running/JobBatch.h"

#include <QElapsedTimer>

namespace companion
{

class Progress : public JobListener
{
public:
    Progress(Console& console, const std::vector<ListedCamera>& cameras, const CallWatch& watch);
    ~Progress() override; // takes the drawn lines away

    void begin(const ListedCamera& camera, unsigned type) override;
    void info(const ListedCamera& camera, const QString& message, bool isFailure) override;
    void end(const ListedCamera& camera, unsigned type, const QString& path) override;
    void tick() override;

private:
    enum class State
    {
        Waiting,
        Running,
        Done,
        Incomplete, // an import that the camera did not take all of
        Failed
    };
    struct Line
    {
        ListedCamera camera;
        State state = State::Waiting;
        bool hasFailed = false;
        QElapsedTimer clock = {}; // since the job's begin
    };

    Line& lineOf(const ListedCamera& camera);
    State endOf(const Line& line, unsigned type) const;
    void tell(const ListedCamera& camera, const QString& text);
    QString stateText(const Line& line) const;
    QString runningText(const Line& line) const;
    QStringList block() const;

    Console& m_console;
    const CallWatch& m_watch;
    std::vector<Line> m_lines;
    QString m_verb = "working";
};

} // namespace companion
