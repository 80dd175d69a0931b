#include "iefeatures/console/OperatingSystem.h"

#include "held_files/HeldFiles.h"

#include <io.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

namespace companion
{
namespace
{

constexpr int kNames = 256; // that are tried for a folder of our own

using EventHandler = void (*)(int);
std::atomic<EventHandler> g_onEvent{nullptr};

BOOL WINAPI passOn(DWORD event)
{
    const EventHandler handler = g_onEvent;
    if (!handler)
        return FALSE;
    const bool isKey = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    handler(isKey ? SIGINT : SIGTERM);
    if (!isKey)
        Sleep(INFINITE); // the system ends the process when this returns, or when main() has
    return TRUE;
}

// Qt's own way to paths of any length.
std::wstring nativePath(const QString& path)
{
    const QString whole = QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    const bool isShare = whole.startsWith("\\\\");
    return (isShare ? "\\\\?\\UNC" + whole.mid(1) : "\\\\?\\" + whole).toStdWString();
}

// Without the full stop that the system's own texts end with.
QString causeOf(DWORD error)
{
    const QString text = qt_error_string(static_cast<int>(error));
    return text.endsWith('.') ? text.chopped(1) : text;
}

// Far behind the file's end: what is locked there keeps nobody from reading.
OVERLAPPED lockedPlace()
{
    OVERLAPPED place = {};
    place.Offset = 0xFFFFFFFE;
    place.OffsetHigh = 0x7FFFFFFF;
    return place;
}

} // namespace

std::vector<std::string> programArguments(int, char**)
{
    // What main() gets is in the system's 8-bit encoding, where most names cannot be expressed.
    std::vector<std::string> arguments;
    for (const QString& argument : QCoreApplication::arguments().mid(1))
        arguments.push_back(argument.toStdString());
    return arguments;
}

QString loginName()
{
    return qEnvironmentVariable("USERNAME");
}

bool hasHomeFolder()
{
    return true;
}

void lock(const QFile& file)
{
    const HANDLE handle = reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    OVERLAPPED place = lockedPlace();
    while (!LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place)) {
        if (GetLastError() != ERROR_LOCK_VIOLATION || std::chrono::steady_clock::now() >= end)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

bool isReplaceable(const QString& path)
{
    const QFileInfo about(path);
    return !about.exists() || about.isFile();
}

// Not by QTemporaryDir: it takes the path of a share for one of the current drive.
QString newPrivateFolder(const QString& parent, QString& cause)
{
    DWORD error = ERROR_ALREADY_EXISTS;
    for (int i = 0; i < kNames && error == ERROR_ALREADY_EXISTS; ++i) {
        const QString number = QString::number(QRandomGenerator::system()->generate(), 36);
        const QString path = QDir(parent).filePath(".iefeatures-" + number);
        if (CreateDirectoryW(nativePath(path).c_str(), nullptr))
            return path;
        error = GetLastError();
    }
    cause = causeOf(error);
    return {};
}

QString putInPlace(const QString& from, const QString& to)
{
    if (!isReplaceable(to))
        return "it is no regular file";
    const std::wstring source = nativePath(from);
    const std::wstring target = nativePath(to);
    const DWORD error = held_files::retried([&] {
        const DWORD flags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
        return MoveFileExW(source.c_str(), target.c_str(), flags) ? DWORD(ERROR_SUCCESS) : GetLastError();
    });
    return error == ERROR_SUCCESS ? QString() : causeOf(error);
}

// Access control lists are not looked into.
bool mayOthersWrite(const QString&)
{
    return false;
}

QByteArray treePath(const QString& path)
{
    return path.toUtf8();
}

// Handlers run on a thread of their own here, and may do whatever they like.
void removeTree(const char* path)
{
    const QString tree = QString::fromUtf8(path);
    if (QFileInfo(tree).isDir())
        QDir(tree).removeRecursively();
    else
        QFile::remove(tree);
}

// There is no such limit.
void failWritesBeyondLimit() {}

bool wasLimitMet()
{
    return false;
}

// What keeps packets away (the firewall) cannot be told apart from a camera that is not there.
QStringList hostObstacles(const QString&)
{
    return {};
}

void onConsoleEvent(void (*handler)(int))
{
    g_onEvent = handler;
    SetConsoleCtrlHandler(passOn, handler ? TRUE : FALSE);
}

// A pipe, whose handle tells nothing before there is something in it, is asked; a console or a file is waited
// for.
bool awaitInput(const std::function<bool()>& mayWait)
{
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    const bool isPipe = GetFileType(input) == FILE_TYPE_PIPE;
    while (mayWait()) {
        DWORD available = 0;
        if (!isPipe && WaitForSingleObject(input, 100) == WAIT_OBJECT_0)
            return true;
        if (isPipe && (!PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr) || available > 0))
            return true;
        if (isPipe)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

} // namespace companion
