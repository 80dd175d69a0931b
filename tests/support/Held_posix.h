// Held.h by /proc.
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

inline size_t threadsHeld()
{
    return entriesOf("/proc/self/task");
}

inline size_t filesHeld()
{
    return entriesOf("/proc/self/fd");
}

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
