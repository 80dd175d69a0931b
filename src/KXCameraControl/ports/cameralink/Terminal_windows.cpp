#include "KXCameraControl/ports/cameralink/Terminal.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <system_error>
#include <thread>

namespace kx
{

using std::chrono::milliseconds;

namespace
{

// Between two readings that get nothing.
constexpr milliseconds kReadPause{1};

constexpr char kDevices[] = "\\\\.\\"; // in front of a device's name, where a file's could stand

std::string reasonOf(DWORD error)
{
    return std::system_category().message(static_cast<int>(error));
}

// "COM12" as the system wants it: the numbers behind COM9 are no names of files.
std::string devicePath(const std::string& name)
{
    const bool isPort = name.size() > 3 && _strnicmp(name.c_str(), "COM", 3) == 0;
    return isPort ? kDevices + name : name;
}

KX_Status statusOfOpening(DWORD error)
{
    switch (error) {
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
        return KX_E_CONTROL_REFUSED;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_DEV_NOT_EXIST:
        return KX_E_NO_DEVICE;
    default:
        return KX_E_NETWORK;
    }
}

class Terminal final : public SerialLine
{
public:
    explicit Terminal(std::string name) : m_name(std::move(name)) {}
    ~Terminal() override
    {
        Terminal::close();
        CloseHandle(m_event);
    }

    KX_Status open() override;
    void close() override;
    bool isOpen() const override { return m_line != INVALID_HANDLE_VALUE; }
    bool setBaudRate(uint32_t baud) override;
    Outcome write(const uint8_t* data, size_t size, Clock::time_point deadline) override;
    Outcome read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline) override;
    std::string name() const override { return m_name; }
    std::string errorText() const override { return m_errorText; }

private:
    KX_Status fail(KX_Status status, const std::string& text);
    KX_Status take();
    Outcome judge(DWORD error);
    // What ReadFile() or WriteFile() has begun; `count` bytes were moved, some or none when the time is over.
    Outcome end(OVERLAPPED& transfer, BOOL isOver, Clock::time_point deadline, DWORD& count);

