#include "KXCameraControl/ports/gentl/HostProcess.h"

#include "gentl/HostProtocol.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <thread>

extern char** environ;

namespace kx
{

namespace fs = std::filesystem;

namespace
{

constexpr char kProgram[] = "ie_gentl_host";
constexpr std::chrono::milliseconds kLeaveTime{2500}; // a little more than the helper gives itself
constexpr std::chrono::milliseconds kLeavePause{2};

// Of the file that this code is in: the library, or a program that it is linked into.
fs::path ownFolder()
{
    Dl_info info{};
    const bool isKnown = ::dladdr(reinterpret_cast<void*>(&ownFolder), &info) != 0 && info.dli_fname;
    std::error_code problem;
    return isKnown ? fs::canonical(info.dli_fname, problem).parent_path() : fs::path();
}

std::string hostProgram()
{
    if (const char* setting = std::getenv("KX_GENTL_HOST"))
        return setting;
    const fs::path own = ownFolder();
    std::error_code problem;
    for (const fs::path& folder : {own, own / "../bin", own / "../../libexec/import-export-features"})
        if (fs::exists(folder / kProgram, problem))
            return (folder / kProgram).lexically_normal().string();
    return (own / kProgram).string();
}

// Away from the terminal's signals, from our files and from what programs print.
class Start
{
public:
    Start()
    {
        posix_spawnattr_init(&m_attributes);
        posix_spawn_file_actions_init(&m_actions);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setflags(&m_attributes,
                                 POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawnattr_setpgroup(&m_attributes, 0);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all);
        const char* log = std::getenv("KX_GENTL_LOG");
        posix_spawn_file_actions_addopen(&m_actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&m_actions, 1, log && *log ? log : "/dev/null",
                                         O_WRONLY | O_CREAT | O_APPEND, 0666);
        posix_spawn_file_actions_adddup2(&m_actions, 1, 2);
    }
    ~Start()
    {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    // 0, or an errno.
    int run(const std::string& program, const std::string& producer, int control, pid_t& process)
    {
        posix_spawn_file_actions_adddup2(&m_actions, control, gentl::kControlDescriptor);
        posix_spawn_file_actions_addclosefrom_np(&m_actions, gentl::kControlDescriptor + 1);
        std::string name = program;
        std::string argument = producer;
        char* arguments[] = {name.data(), argument.data(), nullptr};
        return posix_spawn(&process, program.c_str(), &m_actions, &m_attributes, arguments, environ);
    }

private:
    posix_spawnattr_t m_attributes;
    posix_spawn_file_actions_t m_actions;
};

std::string endingOf(int status)
{
    if (WIFSIGNALED(status))
        return "(signal " + std::to_string(WTERMSIG(status)) + ")";
    return "(exit code " + std::to_string(WEXITSTATUS(status)) + ")";
}

} // namespace

std::unique_ptr<HostProcess> HostProcess::start(const std::string& producer, std::string& problem)
{
    auto [ours, theirs] = gentl::Channel::pair();
    const std::string program = hostProgram();
    pid_t process = 0;
    int code = ours.isOpen() ? 0 : EMFILE;
    // The helper's end must not be the very descriptor that it is put to: it would be closed there.
    if (code == 0 && theirs.descriptor() == gentl::kControlDescriptor)
        theirs = gentl::Channel(
            ::fcntl(gentl::kControlDescriptor, F_DUPFD_CLOEXEC, gentl::kControlDescriptor + 1));
    if (code == 0)
        code = Start().run(program, producer, static_cast<int>(theirs.descriptor()), process);
    if (code != 0) {
        problem = "The helper " + program + " cannot be started: " + std::strerror(code) + ".";
        return nullptr;
    }
    return std::unique_ptr<HostProcess>(new HostProcess(process, std::move(ours)));
}

HostProcess::~HostProcess()
{
    const std::lock_guard lock(m_mutex);
    m_control.close();
    const auto end = std::chrono::steady_clock::now() + kLeaveTime;
    while (m_process > 0 && std::chrono::steady_clock::now() < end) {
        if (::waitpid(static_cast<pid_t>(m_process), nullptr, WNOHANG) != 0)
            m_process = 0;
        else
            std::this_thread::sleep_for(kLeavePause);
    }
    if (m_process > 0)
        reap();
}

bool HostProcess::connect(const gentl::Channel& requests, const gentl::Channel& loss)
{
    const std::lock_guard lock(m_mutex);
    std::vector<gentl::Channel::Descriptor> ends{requests.descriptor()};
    if (loss.isOpen())
        ends.push_back(loss.descriptor());
    return m_process > 0 &&
           m_control.send(gentl::Writer().u32(static_cast<uint32_t>(gentl::Request::Connect)).bytes(), ends);
}

// A process whose connections are gone has its end behind it, whatever is sent to it now.
uint32_t HostProcess::reap()
{
    const auto process = static_cast<pid_t>(m_process);
    int status = 0;
    ::kill(process, SIGKILL);
    pid_t waited = 0;
    do
        waited = ::waitpid(process, &status, 0);
    while (waited < 0 && errno == EINTR);
    m_process = 0;
    return static_cast<uint32_t>(status);
}

std::string HostProcess::endHung(const std::string& function, int64_t milliseconds)
{
    const std::lock_guard lock(m_mutex);
    if (m_process > 0) {
        reap();
        m_reason = "hung in " + function + " for " + std::to_string(milliseconds) + " ms and was ended";
    }
    return m_reason;
}

std::string HostProcess::endGone(const std::string& function)
{
    const std::lock_guard lock(m_mutex);
    if (m_process <= 0)
        return m_reason;
    const auto status = static_cast<int>(reap());
    if (WIFEXITED(status) && WEXITSTATUS(status) == gentl::ExitMemory)
        m_reason = "took more memory than it may (KX_GENTL_MEMORY)";
    else
        m_reason = "crashed in " + function + " " + endingOf(status);
    return m_reason;
}

bool HostProcess::isOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_process <= 0;
}

} // namespace kx
