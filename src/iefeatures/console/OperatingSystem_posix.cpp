#include "iefeatures/console/OperatingSystem.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

namespace companion
{
namespace
{

std::atomic<bool> g_wasLimitMet{false};

#if defined(__linux__)
constexpr int kDeepestFolder = 8;
constexpr int kRemovals = 3;

// As the system's call gives them: the C library's functions for folders are not for signal handlers.
struct FolderEntry
{
    uint64_t inode;
    int64_t next;
    uint16_t size;
    uint8_t type;
    char name[1];
};

bool isItselfOrAbove(const char* name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

void removeIn(int folder, const char* name, int depth)
{
    if (unlinkat(folder, name, 0) == 0 || depth == kDeepestFolder)
        return;
    const int inner = openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (inner == -1)
        return;
    alignas(FolderEntry) char entries[4096];
    for (long size; (size = syscall(SYS_getdents64, inner, entries, sizeof entries)) > 0;) {
        for (long at = 0; at < size;) {
            const auto* entry = reinterpret_cast<const FolderEntry*>(entries + at);
            if (!isItselfOrAbove(entry->name))
                removeIn(inner, entry->name, depth + 1);
            at += entry->size;
        }
    }
    close(inner);
    unlinkat(folder, name, AT_REMOVEDIR);
}
#endif

// Linux, ip-sysctl "rp_filter": the larger of both counts, and 1 is strict.
int reversePathFilter(const QString& interfaceName)
{
    int strictest = 0;
    for (const QString& name : {QString("all"), interfaceName}) {
        QFile file("/proc/sys/net/ipv4/conf/" + name + "/rp_filter");
        if (file.open(QIODevice::ReadOnly))
            strictest = std::max(strictest, file.readAll().trimmed().toInt());
    }
    return strictest;
}

// RFC 3927, 169.254.0.0/16
bool isLinkLocal(const sockaddr* address)
{
    if (!address || address->sa_family != AF_INET)
        return false;
    const auto* internet = reinterpret_cast<const sockaddr_in*>(address);
    return (ntohl(internet->sin_addr.s_addr) >> 16) == 0xA9FE;
}

QStringList linkLocalInterfaces()
{
    QStringList names;
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0)
        return names;
    for (const ifaddrs* one = first; one; one = one->ifa_next)
        if (isLinkLocal(one->ifa_addr))
            names += QString::fromUtf8(one->ifa_name);
    freeifaddrs(first);
    names.removeDuplicates();
    return names;
}

} // namespace

// C linkage is what signal() asks for.
extern "C" void rememberLimit(int)
{
    g_wasLimitMet = true;
}

std::vector<std::string> programArguments(int argc, char** argv)
{
    return {argv + 1, argv + argc};
}

QString loginName()
{
    const passwd* user = getpwuid(geteuid());
    return user ? QString::fromLocal8Bit(user->pw_name) : QString::number(geteuid());
}

bool hasHomeFolder()
{
    return !qEnvironmentVariableIsEmpty("HOME");
}

void lock(const QFile& file)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (flock(file.handle(), LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= end)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

bool isReplaceable(const QString& path)
{
    struct stat about = {};
    return lstat(QFile::encodeName(path).constData(), &about) != 0 || S_ISREG(about.st_mode) ||
           S_ISLNK(about.st_mode);
}

QString newPrivateFolder(const QString& parent, QString& cause)
{
    QTemporaryDir folder(QDir(parent).filePath(".iefeatures-XXXXXX")); // mode 0700
    folder.setAutoRemove(false);
    if (folder.isValid())
        return folder.path();
    cause = folder.errorString();
    return {};
}

QString putInPlace(const QString& from, const QString& to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    struct stat older = {};
    if (!isReplaceable(to))
        return "it is no regular file";
    if (lstat(target.constData(), &older) == 0 && S_ISREG(older.st_mode) && older.st_uid == geteuid())
        static_cast<void>(chmod(source.constData(), older.st_mode & 0777));
    if (std::rename(source.constData(), target.constData()) == 0)
        return {};
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool mayOthersWrite(const QString& folder)
{
    struct stat about = {};
    if (stat(QFile::encodeName(folder).constData(), &about) != 0)
        return false;
    const bool isForeign = about.st_uid != geteuid() && about.st_uid != 0;
    const bool isForGroup = (about.st_mode & S_IWGRP) != 0 && about.st_gid != getegid();
    return isForeign || isForGroup || (about.st_mode & S_IWOTH) != 0;
}

QByteArray treePath(const QString& path)
{
    return QFile::encodeName(path);
}

void removeTree(const char* path)
{
#if defined(__linux__)
    const int error = errno;
    for (int i = 0; i < kRemovals && access(path, F_OK) == 0; ++i) // others may still put files there
        removeIn(AT_FDCWD, path, 0);
    errno = error;
#else
    static_cast<void>(path);
#endif
}

void failWritesBeyondLimit()
{
    if (std::signal(SIGXFSZ, rememberLimit) == SIG_IGN)
        std::signal(SIGXFSZ, SIG_IGN);
}

bool wasLimitMet()
{
    return g_wasLimitMet;
}

// Signals are all that there is.
void onConsoleEvent(void (*)(int)) {}

bool awaitInput(const std::function<bool()>& mayWait)
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (mayWait())
        if (poll(&input, 1, 100) > 0)
            return true;
    return false;
}

QStringList hostObstacles(const QString& interfaceName)
{
    QStringList found;
    constexpr int kStrict = 1;
    if (!interfaceName.isEmpty() && !interfaceName.contains('/') &&
        reversePathFilter(interfaceName) == kStrict)
        found += interfaceName + " filters reverse paths strictly (rp_filter), so that answers from other "
                                 "networks are dropped";
    if (const QStringList names = linkLocalInterfaces(); names.size() > 1)
        found +=
            names.join(" and ") + " have link-local addresses, so that packets may leave by the wrong one";
    return found;
}

} // namespace companion
