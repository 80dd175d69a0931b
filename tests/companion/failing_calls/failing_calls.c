// Put before the C library (LD_PRELOAD), it lets one call of the system fail: the n-th of a kind. Of calls on
// files those count that have to do with one folder; of calls on sockets those of IPv4; memory:
// failing_memory.cpp.
//
//   FAILING_FOLDER   the folder
//   FAILING_CALL     which kind is to fail, by the names below; none: calls are counted only
//   FAILING_NUMBER   the n-th from the program's begin
//   FAILING_ERROR    what errno says then, as a number
//   FAILING_COUNTS   a file of as many 32-bit numbers as there are kinds, which count the calls
//
//   INTERRUPTED_CALLS   every other call of a thread that may wait, without a pattern, is interrupted by a
//   signal JUMPING_CLOCK       the time of day is another one whenever it is asked for
#define _GNU_SOURCE
#include "failing_calls.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static const char* const kNames[KINDS] = {"open",  "write",  "fsync",  "rename", "link",
                                          "mkdir", "unlink", "socket", "bind",   "connect",
                                          "send",  "thread", "new",    "malloc", "qt"};

static uint32_t* counts;
static const char* folder;
static int failing = -1;
static uint32_t number;
static int failure;
static int interrupts;
static int jumps;
static char isOurs[4096]; // files that lie in the folder, by their descriptors

