#include "startup/PlatformCalls.h"

#include "startup/RuntimeFolder_posix.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace Platform
{
namespace
{

std::string narrow(const wchar_t* text)
{
    std::string out;
    for (; text && *text; ++text) {
        const auto c =
            static_cast<uint32_t>(*text); // NOLINT(bugprone-signed-char-misuse): wide, and never negative
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | c >> 6);
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | (c >> 12 & 0x0F));
            out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::wstring widen(const std::string& text)
{
    std::wstring out;
    for (size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        const int more = c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
        uint32_t value = more == 2 ? c & 0x0Fu : more == 1 ? c & 0x1Fu : c;
        for (int k = 1; k <= more && i + k < text.size(); ++k)
            value = value << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
        out += static_cast<wchar_t>(value);
        i += static_cast<size_t>(more) + 1;
    }
    return out;
}

// ---- the mutex: a lock file ------------------------------------------------------------------------------

// File descriptors travel as handles; 0 would read as null.
Handle toHandle(int descriptor)
{
    return reinterpret_cast<Handle>(static_cast<intptr_t>(descriptor) + 1);
}

int toDescriptor(Handle handle)
{
    return static_cast<int>(reinterpret_cast<intptr_t>(handle) - 1);
}

// Empty, which no call opens, without a folder to trust.
std::string lockPath(const wchar_t* name)
{
    const std::string folder = runtimeFolder();
    return folder.empty() ? folder : folder + "/" + narrow(name) + ".lock";
}

// Exists as long as somebody holds the lock.
Handle openMutex(unsigned long, int, const wchar_t* name)
{
    const int descriptor = open(lockPath(name).c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return toHandle(descriptor);
    close(descriptor);
    return nullptr;
}

Handle createMutex(void*, int initialOwner, const wchar_t* name)
{
    const int descriptor = open(lockPath(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return nullptr;
    if (initialOwner)
        flock(descriptor,
              LOCK_EX | LOCK_NB); // lost to a copy that started at the same moment: the handle counts
    return toHandle(descriptor);
}

int closeHandle(Handle handle)
{
    return handle && close(toDescriptor(handle)) == 0;
}

// ---- the first copy's window: asked over a local socket --------------------------------------------------

bool fillAddress(sockaddr_un& address)
{
    const std::string folder = runtimeFolder();
    const std::string path = folder + "/Import_Export_Features.window";
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    if (folder.empty() || path.size() >= sizeof address.sun_path)
        return false;
    std::strcpy(address.sun_path, path.c_str());
    return true;
}

// One request, one answer; empty when nobody answers within a second.
std::string ask(const std::string& request)
{
    sockaddr_un address;
    const int connection = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    std::string answer;
    if (connection < 0)
        return answer;
    const timeval limit = {1, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    char buffer[16];
    if (fillAddress(address) &&
        connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        send(connection, request.data(), request.size(), MSG_NOSIGNAL) >= 0) {
        const ssize_t size = recv(connection, buffer, sizeof buffer, 0);
        if (size > 0)
            answer.assign(buffer, static_cast<size_t>(size));
    }
    close(connection);
    return answer;
}

// The answering side in the first copy.
class WindowServer
{
public:
    ~WindowServer() { stop(); }

    void start(WindowHost host)
    {
        stop();
        sockaddr_un address;
        if (!host.hasWindow || !fillAddress(address))
            return;
        m_host = std::move(host);
        m_listener = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        unlink(address.sun_path); // of a copy that is gone: who gets here holds the lock
        if (m_listener < 0 || bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            listen(m_listener, 4) != 0 || pipe2(m_wake, O_CLOEXEC) != 0) {
            closeAll();
            return;
        }
        m_path = address.sun_path;
        m_thread = std::thread([this] { serve(); });
    }

    void stop()
    {
        if (!m_thread.joinable())
            return;
        const char byte = 0;
        while (write(m_wake[1], &byte, 1) < 0 && errno == EINTR)
            ;
        m_thread.join();
        unlink(m_path.c_str());
        closeAll();
        m_host = {};
    }

private:
    void serve()
    {
        for (;;) {
            pollfd watched[] = {{m_listener, POLLIN, 0}, {m_wake[0], POLLIN, 0}};
            if (poll(watched, 2, -1) < 0 && errno != EINTR)
                return;
            if (watched[1].revents)
                return;
            if (!(watched[0].revents & POLLIN))
                continue;
            const int connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (connection < 0)
                continue;
            const timeval limit = {1, 0};
            setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
            char buffer[512];
            const ssize_t size = recv(connection, buffer, sizeof buffer, 0);
            const std::string answer =
                size > 0 ? reply(std::string(buffer, static_cast<size_t>(size))) : "no";
            send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
            close(connection);
        }
    }

    std::string reply(const std::string& request)
    {
        if (request.rfind("find ", 0) == 0)
            return m_host.hasWindow(widen(request.substr(5))) ? "yes" : "no";
        if (request == "show")
            m_host.showWithoutActivation();
        else if (request == "front")
            m_host.bringToFront();
        else
            return "no";
        return "yes";
    }

    void closeAll()
    {
        for (int* descriptor : {&m_listener, &m_wake[0], &m_wake[1]}) {
            if (*descriptor >= 0)
                close(*descriptor);
            *descriptor = -1;
        }
    }

    WindowHost m_host;
    std::thread m_thread;
    std::string m_path;
    int m_listener = -1;
    int m_wake[2] = {-1, -1};
};

WindowServer& windowServer()
{
    static WindowServer server;
    return server;
}

Window theFirstCopysWindow()
{
    static char window;
    return &window;
}

Window findWindow(const wchar_t*, const wchar_t* windowName)
{
    return ask("find " + narrow(windowName)) == "yes" ? theFirstCopysWindow() : nullptr;
}

int showWindow(Window window, int)
{
    return window && ask("show") == "yes";
}

int setForegroundWindow(Window window)
{
    return window && ask("front") == "yes";
}

// ---- crashes: signals, and a backtrace instead of a minidump ---------------------------------------------

std::atomic<ExceptionFilter> g_filter{nullptr};
// Path of the last file that createFile was asked for: the backtrace goes beside it.
char g_dumpPath[4096];

void onCrash(int signalNumber, siginfo_t* information, void*)
{
    static std::atomic_flag running = ATOMIC_FLAG_INIT;
    if (!running.test_and_set()) {
        alarm(10); // the filter is not made for a damaged heap: it may hang, but not for ever
        if (const ExceptionFilter filter = g_filter)
            filter(reinterpret_cast<ExceptionPointers*>(information));
    }
    // The process ends as it would have: its parent sees the signal.
    signal(signalNumber, SIG_DFL);
    raise(signalNumber);
}

ExceptionFilter setUnhandledExceptionFilter(ExceptionFilter filter)
{
    static char stack[256 * 1024]; // a crash by stack overflow has no other
    stack_t alternative = {};
    alternative.ss_sp = stack;
    alternative.ss_size = sizeof stack;
    sigaltstack(&alternative, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = onCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (const int signalNumber : {SIGSEGV, SIGABRT, SIGFPE, SIGILL})
        sigaction(signalNumber, &action, nullptr);
    return g_filter.exchange(filter);
}

Handle createFile(const char* path, unsigned long, unsigned long, void*, unsigned long, unsigned long, Handle)
{
    std::strncpy(g_dumpPath, path, sizeof g_dumpPath - 1);
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    return descriptor < 0 ? nullptr : toHandle(descriptor);
}

Handle getCurrentProcess()
{
    return reinterpret_cast<Handle>(static_cast<intptr_t>(-1));
}

unsigned long getCurrentProcessId()
{
    return static_cast<unsigned long>(getpid());
}

unsigned long getCurrentThreadId()
{
    return static_cast<unsigned long>(syscall(SYS_gettid));
}

int miniDumpWriteDump(Handle, unsigned long, Handle, int, const DumpException* exception, const void*,
                      const void*)
{
    std::string path = g_dumpPath;
    path += "_" + std::to_string(std::time(nullptr)) + ".backtrace.txt";
    std::error_code ignored; // what cannot be made shows when the file is opened
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0)
        return 0;
    if (exception && exception->pointers) {
        const auto* information = reinterpret_cast<const siginfo_t*>(exception->pointers);
        dprintf(descriptor, "Signal %d (%s), thread %lu\n", information->si_signo,
                strsignal(information->si_signo), exception->threadId);
    }
    void* frames[128];
    backtrace_symbols_fd(frames, backtrace(frames, 128), descriptor);
    close(descriptor);
    return 1;
}

} // namespace

const Calls& systemCalls()
{
    static const Calls calls = {openMutex,
                                createMutex,
                                closeHandle,
                                findWindow,
                                showWindow,
                                setForegroundWindow,
                                setUnhandledExceptionFilter,
                                createFile,
                                getCurrentProcess,
                                getCurrentProcessId,
                                getCurrentThreadId,
                                miniDumpWriteDump};
    return calls;
}

void setWindowHost(WindowHost host)
{
    if (host.hasWindow)
        windowServer().start(std::move(host));
    else
        windowServer().stop();
}

} // namespace Platform
