// Which of a machine's processes are copies of a program in one session. Compiled on every system: it is a
// rule about lists.
#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace VELAInterface
{

struct RunningProcess
{
    qint64 id = 0;
    QString fileName;               // of its program, without a folder
    std::optional<quint32> session; // nothing: the system does not tell
};

// Ids of those of `processes` that run the program `name`, without an extension, in `session`. What runs in
// another session, where another user of the machine may sit, or in one that is not known, is none of ours.
QList<qint64> copiesInSession(const std::vector<RunningProcess>& processes, const QString& name,
                              std::optional<quint32> session);

} // namespace VELAInterface
