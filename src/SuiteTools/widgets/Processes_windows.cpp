#include "SessionProcesses.h"
#include "SuiteTools/SuiteToolsWidgets.h"

#include <QCoreApplication>

#include <windows.h>

#include <tlhelp32.h>

using namespace VELAInterface;

namespace
{

std::optional<quint32> sessionOf(DWORD process)
{
    DWORD session = 0;
    return ProcessIdToSessionId(process, &session) ? std::optional<quint32>(session) : std::nullopt;
}

std::vector<RunningProcess> runningProcesses()
{
    std::vector<RunningProcess> processes;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry;
    entry.dwSize = sizeof entry;
    for (BOOL found = Process32FirstW(snapshot, &entry); found; found = Process32NextW(snapshot, &entry))
        processes.push_back(
            {entry.th32ProcessID, QString::fromWCharArray(entry.szExeFile), sessionOf(entry.th32ProcessID)});
    CloseHandle(snapshot);
    return processes;
}

} // namespace

void VELAInterface::processID(const QString& processName, QList<qint64>* ids)
{
    ids->append(copiesInSession(runningProcesses(), processName, sessionOf(GetCurrentProcessId())));
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
