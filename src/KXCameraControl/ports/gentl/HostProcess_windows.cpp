#include "KXCameraControl/ports/EnvironmentPath.h"
#include "KXCameraControl/ports/gentl/HostProcess.h"

#include "gentl/HostProtocol.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

namespace kx
{

namespace fs = std::filesystem;

namespace
{

constexpr wchar_t kProgram[] = L"ie_gentl_host.exe";
constexpr DWORD kLeaveTime = 2500; // ms; a little more than the helper gives itself

HANDLE handleOf(intptr_t value)
{
    return reinterpret_cast<HANDLE>(value);
}

// Of the file that this code is in: the library, or a program that it is linked into.
fs::path ownFolder()
{
    HMODULE own = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ownFolder), &own);
    std::wstring name(32768, L'\0'); // the longest path there is
    name.resize(GetModuleFileNameW(own, name.data(), static_cast<DWORD>(name.size())));
    return fs::path(name).parent_path();
}

fs::path hostProgram()
{
    const fs::path setting = environmentPath("KX_GENTL_HOST");
    return setting.empty() ? ownFolder() / kProgram : setting;
}

// A file's name has no quotation mark in it.
std::wstring quoted(const fs::path& path)
{
    return L'"' + path.wstring() + L'"';
}

class OwnHandle
{
public:
    explicit OwnHandle(HANDLE handle) : m_handle(handle) {}
    ~OwnHandle()
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            CloseHandle(m_handle);
    }
    OwnHandle(const OwnHandle&) = delete;
    OwnHandle& operator=(const OwnHandle&) = delete;
    HANDLE get() const { return m_handle; }

private:
    HANDLE m_handle;
};

// What the producer prints; the helper inherits it.
HANDLE outputFile()
{
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const fs::path log = environmentPath("KX_GENTL_LOG");
    return CreateFileW(log.empty() ? L"NUL" : log.c_str(), FILE_APPEND_DATA,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                       log.empty() ? OPEN_EXISTING : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Those handles alone are inherited, whatever else this process has open.
class Inheritance
{
public:
    explicit Inheritance(std::vector<HANDLE> handles) : m_handles(std::move(handles))
    {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        m_room.resize(size);
        InitializeProcThreadAttributeList(list(), 1, 0, &size);
        UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, m_handles.data(),
                                  m_handles.size() * sizeof(HANDLE), nullptr, nullptr);
    }
    ~Inheritance() { DeleteProcThreadAttributeList(list()); }
    Inheritance(const Inheritance&) = delete;
    Inheritance& operator=(const Inheritance&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST list()
    {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_room.data());
    }

private:
    std::vector<HANDLE> m_handles;
    std::vector<char> m_room;
};

// Away from the console's events, from our files and from what programs print. The control channel is its
// standard input. Null: the system's error says why.
HANDLE run(const fs::path& program, const std::string& producer, HANDLE control)
{
    const OwnHandle output(outputFile());
    SetHandleInformation(control, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    std::vector<HANDLE> handles{control};
    if (output.get() != INVALID_HANDLE_VALUE)
        handles.push_back(output.get());
    Inheritance inheritance(handles);
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdInput = control;
    start.StartupInfo.hStdOutput = output.get();
    start.StartupInfo.hStdError = output.get();
    start.lpAttributeList = inheritance.list();
    std::wstring line = quoted(program) + L' ' + quoted(fs::u8path(producer));
    PROCESS_INFORMATION process{};
    const BOOL isStarted =
        CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                       EXTENDED_STARTUPINFO_PRESENT | CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP, nullptr,
                       nullptr, &start.StartupInfo, &process);
    if (!isStarted)
        return nullptr;
    CloseHandle(process.hThread);
    return process.hProcess;
}

std::string endingOf(uint32_t code)
{
    char text[32];
    std::snprintf(text, sizeof text, code >= 0xC0000000u ? "(exception %08X)" : "(exit code %u)",
                  static_cast<unsigned>(code));
    return text;
}

} // namespace

std::unique_ptr<HostProcess> HostProcess::start(const std::string& producer, std::string& problem)
{
    auto [ours, theirs] = gentl::Channel::pair();
    const fs::path program = hostProgram();
    const HANDLE process = theirs.isOpen() ? run(program, producer, handleOf(theirs.descriptor())) : nullptr;
    if (!process) {
        const auto code = static_cast<int>(GetLastError());
        problem = "The helper " + program.u8string() +
                  " cannot be started: " + std::system_category().message(code) + ".";
        return nullptr;
    }
    return std::unique_ptr<HostProcess>(
        new HostProcess(reinterpret_cast<intptr_t>(process), std::move(ours)));
}

HostProcess::~HostProcess()
{
    const std::lock_guard lock(m_mutex);
    m_control.close();
    if (m_process == 0)
        return;
    WaitForSingleObject(handleOf(m_process), kLeaveTime);
    reap();
}

bool HostProcess::connect(const gentl::Channel& requests, const gentl::Channel& loss)
{
    const std::lock_guard lock(m_mutex);
    std::vector<gentl::Channel::Descriptor> ends{requests.descriptor()};
    if (loss.isOpen())
        ends.push_back(loss.descriptor());
    const gentl::Bytes message = gentl::Writer().u32(static_cast<uint32_t>(gentl::Request::Connect)).bytes();
    return m_process != 0 && m_control.send(message, ends, m_process);
}

// One that is over already keeps what it has ended by.
uint32_t HostProcess::reap()
{
    const HANDLE process = handleOf(m_process);
    DWORD code = 0;
    TerminateProcess(process, 1);
    WaitForSingleObject(process, INFINITE);
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    m_process = 0;
    return code;
}

std::string HostProcess::endHung(const std::string& function, int64_t milliseconds)
{
    const std::lock_guard lock(m_mutex);
    if (m_process != 0) {
        reap();
        m_reason = "hung in " + function + " for " + std::to_string(milliseconds) + " ms and was ended";
    }
    return m_reason;
}

// Its connections are closed a moment before it is over.
std::string HostProcess::endGone(const std::string& function)
{
    const std::lock_guard lock(m_mutex);
    if (m_process == 0)
        return m_reason;
    WaitForSingleObject(handleOf(m_process), kLeaveTime);
    const uint32_t code = reap();
    if (code == static_cast<uint32_t>(gentl::ExitMemory))
        m_reason = "took more memory than it may (KX_GENTL_MEMORY)";
    else
        m_reason = "crashed in " + function + " " + endingOf(code);
    return m_reason;
}

bool HostProcess::isOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_process == 0;
}

} // namespace kx
