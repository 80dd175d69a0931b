// How far the jobs are, for people: a board (ProgressBoard.h), and off a terminal a line for each begin and
// end.
#pragma once

#include "iefeatures/running/CallWatch.h"
#include "iefeatures/running/JobBatch.h"
#include "iefeatures/running/ProgressBoard.h"

namespace companion
{

class Progress : public JobListener
{
public:
    Progress(Console& console, const std::vector<ListedCamera>& cameras, const CallWatch& watch);

    void begin(const ListedCamera& camera, unsigned type) override;
    void info(const ListedCamera& camera, const QString& message, bool isFailure) override;
    void end(const ListedCamera& camera, unsigned type, const QString& path) override;
    void tick() override;

private:
    size_t indexOf(const ListedCamera& camera) const;
    QString stateOf(const ListedCamera& camera, unsigned type) const;
    void tell(const ListedCamera& camera, const QString& text);

    Console& m_console;
    const CallWatch& m_watch;
    const std::vector<ListedCamera> m_cameras;
    std::vector<bool> m_haveFailed;
    ProgressBoard m_board;
};

} // namespace companion
