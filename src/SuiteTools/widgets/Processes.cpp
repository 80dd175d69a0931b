#include "SuiteTools/SuiteToolsWidgets.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#if defined(Q_OS_WIN)
#include <windows.h>

#include <tlhelp32.h>
#else
#include <signal.h>
#include <sys/types.h>
#endif

#if defined(Q_OS_WIN)

namespace
{

DWORD sessionOf(DWORD process)
{
    DWORD session = 0;
    return ProcessIdToSessionId(process, &session) ? session : DWORD(-1);
}

} // namespace

// Programs of another session, which another user may have on the same machine, are none of ours.
void VELAInterface::processID(const QString& processName, QList<qint64>* ids)
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry;
    entry.dwSize = sizeof entry;
    const DWORD session = sessionOf(GetCurrentProcessId());
    for (BOOL found = Process32FirstW(snapshot, &entry); found; found = Process32NextW(snapshot, &entry))
        if (QFileInfo(QString::fromWCharArray(entry.szExeFile)).completeBaseName() == processName &&
            sessionOf(entry.th32ProcessID) == session)
            ids->append(entry.th32ProcessID);
    CloseHandle(snapshot);
}

void VELAInterface::killProcess(const QString& processName)
{
    QList<qint64> ids;
    processID(processName, &ids);
    for (const qint64 id : qAsConst(ids)) {
        if (id == QCoreApplication::applicationPid())
            continue;
        const HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, DWORD(id));
        TerminateProcess(process, 0);
        CloseHandle(process);
    }
}

#else

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

#endif
