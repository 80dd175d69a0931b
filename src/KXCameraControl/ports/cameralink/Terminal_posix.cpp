#include "KXCameraControl/ports/cameralink/Terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

namespace kx
{

using std::chrono::milliseconds;

namespace
{

class Terminal final : public SerialLine
{
public:
    explicit Terminal(std::string path) : m_path(std::move(path)) {}
    ~Terminal() override { Terminal::close(); }

    KX_Status open() override;
    void close() override;
    bool isOpen() const override { return m_descriptor >= 0; }
    bool setBaudRate(uint32_t baud) override;
    Outcome write(const uint8_t* data, size_t size, Clock::time_point deadline) override;
    Outcome read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline) override;
    std::string name() const override { return m_path; }
    std::string errorText() const override { return m_errorText; }

private:
    KX_Status fail(KX_Status status, const std::string& text);
    KX_Status take();
    Outcome wait(short events, Clock::time_point deadline);
    Outcome judgeErrno();

    const std::string m_path;
    int m_descriptor = -1;
    std::string m_errorText;
};

KX_Status statusOfOpening(int code)
{
    switch (code) {
    case EBUSY:
        return KX_E_CONTROL_REFUSED;
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return KX_E_NO_DEVICE;
    default:
        return KX_E_NETWORK;
    }
}

KX_Status Terminal::fail(KX_Status status, const std::string& text)
{
    m_errorText = m_path + ": " + text;
    return status;
}

KX_Status Terminal::open()
{
    // Not blocking: a modem line would wait for its carrier, a FIFO for its other end.
    m_descriptor = ::open(m_path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_descriptor < 0) {
        const int code = errno;
        return fail(statusOfOpening(code), std::strerror(code));
    }
    const KX_Status status = take();
    if (status != KX_OK)
        close();
    return status;
}

KX_Status Terminal::take()
{
    if (!isatty(m_descriptor))
        return fail(KX_E_NETWORK, "is no serial line");
    // The lock keeps out programs that look for it, root's too; exclusive use keeps out all others but
    // root's.
    const auto end = Clock::now() + kLookPatience;
    while (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || Clock::now() >= end)
            return fail(errno == EWOULDBLOCK ? KX_E_CONTROL_REFUSED : KX_E_NETWORK,
                        errno == EWOULDBLOCK ? "another program uses the line" : std::strerror(errno));
        std::this_thread::sleep_for(kLookPause);
    }
    if (ioctl(m_descriptor, TIOCEXCL) != 0)
        return fail(KX_E_NETWORK, std::strerror(errno));
    return setBaudRate(9600) ? KX_OK : KX_E_NETWORK;
}

void Terminal::close()
{
    if (m_descriptor < 0)
        return;
    ioctl(m_descriptor, TIOCNXCL);
    ::close(m_descriptor); // gives the lock back as well
    m_descriptor = -1;
}

bool Terminal::setBaudRate(uint32_t baud)
{
    termios settings{};
    if (tcgetattr(m_descriptor, &settings) != 0 || cfsetspeed(&settings, baud) != 0) {
        fail(KX_E_NETWORK, "cannot be set to " + std::to_string(baud) + " baud");
        return false;
    }
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | PARENB | CRTSCTS);
    if (tcsetattr(m_descriptor, TCSADRAIN, &settings) != 0 || tcflush(m_descriptor, TCIFLUSH) != 0) {
        fail(KX_E_NETWORK, std::strerror(errno));
        return false;
    }
    return true;
}

Terminal::Outcome Terminal::judgeErrno()
{
    const int code = errno;
    fail(KX_E_NETWORK, std::strerror(code));
    return code == EIO || code == ENXIO || code == ENODEV ? Outcome::Gone : Outcome::Failed;
}

Terminal::Outcome Terminal::wait(short events, Clock::time_point deadline)
{
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
        pollfd entry{m_descriptor, events, 0};
        const int count = poll(&entry, 1, static_cast<int>(std::clamp<int64_t>(left, 0, 3600000)));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return judgeErrno();
        if (count == 0)
            return Outcome::TimedOut;
        if (entry.revents & events)
            return Outcome::Done;
        fail(KX_E_CONNECTION_LOST, "the line hung up");
        return Outcome::Gone;
    }
}

Terminal::Outcome Terminal::write(const uint8_t* data, size_t size, Clock::time_point deadline)
{
    for (size_t done = 0; done < size;) {
        const ssize_t count = ::write(m_descriptor, data + done, size - done);
        if (count > 0) {
            done += static_cast<size_t>(count);
        } else if (errno != EAGAIN && errno != EINTR) {
            return judgeErrno();
        } else if (const Outcome waited = wait(POLLOUT, deadline); waited != Outcome::Done) {
            return waited;
        }
    }
    return Outcome::Done;
}

Terminal::Outcome Terminal::read(uint8_t* data, size_t capacity, size_t& size, Clock::time_point deadline)
{
    for (;;) {
        const Outcome waited = wait(POLLIN, deadline);
        if (waited != Outcome::Done)
            return waited;
        const ssize_t count = ::read(m_descriptor, data, capacity);
        if (count > 0) {
            size = static_cast<size_t>(count);
            return Outcome::Done;
        }
        if (count == 0) {
            fail(KX_E_CONNECTION_LOST, "the line hung up");
            return Outcome::Gone;
        }
        if (errno != EAGAIN && errno != EINTR)
            return judgeErrno();
    }
}

} // namespace

std::unique_ptr<SerialLine> newTerminal(const std::string& name)
{
    return std::make_unique<Terminal>(name);
}

bool isTerminalThere(const std::string& name)
{
    struct stat state = {};
    return ::stat(name.c_str(), &state) == 0;
}

bool isTerminalForbidden(const std::string& name)
{
    return ::access(name.c_str(), R_OK | W_OK) != 0 && errno == EACCES;
}

} // namespace kx