__attribute__((constructor)) static void begin(void)
{
    const char* call = getenv("FAILING_CALL");
    const char* path = getenv("FAILING_COUNTS");
    folder = getenv("FAILING_FOLDER");
    interrupts = getenv("INTERRUPTED_CALLS") != NULL;
    jumps = getenv("JUMPING_CLOCK") != NULL;
    number = getenv("FAILING_NUMBER") ? (uint32_t)atoi(getenv("FAILING_NUMBER")) : 0;
    failure = getenv("FAILING_ERROR") ? atoi(getenv("FAILING_ERROR")) : EIO;
    for (int kind = 0; call && kind < KINDS; ++kind)
        if (strcmp(call, kNames[kind]) == 0)
            failing = kind;
    if (!path)
        return;
    const int file = (int)syscall(SYS_openat, AT_FDCWD, path, O_RDWR);
    void* memory = file < 0
                       ? MAP_FAILED
                       : mmap(NULL, KINDS * sizeof(uint32_t), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    counts = memory == MAP_FAILED ? NULL : memory;
}

int failing_calls_fails(enum Kind kind)
{
    if (!counts)
        return 0;
    const uint32_t now = __atomic_add_fetch(&counts[kind], 1, __ATOMIC_SEQ_CST);
    if ((int)kind != failing || now != number)
        return 0;
    errno = failure;
    return 1;
}

static int fails(enum Kind kind)
{
    return failing_calls_fails(kind);
}

// A signal's handler has run instead; never twice in a row.
static int isInterrupted(void)
{
    static __thread uint32_t dice = 1;
    static __thread int was;
    dice = dice * 1664525 + 1013904223;
    was = interrupts && !was && (dice >> 31) != 0;
    if (!was)
        return 0;
    errno = EINTR;
    return 1;
}

static int isInFolder(const char* path)
{
    return folder && path && strncmp(path, folder, strlen(folder)) == 0;
}

static int isOfFolder(int file)
{
    return file >= 0 && file < (int)sizeof isOurs && isOurs[file];
}

static int noted(int file, int isIn)
{
    if (file >= 0 && file < (int)sizeof isOurs)
        isOurs[file] = (char)isIn;
    return file;
}

#define NEXT(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

#define OPENS(name, parameters, arguments)                                                                   \
    int name parameters                                                                                      \
    {                                                                                                        \
        mode_t mode = 0;                                                                                     \
        if (flags & (O_CREAT | __O_TMPFILE)) {                                                               \
            va_list rest;                                                                                    \
            va_start(rest, flags);                                                                           \
            mode = va_arg(rest, mode_t);                                                                     \
            va_end(rest);                                                                                    \
        }                                                                                                    \
        const int isIn = isInFolder(path);                                                                   \
        return isInterrupted() || (isIn && fails(OPEN)) ? -1 : noted(NEXT(name) arguments, isIn);            \
    }
OPENS(open, (const char* path, int flags, ...), (path, flags, mode))
OPENS(open64, (const char* path, int flags, ...), (path, flags, mode))
OPENS(openat, (int at, const char* path, int flags, ...), (at, path, flags, mode))
OPENS(openat64, (int at, const char* path, int flags, ...), (at, path, flags, mode))

int close(int file)
{
    noted(file, 0);
    return NEXT(close)(file);
}

ssize_t write(int file, const void* data, size_t size)
{
    return isInterrupted() || (isOfFolder(file) && fails(WRITE)) ? -1 : NEXT(write)(file, data, size);
}

ssize_t writev(int file, const struct iovec* parts, int count)
{
    return isInterrupted() || (isOfFolder(file) && fails(WRITE)) ? -1 : NEXT(writev)(file, parts, count);
}

int fsync(int file)
{
    return isInterrupted() || (isOfFolder(file) && fails(FSYNC)) ? -1 : NEXT(fsync)(file);
}

int rename(const char* from, const char* to)
{
    return isInFolder(to) && fails(RENAME) ? -1 : NEXT(rename)(from, to);
}

int renameat2(int fromAt, const char* from, int toAt, const char* to, unsigned flags)
{
    return isInFolder(to) && fails(RENAME) ? -1 : NEXT(renameat2)(fromAt, from, toAt, to, flags);
}

int link(const char* from, const char* to)
{
    return isInFolder(to) && fails(LINK) ? -1 : NEXT(link)(from, to);
}

int linkat(int fromAt, const char* from, int toAt, const char* to, int flags)
{
    return isInFolder(to) && fails(LINK) ? -1 : NEXT(linkat)(fromAt, from, toAt, to, flags);
}

int mkdir(const char* path, mode_t mode)
{
    return isInFolder(path) && fails(MKDIR) ? -1 : NEXT(mkdir)(path, mode);
}

int unlink(const char* path)
{
    return isInFolder(path) && fails(UNLINK) ? -1 : NEXT(unlink)(path);
}

int socket(int family, int type, int protocol)
{
    return family == AF_INET && fails(SOCKET) ? -1 : NEXT(socket)(family, type, protocol);
}

int bind(int file, const struct sockaddr* address, socklen_t size)
{
    return address->sa_family == AF_INET && fails(BIND) ? -1 : NEXT(bind)(file, address, size);
}

int connect(int file, const struct sockaddr* address, socklen_t size)
{
    return address->sa_family == AF_INET && fails(CONNECT) ? -1 : NEXT(connect)(file, address, size);
}

static int isIpv4(int file)
{
    int family = 0;
    socklen_t size = sizeof family;
    return getsockopt(file, SOL_SOCKET, SO_DOMAIN, &family, &size) == 0 && family == AF_INET;
}

ssize_t send(int file, const void* data, size_t size, int flags)
{
    return isInterrupted() || (isIpv4(file) && fails(SEND)) ? -1 : NEXT(send)(file, data, size, flags);
}

ssize_t sendto(int file, const void* data, size_t size, int flags, const struct sockaddr* to,
               socklen_t length)
{
    return isInterrupted() || (isIpv4(file) && fails(SEND))
               ? -1
               : NEXT(sendto)(file, data, size, flags, to, length);
}

ssize_t sendmsg(int file, const struct msghdr* message, int flags)
{
    return isInterrupted() || (isIpv4(file) && fails(SEND)) ? -1 : NEXT(sendmsg)(file, message, flags);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument)
{
    return fails(THREAD) ? EAGAIN : NEXT(pthread_create)(thread, attributes, body, argument);
}

#define WAITS(type, name, parameters, arguments)                                                             \
    type name parameters                                                                                     \
    {                                                                                                        \
        return isInterrupted() ? -1 : NEXT(name) arguments;                                                  \
    }
WAITS(ssize_t, read, (int file, void* data, size_t size), (file, data, size))
WAITS(ssize_t, readv, (int file, const struct iovec* parts, int count), (file, parts, count))
WAITS(ssize_t, recv, (int file, void* data, size_t size, int flags), (file, data, size, flags))
WAITS(ssize_t, recvfrom,
      (int file, void* data, size_t size, int flags, struct sockaddr* from, socklen_t* length),
      (file, data, size, flags, from, length))
WAITS(ssize_t, recvmsg, (int file, struct msghdr* message, int flags), (file, message, flags))
WAITS(int, poll, (struct pollfd * entries, nfds_t count, int timeout), (entries, count, timeout))
WAITS(int, ppoll,
      (struct pollfd * entries, nfds_t count, const struct timespec* timeout, const sigset_t* signals),
      (entries, count, timeout, signals))
WAITS(pid_t, waitpid, (pid_t process, int* status, int options), (process, status, options))

// By turns an hour back, right, and an hour on.
static long jump(void)
{
    static uint32_t calls;
    return jumps ? ((long)(__atomic_add_fetch(&calls, 1, __ATOMIC_SEQ_CST) % 3) - 1) * 3600 : 0;
}

int clock_gettime(clockid_t clock, struct timespec* now)
{
    const int result = NEXT(clock_gettime)(clock, now);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        now->tv_sec += jump();
    return result;
}

int gettimeofday(struct timeval* restrict now, void* restrict zone)
{
    const int result = NEXT(gettimeofday)(now, zone);
    if (result == 0)
        now->tv_sec += jump();
    return result;
}

time_t time(time_t* now)
{
    const time_t result = NEXT(time)(NULL) + jump();
    if (now)
        *now = result;
    return result;
}