    const std::string m_name;
    HANDLE m_line = INVALID_HANDLE_VALUE;
    const HANDLE m_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::string m_errorText;
};

KX_Status Terminal::fail(KX_Status status, const std::string& text)
{
    m_errorText = m_name + ": " + text;
    return status;
}

// Nobody else can open it meanwhile. Another look at the line takes it for moments only.
KX_Status Terminal::open()
{
    const auto end = Clock::now() + kLookPatience;
    DWORD error = ERROR_SUCCESS;
    do {
        m_line = CreateFileA(devicePath(m_name).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                             OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
        error = isOpen() ? ERROR_SUCCESS : GetLastError();
        if (statusOfOpening(error) != KX_E_CONTROL_REFUSED)
            break;
        std::this_thread::sleep_for(kLookPause);
    } while (Clock::now() < end);
    if (!isOpen()) {
        const KX_Status status = statusOfOpening(error);
        return fail(status,
                    status == KX_E_CONTROL_REFUSED ? "another program uses the line" : reasonOf(error));
    }
    const KX_Status status = take();
    if (status != KX_OK)
        close();
    return status;
}

// A reading gives what is there, if there is any, and waits for no more.
KX_Status Terminal::take()
{
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (!GetCommState(m_line, &settings))
        return fail(KX_E_NETWORK, "is no serial line");
    COMMTIMEOUTS waits{};
    waits.ReadIntervalTimeout = MAXDWORD;
    if (!SetCommTimeouts(m_line, &waits))
        return fail(KX_E_NETWORK, reasonOf(GetLastError()));
    return setBaudRate(9600) ? KX_OK : KX_E_NETWORK;
}

void Terminal::close()
{
    if (isOpen())
        CloseHandle(m_line);
    m_line = INVALID_HANDLE_VALUE;
}

bool Terminal::setBaudRate(uint32_t baud)
{
    DCB settings{};
    settings.DCBlength = sizeof settings;
    settings.BaudRate = baud;
    settings.fBinary = TRUE;
    settings.fDtrControl = DTR_CONTROL_ENABLE;
    settings.fRtsControl = RTS_CONTROL_ENABLE;
    settings.ByteSize = 8;
    settings.Parity = NOPARITY;
    settings.StopBits = ONESTOPBIT;
    if (!SetCommState(m_line, &settings)) {
        fail(KX_E_NETWORK, "cannot be set to " + std::to_string(baud) + " baud");
        return false;
    }
    PurgeComm(m_line, PURGE_RXCLEAR);
    return true;
}

Terminal::Outcome Terminal::judge(DWORD error)
{
    fail(KX_E_NETWORK, reasonOf(error));
    const bool isGone = error == ERROR_ACCESS_DENIED || error == ERROR_BAD_COMMAND ||
                        error == ERROR_DEVICE_NOT_CONNECTED || error == ERROR_DEVICE_REMOVED ||
                        error == ERROR_GEN_FAILURE || error == ERROR_INVALID_HANDLE;
    return isGone ? Outcome::Gone : Outcome::Failed; // adapters that are pulled out say one of these
}

Terminal::Outcome Terminal::end(OVERLAPPED& transfer, BOOL isOver, Clock::time_point deadline, DWORD& count)
{
    if (!isOver && GetLastError() != ERROR_IO_PENDING)
        return judge(GetLastError());
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
    const auto patience = static_cast<DWORD>(std::clamp<int64_t>(left, 0, 3600000));
    const bool isLate = !isOver && WaitForSingleObject(m_event, patience) == WAIT_TIMEOUT;
    if (isLate)
        CancelIoEx(m_line, &transfer);
    if (GetOverlappedResult(m_line, &transfer, &count, TRUE))
        return count == 0 && isLate ? Outcome::TimedOut : Outcome::Done;
    const DWORD error = GetLastError();
    count = 0;
    return isLate && error == ERROR_OPERATION_ABORTED ? Outcome::TimedOut : judge(error);
}

Terminal::Outcome Terminal::write(const uint8_t* data, size_t size, Clock::time_point deadline)
{
    for (size_t done = 0; done < size;) {
        OVERLAPPED transfer{};
        transfer.hEvent = m_event;
        const BOOL isOver =
            WriteFile(m_line, data + done, static_cast<DWORD>(size - done), nullptr, &transfer);
        DWORD count = 0;
        const Outcome outcome = end(transfer, isOver, deadline, count);
        if (outcome != Outcome::Done)
            return outcome;
        done += count;
    }
    return Outcome::Done;
}

Terminal::Outcome Terminal::read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline)
{
    for (;;) {
        OVERLAPPED transfer{};
        transfer.hEvent = m_event;
        const BOOL isOver = ReadFile(m_line, data, static_cast<DWORD>(capacity), nullptr, &transfer);
        DWORD count = 0;
        const Outcome outcome = end(transfer, isOver, deadline, count);
        if (outcome != Outcome::Done)
            return outcome;
        size = count;
        if (count > 0)
            return Outcome::Done;
        if (Clock::now() >= deadline)
            return Outcome::TimedOut;
        std::this_thread::sleep_for(kReadPause);
    }
}

} // namespace

std::unique_ptr<SerialLine> newTerminal(const std::string& name)
{
    return std::make_unique<Terminal>(name);
}

bool isTerminalThere(const std::string& name)
{
    const bool isPath = name.rfind(kDevices, 0) == 0;
    const std::string port = isPath ? name.substr(std::strlen(kDevices)) : name;
    char target[512];
    return QueryDosDeviceA(port.c_str(), target, sizeof target) != 0;
}

// Every user may open every line here.
bool isTerminalForbidden(const std::string&)
{
    return false;
}

} // namespace kx
