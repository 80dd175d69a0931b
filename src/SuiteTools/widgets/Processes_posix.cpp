#include "SuiteTools/SuiteToolsWidgets.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <signal.h>
#include <sys/types.h>

namespace
{

QByteArray runtimeFolderOf(const QString& processFolder)
{
    QFile file(processFolder + "/environ");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray& variable : file.readAll().split('\0'))
        if (variable.startsWith("XDG_RUNTIME_DIR="))
            return variable;
    return {};
}

} // namespace

// Programs of another session of the same user (another runtime folder) are none of ours.
void VELAInterface::processID(const QString& processName, QList<qint64>* ids)
{
    const QFileInfo self("/proc/self");
    const QByteArray runtimeFolder = runtimeFolderOf("/proc/self");
    for (const QString& entry : QDir("/proc").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isId = false;
        const qint64 id = entry.toLongLong(&isId);
        const QString folder = "/proc/" + entry;
        if (isId && QFileInfo(folder).ownerId() == self.ownerId() &&
            QFileInfo(QFile::symLinkTarget(folder + "/exe")).fileName() == processName &&
            runtimeFolderOf(folder) == runtimeFolder)
            ids->append(id);
    }
}

void VELAInterface::killProcess(const QString& processName)
{
    QList<qint64> ids;
    processID(processName, &ids);
    for (const qint64 id : qAsConst(ids))
        if (id != QCoreApplication::applicationPid())
            kill(pid_t(id), SIGTERM);
}
