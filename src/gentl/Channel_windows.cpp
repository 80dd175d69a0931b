#include "gentl/Channel.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>

namespace gentl
{

namespace
{

using Outcome = Channel::Outcome;
using Descriptor = Channel::Descriptor;

constexpr size_t kMostEnds = 2;          // with one message
constexpr DWORD kRoom = 4 * kMaxMessage; // of a pipe; what has no room waits for its reader

HANDLE handleOf(Descriptor descriptor)
{
    return reinterpret_cast<HANDLE>(descriptor);
}

// One reading or writing that is under way.
class Transfer
{
public:
    Transfer() { m_state.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr); }
    ~Transfer() { CloseHandle(m_state.hEvent); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    OVERLAPPED* state() { return &m_state; }

    // Of what ReadFile() or WriteFile() has said. ERROR_SUCCESS, with the size; WAIT_TIMEOUT: nothing was
    // moved.
    DWORD end(HANDLE pipe, BOOL isOver, DWORD patience, DWORD& size)
    {
        if (!isOver && GetLastError() != ERROR_IO_PENDING)
            return GetLastError();
        const bool isLate = !isOver && WaitForSingleObject(m_state.hEvent, patience) == WAIT_TIMEOUT;
        if (isLate)
            CancelIoEx(pipe, &m_state);
        if (GetOverlappedResult(pipe, &m_state, &size, TRUE))
            return ERROR_SUCCESS;
        const DWORD error = GetLastError();
        return isLate && error == ERROR_OPERATION_ABORTED ? DWORD(WAIT_TIMEOUT) : error;
    }

private:
    OVERLAPPED m_state{};
};

// How many ends come with the message stands before it, then their handles, which are the receiver's own.
using Count = uint32_t;

Bytes framed(const Bytes& message, const std::vector<uint64_t>& ends)
{
    const auto count = static_cast<Count>(ends.size());
    Bytes frame(sizeof count + ends.size() * sizeof(uint64_t));
    std::memcpy(frame.data(), &count, sizeof count);
    if (count > 0)
        std::memcpy(frame.data() + sizeof count, ends.data(), count * sizeof(uint64_t));
    frame.insert(frame.end(), message.begin(), message.end());
    return frame;
}

bool unframe(Bytes& message, std::vector<Channel>& ends)
{
    Count count = 0;
    if (message.size() < sizeof count)
        return false;
    std::memcpy(&count, message.data(), sizeof count);
    const size_t head = sizeof count + count * sizeof(uint64_t);
    if (count > kMostEnds || message.size() < head)
        return false;
    for (Count i = 0; i < count; ++i) {
        uint64_t end = 0;
        std::memcpy(&end, message.data() + sizeof count + i * sizeof end, sizeof end);
        ends.emplace_back(static_cast<Descriptor>(end));
    }
    message.erase(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(head));
    return true;
}

// A handle of the process's own; 0: it could not be had.
uint64_t duplicated(Descriptor end, HANDLE process)
{
    HANDLE copy = nullptr;
    const BOOL isDone =
        DuplicateHandle(GetCurrentProcess(), handleOf(end), process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return isDone ? reinterpret_cast<uint64_t>(copy) : 0;
}

DWORD patienceUntil(std::optional<Channel::Clock::time_point> deadline)
{
    using std::chrono::milliseconds;
    if (!deadline)
        return INFINITE;
    const auto left = std::chrono::ceil<milliseconds>(*deadline - Channel::Clock::now()).count();
    return static_cast<DWORD>(std::clamp<int64_t>(left, 0, 3600000));
}

} // namespace

Channel& Channel::operator=(Channel&& other) noexcept
{
    if (this != &other) {
        close();
        m_descriptor = std::exchange(other.m_descriptor, kNone);
    }
    return *this;
}

// Nobody else can be in between: the name is new, and has one instance, for processes of this machine.
std::pair<Channel, Channel> Channel::pair()
{
    static std::atomic<unsigned> number{0};
    LARGE_INTEGER moment{};
    QueryPerformanceCounter(&moment);
    const std::wstring name = L"\\\\.\\pipe\\ie_gentl_" + std::to_wstring(GetCurrentProcessId()) + L'_' +
                              std::to_wstring(moment.QuadPart) + L'_' + std::to_wstring(++number);
    Channel first(reinterpret_cast<Descriptor>(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, kRoom, kRoom,
        0, nullptr)));
    if (!first.isOpen())
        return {};
    Channel second(
        reinterpret_cast<Descriptor>(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                 OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr)));
    DWORD mode = PIPE_READMODE_MESSAGE;
    if (!second.isOpen() || !SetNamedPipeHandleState(handleOf(second.descriptor()), &mode, nullptr, nullptr))
        return {};
    return {std::move(first), std::move(second)};
}

void Channel::close()
{
    if (isOpen())
        CloseHandle(handleOf(m_descriptor));
    m_descriptor = kNone;
}

void Channel::shutDown()
{
    if (isOpen())
        DisconnectNamedPipe(handleOf(m_descriptor));
}

bool Channel::send(const Bytes& message, const std::vector<Descriptor>& handedOver, intptr_t process)
{
    const HANDLE receiver = process ? reinterpret_cast<HANDLE>(process) : GetCurrentProcess();
    std::vector<uint64_t> ends;
    for (const Descriptor end : handedOver) {
        ends.push_back(duplicated(end, receiver));
        if (ends.back() == 0)
            return false;
    }
    const Bytes frame = framed(message, ends);
    const HANDLE pipe = handleOf(m_descriptor);
    Transfer transfer;
    DWORD size = 0;
    const BOOL isOver =
        WriteFile(pipe, frame.data(), static_cast<DWORD>(frame.size()), nullptr, transfer.state());
    return transfer.end(pipe, isOver, INFINITE, size) == ERROR_SUCCESS && size == frame.size();
}

Channel::Outcome Channel::receive(Bytes& message, std::optional<Clock::time_point> deadline,
                                  std::vector<Channel>* taken)
{
    const HANDLE pipe = handleOf(m_descriptor);
    message.resize(sizeof(Count) + kMostEnds * sizeof(uint64_t) + kMaxMessage);
    Transfer transfer;
    DWORD size = 0;
    const BOOL isOver =
        ReadFile(pipe, message.data(), static_cast<DWORD>(message.size()), nullptr, transfer.state());
    const DWORD error = transfer.end(pipe, isOver, patienceUntil(deadline), size);
    message.resize(error == ERROR_SUCCESS ? size : 0);
    if (error == WAIT_TIMEOUT)
        return Outcome::TimedOut;
    std::vector<Channel> ends; // closed again unless somebody takes them
    const bool isMessage = error == ERROR_SUCCESS && unframe(message, ends) && message.size() <= kMaxMessage;
    if (taken)
        *taken = std::move(ends);
    return isMessage ? Outcome::Done : Outcome::Gone;
}

} // namespace gentl
