#include "iefeatures/console/OperatingSystem.h"

#if !defined(_WIN32)
#include <cerrno>
#include <poll.h>
#include <pwd.h>
#include <sys/file.h>
#include <unistd.h>
#endif

#include <chrono>
#include <thread>

namespace companion
{

QString loginName()
{
#if defined(_WIN32)
    return qEnvironmentVariable("USERNAME");
#else
    const passwd* user = getpwuid(geteuid());
    return user ? QString::fromLocal8Bit(user->pw_name) : QString::number(geteuid());
#endif
}

void lock(const QFile& file)
{
#if defined(_WIN32)
    static_cast<void>(file);
#else
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (flock(file.handle(), LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() >= end)
            return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
#endif
}

bool awaitInput(const std::function<bool()>& mayWait)
{
#if defined(_WIN32)
    return mayWait();
#else
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (mayWait())
        if (poll(&input, 1, 100) > 0)
            return true;
    return false;
#endif
}

} // namespace companion
