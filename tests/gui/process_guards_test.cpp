// The guards over a recorded table of platform calls: their order and arguments are the same on every system.
#include "startup/ProcessGuards.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#if defined(Q_OS_WIN)
#include <windows.h>
#endif

using namespace Platform;

namespace
{

QStringList g_log;
Handle g_existingMutex = nullptr;
QStringList g_windows; // titles that are found
Handle g_dumpFile = nullptr;

QString hex(unsigned long value)
{
    return "0x" + QString::number(value, 16);
}

QString pointer(const void* value)
{
    return value ? QString::number(reinterpret_cast<quintptr>(value)) : QString("null");
}

Handle handleOf(quintptr number)
{
    return reinterpret_cast<Handle>(number);
}

const Calls& recordedCalls()
{
    static const Calls calls = {
        [](unsigned long access, int inherit, const wchar_t* name) {
            g_log << QString("OpenMutexW(%1, %2, %3)")
                         .arg(hex(access))
                         .arg(inherit)
                         .arg(QString::fromWCharArray(name));
            return g_existingMutex;
        },
        [](void* security, int owner, const wchar_t* name) {
            g_log << QString("CreateMutexW(%1, %2, %3)")
                         .arg(pointer(security))
                         .arg(owner)
                         .arg(QString::fromWCharArray(name));
            return handleOf(22);
        },
        [](Handle handle) {
            g_log << "CloseHandle(" + pointer(handle) + ")";
            return 1;
        },
        [](const wchar_t* className, const wchar_t* title) {
            const QString text = QString::fromWCharArray(title);
            g_log << QString("FindWindowW(%1, %2)").arg(pointer(className), text);
            return g_windows.contains(text) ? handleOf(33) : nullptr;
        },
        [](Window window, int command) {
            g_log << QString("ShowWindow(%1, %2)").arg(pointer(window)).arg(command);
            return 1;
        },
        [](Window window) {
            g_log << "SetForegroundWindow(" + pointer(window) + ")";
            return 1;
        },
        [](ExceptionFilter filter) -> ExceptionFilter {
            g_log << QString("SetUnhandledExceptionFilter(%1)")
                         .arg(filter == WriteCrashDump ? "WriteCrashDump" : "?");
            return nullptr;
        },
        [](const char* path, unsigned long access, unsigned long share, void* security,
           unsigned long disposition, unsigned long attributes, Handle file) {
            g_log << QString("CreateFileA(%1, %2, %3, %4, %5, %6, %7)")
                         .arg(path, hex(access))
                         .arg(share)
                         .arg(pointer(security))
                         .arg(disposition)
                         .arg(hex(attributes), pointer(file));
            return g_dumpFile;
        },
        [] { return handleOf(44); },
        [] { return 55ul; },
        [] { return 66ul; },
        [](Handle process, unsigned long id, Handle file, int type, const DumpException* exception,
           const void* streams, const void* callback) {
            g_log << QString("MiniDumpWriteDump(%1, %2, %3, %4, {%5, %6, %7}, %8, %9)")
                         .arg(pointer(process))
                         .arg(id)
                         .arg(pointer(file))
                         .arg(type)
                         .arg(exception->threadId)
                         .arg(pointer(exception->pointers))
                         .arg(exception->clientPointers)
                         .arg(pointer(streams), pointer(callback));
            return 0;
        }};
    return calls;
}

QStringList g_stamps; // formats of the moments that were written as text

} // namespace

#if !defined(Q_OS_WIN) // nothing can stand before a DLL's function
// Stands before Qt's, notes the format and does what Qt's does.
__attribute__((visibility("default"))) QString QDateTime::toString(const QString& format) const
{
    g_stamps << format;
    return toString(QStringView(format));
}
#endif

class ProcessGuardsTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

