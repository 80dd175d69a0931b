#include "SessionProcesses.h"

#include <QFileInfo>

QList<qint64> VELAInterface::copiesInSession(const std::vector<RunningProcess>& processes,
                                             const QString& name, std::optional<quint32> session)
{
    QList<qint64> ids;
    for (const RunningProcess& process : processes)
        if (session && process.session == session && QFileInfo(process.fileName).completeBaseName() == name)
            ids.append(process.id);
    return ids;
}
