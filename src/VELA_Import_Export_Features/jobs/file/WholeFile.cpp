#include "jobs/file/WholeFile.h"

#include "jobs/file/WindowsNames.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>

#if defined(Q_OS_WIN)
#include "held_files/HeldFiles.h"
#endif

#if defined(Q_OS_UNIX)
#include <unistd.h>

#include <cerrno>
#endif

namespace ie
{
namespace
{

bool write(QFileDevice& file, const QString& text)
{
    // No codec on purpose: the system's local 8-bit encoding, whatever the file's declaration says.
    QTextStream stream(&file);
    stream << text;
    stream.flush();
    return stream.status() == QTextStream::Ok && file.flush() && file.error() == QFileDevice::NoError;
}

bool write(QFileDevice& file, const QByteArray& bytes)
{
    return file.write(bytes) == bytes.size() && file.flush() && file.error() == QFileDevice::NoError;
}

// Some file systems tell only now that there is no room. One that cannot be asked counts as stored.
bool isStored(const QFileDevice& file)
{
#if defined(Q_OS_UNIX)
    int failed = ::fsync(file.handle());
    while (failed != 0 && errno == EINTR)
        failed = ::fsync(file.handle());
    return failed == 0 || errno == EINVAL || errno == ENOTSUP;
#else
    return file.handle() != -1;
#endif
}

// Where the folder lets nobody remove it, it is empty then.
void drop(const QString& file)
{
    if (!QFile::remove(file))
        QFile::resize(file, 0);
}

// A disk that fills up must not leave half a file that looks whole, nor a link to a device what looks like a
// file; a device or a pipe itself stays.
template <typename Content>
bool writeInPlace(const QString& path, const Content& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const bool isWritten = write(file, content) && isStored(file);
    file.close();
    if (isWritten && file.error() == QFileDevice::NoError)
        return true;
    const QFileInfo half(path);
    if (half.isFile())
        drop(half.canonicalFilePath());
    else if (half.isSymLink())
        QFile::remove(path);
    return false;
}

// Devices, pipes, and links that lead nowhere: there is no older file to keep, and nothing to rename over.
bool isSpecial(const QFileInfo& target)
{
    return target.exists() ? !target.isFile() : target.isSymLink();
}

template <typename Content>
bool writeWhole(const QString& path, const Content& content)
{
    if (isSpecial(QFileInfo(path)))
        return writeInPlace(path, content);
    // It follows links and keeps permissions. A share's path with backslashes it takes for one of the current
    // drive.
    QSaveFile file(QDir::fromNativeSeparators(path));
    if (!file.open(QIODevice::WriteOnly))
        return writeInPlace(path, content);
    return write(file, content) && isStored(file) && file.commit();
}

// Another program, or another camera's job, may have the older file open for a moment.
template <typename Content>
bool writeWholeUnlessHeld(const QString& path, const Content& content)
{
#if defined(Q_OS_WIN)
    return held_files::retried([&] {
               if (writeWhole(path, content))
                   return DWORD(ERROR_SUCCESS);
               return DWORD(QFileInfo(path).isFile() ? ERROR_ACCESS_DENIED : ERROR_WRITE_FAULT);
           }) == ERROR_SUCCESS;
#else
    return writeWhole(path, content);
#endif
}

} // namespace

bool liesInFolder(const QString& fileName)
{
#if defined(Q_OS_WIN)
    return isWindowsFileName(fileName);
#else
    return !fileName.contains('/');
#endif
}

bool writeWholeFile(const QString& path, const QString& text)
{
    return writeWholeUnlessHeld(path, text);
}

bool writeWholeBytes(const QString& path, const QByteArray& bytes)
{
    return writeWholeUnlessHeld(path, bytes);
}

} // namespace ie