private slots:
    void init()
    {
        m_folder.reset(new QTemporaryDir);
        qputenv("VELA_USER_DATA", m_folder->path().toUtf8());
        ProcessGuards::setCalls(&recordedCalls());
        g_log.clear();
        g_windows.clear();
        g_existingMutex = nullptr;
        g_dumpFile = nullptr;
    }

    void theChineseTitleIsSearchedFirst()
    {
        g_existingMutex = handleOf(11);
        g_windows = QStringList{"导入/导出属性", "Import/Export Features"};
        QVERIFY(IsAlreadyRunning());
        QCOMPARE(g_log, (QStringList{"OpenMutexW(0x1f0001, 0, Import_Export_Features)",
                                     "FindWindowW(null, 导入/导出属性)", "ShowWindow(33, 4)",
                                     "SetForegroundWindow(33)", "CloseHandle(11)"}));
    }

    void theEnglishTitleIsSearchedWhenTheFirstIsNotThere()
    {
        g_existingMutex = handleOf(11);
        g_windows = QStringList{"Import/Export Features"};
        QVERIFY(IsAlreadyRunning());
        QCOMPARE(g_log.mid(1, 4),
                 (QStringList{"FindWindowW(null, 导入/导出属性)", "FindWindowW(null, Import/Export Features)",
                              "ShowWindow(33, 4)", "SetForegroundWindow(33)"}));
    }

    void aWindowThatIsNotFoundIsShownAllTheSame()
    {
        g_existingMutex = handleOf(11);
        QVERIFY(IsAlreadyRunning());
        QCOMPARE(g_log.mid(3),
                 (QStringList{"ShowWindow(null, 4)", "SetForegroundWindow(null)", "CloseHandle(11)"}));
    }

    void theFirstCopyMakesTheMutexAndKeepsIt()
    {
        QVERIFY(!IsAlreadyRunning());
        QCOMPARE(g_log, (QStringList{"OpenMutexW(0x1f0001, 0, Import_Export_Features)",
                                     "CreateMutexW(null, 1, Import_Export_Features)"}));
        QCOMPARE(ProcessGuards::instanceMutex(), handleOf(22));
        ProcessGuards::closeInstanceMutex();
        QCOMPARE(g_log.last(), QString("CloseHandle(22)"));
        QCOMPARE(ProcessGuards::instanceMutex(), Handle(nullptr));
    }

    void twoProcessesOfTheNameMeanACopyThatStartedAtTheSameMoment()
    {
        // Any program that waits.
#if defined(Q_OS_WIN)
        const QString program = m_folder->filePath("Import_Export_Features.exe");
        const QStringList arguments{"/k"};
        QVERIFY(QFile::copy(qEnvironmentVariable("COMSPEC"), program));
#else
        const QString program = m_folder->filePath("Import_Export_Features");
        const QStringList arguments{"30"};
        QVERIFY(QFile::copy("/bin/sleep", program));
#endif
        QProcess first, second;
#if defined(Q_OS_WIN)
        // Without a console, whose host would stay behind and hold our output.
        for (QProcess* process : {&first, &second})
            process->setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* started) {
                started->flags = (started->flags & ~CREATE_NO_WINDOW) | DETACHED_PROCESS;
            });
#endif
        first.start(program, arguments);
        QVERIFY(first.waitForStarted());
        QVERIFY2(!IsAlreadyRunning(), "one process of the name is this copy itself");
        second.start(program, arguments);
        QVERIFY(second.waitForStarted());
        g_log.clear();
        QTRY_VERIFY(IsAlreadyRunning());
        QVERIFY2(g_log.filter("CloseHandle").isEmpty(), "the mutex stays open: the process ends right after");
        for (QProcess* process : {&first, &second}) {
            process->kill();
            process->waitForFinished();
        }
    }

    void theFilterIsTheCrashWriter()
    {
        ProcessGuards::installCrashFilter();
        QCOMPARE(g_log, QStringList{"SetUnhandledExceptionFilter(WriteCrashDump)"});
    }

    void theDumpOpensTheFolderItselfAndIsWrittenWhateverThatGave()
    {
        QVERIFY(QDir(m_folder->path()).mkdir("Dump"));
        const QString folder = m_folder->path() + "/Dump/Import_Export_Features_Dump";
        QCOMPARE(WriteCrashDump(reinterpret_cast<ExceptionPointers*>(quintptr(77))), 1L);
        QCOMPARE(g_log, (QStringList{"CreateFileA(" + folder + ", 0x40000000, 0, null, 2, 0x80, null)",
                                     "MiniDumpWriteDump(44, 55, null, 0, {66, 77, 1}, null, null)",
                                     "CloseHandle(null)"}));
        QVERIFY2(QDir(folder).exists(), "the folder is made, one level");

        g_log.clear();
        g_dumpFile = handleOf(88);
        QCOMPARE(WriteCrashDump(nullptr), 1L);
        QCOMPARE(g_log.mid(1), (QStringList{"MiniDumpWriteDump(44, 55, 88, 0, {66, null, 1}, null, null)",
                                            "CloseHandle(88)"}));
    }

    // The stamp goes into a name that is not used, so nothing but its making tells of it.
    void theStampIsMadeToTheSecond()
    {
        g_stamps.clear();
        WriteCrashDump(nullptr);
#if !defined(Q_OS_WIN)
        QCOMPARE(g_stamps, QStringList{"yyyyMMddhhmmss"});
#endif
    }

    void parentsOfTheDumpFolderAreNotMade()
    {
        WriteCrashDump(nullptr);
        QVERIFY(!QDir(m_folder->path() + "/Dump").exists());
    }
};

QTEST_GUILESS_MAIN(ProcessGuardsTest)
#include "process_guards_test.moc"
