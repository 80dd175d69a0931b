#include "KXCameraControl/bag/BagFile.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kx
{
namespace
{

constexpr mode_t kNewFile = 0666; // but for what the process masks

std::string lastReason()
{
    return std::strerror(errno);
}

// What a link leads to; a path that leads nowhere stays as it is.
std::string followed(const std::string& path)
{
    char* const target = ::realpath(path.c_str(), nullptr);
    if (!target)
        return path;
    const std::string text = target;
    std::free(target);
    return text;
}

bool writeAll(int file, const std::string& text)
{
    for (size_t done = 0; done < text.size();) {
        const ssize_t written = ::write(file, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR)
            return false;
        done += written < 0 ? 0 : static_cast<size_t>(written);
    }
    return true;
}

// Some file systems tell only now that there is no room. One that cannot be asked counts as stored.
bool isStored(int file)
{
    int failed = ::fsync(file);
    while (failed != 0 && errno == EINTR)
        failed = ::fsync(file);
    return failed == 0 || errno == EINVAL || errno == ENOTSUP;
}

// Closes the file. An empty text: all of it is on the disk.
std::string fill(int file, const std::string& text)
{
    std::string reason = writeAll(file, text) && isStored(file) ? std::string() : lastReason();
    if (::close(file) != 0 && reason.empty())
        reason = lastReason();
    return reason;
}

// A new file beside `target`, with a name that no other thread or process uses. -1: the folder allows none.
int createBeside(const std::string& target, std::string& name)
{
    static std::atomic<unsigned> number{0};
    int file = -1;
    do {
        name = target + '.' + std::to_string(::getpid()) + '-' + std::to_string(++number);
        file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
    } while (file < 0 && (errno == EEXIST || errno == EINTR));
    return file;
}

// Half a file must not look like a whole one. Where the folder lets nobody remove it, it is empty then.
void drop(const std::string& path)
{
    const bool isDropped = ::unlink(followed(path).c_str()) == 0 || ::truncate(path.c_str(), 0) == 0;
    static_cast<void>(isDropped);
}

// A device or a pipe stays, whatever happens.
std::string writeInPlace(const std::string& path, const std::string& text)
{
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
    int file = ::open(path.c_str(), flags, kNewFile);
    while (file < 0 && errno == EINTR)
        file = ::open(path.c_str(), flags, kNewFile);
    if (file < 0)
        return lastReason();
    struct stat status = {};
    const bool isRegular = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    const std::string reason = fill(file, text);
    if (!reason.empty() && isRegular)
        drop(path);
    return reason;
}

// Whether a file of that name may be exchanged: it is one, and its owner lets us write it.
bool isReplaceable(const std::string& target, const struct stat& older)
{
    return S_ISREG(older.st_mode) && ::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) == 0;
}

} // namespace

std::string writeBagFile(const std::string& path, const std::string& text)
{
    const std::string target = followed(path);
    struct stat older = {};
    const bool isThere = ::lstat(target.c_str(), &older) == 0;
    if (isThere && !isReplaceable(target, older)) // nor is a link that leads nowhere
        return writeInPlace(target, text);
    std::string temporary;
    const int file = createBeside(target, temporary);
    if (file < 0)
        return writeInPlace(target, text);
    if (isThere)
        ::fchmod(file, older.st_mode & 07777);
    std::string reason = fill(file, text);
    if (reason.empty() && std::rename(temporary.c_str(), target.c_str()) != 0)
        reason = lastReason();
    if (!reason.empty())
        ::unlink(temporary.c_str());
    return reason;
}

} // namespace kx
