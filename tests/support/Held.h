// What the test's process holds of the system's, as it counts it; POSIX systems with /proc.
#pragma once

#include <QDir>
#include <QFile>

#include <cstddef>
#include <malloc.h>
#include <string>
#include <unistd.h>

namespace tests
{

inline size_t entriesOf(const char* folder)
{
    return size_t(QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

struct Held
{
    size_t threads = entriesOf("/proc/self/task");
    size_t files = entriesOf("/proc/self/fd"); // sockets among them

    bool isNoMoreThan(const Held& other) const { return threads <= other.threads && files <= other.files; }
    std::string text() const
    {
        return std::to_string(threads) + " threads and " + std::to_string(files) + " files";
    }
};

inline size_t socketsHeld()
{
    const QDir folder("/proc/self/fd");
    size_t count = 0;
    for (const QString& name : folder.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        char target[64] = {};
        const QByteArray path = QFile::encodeName(folder.filePath(name));
        if (readlink(path.constData(), target, sizeof target - 1) > 0)
            count += std::string(target).rfind("socket:", 0) == 0 ? 1 : 0;
    }
    return count;
}

// Resident memory of the process.
inline size_t residentKilobytes()
{
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toULongLong() * size_t(sysconf(_SC_PAGESIZE)) / 1024;
}

// What of it is in use; 0 where a sanitizer has the memory.
inline size_t allocatedKilobytes()
{
    const struct mallinfo2 memory = mallinfo2();
    return (memory.uordblks + memory.hblkhd) / 1024;
}

} // namespace tests
