#include "jobs/file/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ie
{
namespace
{

const char kNoFile[] = "it is no regular file";

int flagsOf(QIODevice::OpenMode mode, LinkRule links)
{
    int flags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    flags |= mode & QIODevice::WriteOnly ? O_CREAT : 0;
    flags |= mode & QIODevice::Append ? O_APPEND : 0;
    flags |= links == LinkRule::Refused ? O_NOFOLLOW : 0;
    if ((mode & QIODevice::ReadWrite) == QIODevice::ReadWrite)
        return flags | O_RDWR;
    return flags | (mode & QIODevice::WriteOnly ? O_WRONLY : O_RDONLY);
}

QString causeOf(int error)
{
    if (error == ELOOP)
        return "it is a link";
    const bool isNoFile = error == ENXIO || error == EISDIR; // a pipe that nobody reads, a socket, a folder
    return isNoFile ? QString(kNoFile) : QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

QString openRegular(QFile& file, QIODevice::OpenMode mode, LinkRule links)
{
    const QByteArray name = QFile::encodeName(file.fileName());
    int handle = ::open(name.constData(), flagsOf(mode, links), 0666);
    while (handle == -1 && errno == EINTR)
        handle = ::open(name.constData(), flagsOf(mode, links), 0666);
    if (handle == -1)
        return causeOf(errno);
    struct stat about = {};
    const bool isRegular = ::fstat(handle, &about) == 0 && S_ISREG(about.st_mode);
    if (isRegular && file.open(handle, mode, QFileDevice::AutoCloseHandle))
        return {};
    ::close(handle);
    return isRegular ? causeOf(file) : QString(kNoFile);
}

QString causeOf(const QFileDevice& file)
{
    return file.errorString();
}

} // namespace ie
