#include "camera_emulator/SerialCamera.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace emu
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

constexpr uint64_t kBaudRegister = kTechnologyRegisters + kCurrentBaudRate;

const BaudRate* rateOfBit(uint64_t bit)
{
    const auto* rate = std::find_if(std::begin(kBaudRates), std::end(kBaudRates),
                                    [&](const BaudRate& one) { return one.bit == bit; });
    return rate == std::end(kBaudRates) ? nullptr : rate;
}

const BaudRate* rateOf(uint32_t baud)
{
    const auto* rate = std::find_if(std::begin(kBaudRates), std::end(kBaudRates),
                                    [&](const BaudRate& one) { return one.baud == baud; });
    return rate == std::end(kBaudRates) ? nullptr : rate;
}

bool everyNth(unsigned n, unsigned& counter)
{
    return n != 0 && ++counter % n == 0;
}

// The terminal as a host meets it first.
void makeRaw(int descriptor)
{
    termios settings{};
    tcgetattr(descriptor, &settings);
    cfmakeraw(&settings);
    cfsetspeed(&settings, kBaudRates[0].baud);
    tcsetattr(descriptor, TCSANOW, &settings);
}

} // namespace

SerialCamera::SerialCamera(const CameraConfig& config, const SerialConfig& serial)
    : GenCpShell(config, ByteOrder::Big), m_serial(serial), m_confirmed(rateOf(serial.baud)),
      m_current(m_confirmed)
{
    m_responder.writeNumber(kTechnologyRegisters + kSupportedBaudRates, serial.supported, 4);
    if (!m_current)
        m_core.problem = std::to_string(serial.baud) + " is no baud rate of a camera.";
    else
        setRate(m_current);
    deliver();
}

SerialCamera::~SerialCamera()
{
    SerialCamera::stop();
}

std::string SerialCamera::openTerminal()
{
    m_host = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (m_host < 0 || ::grantpt(m_host) != 0 || ::unlockpt(m_host) != 0)
        return std::string("No pseudo terminal: ") + std::strerror(errno) + ".";
    m_path = ::ptsname(m_host);
    makeRaw(m_host);
    m_keeper = ::open(m_path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_keeper < 0 || ::pipe2(m_wake, O_CLOEXEC | O_NONBLOCK) != 0)
        return m_path + ": " + std::strerror(errno) + ".";
    if (m_serial.link.empty())
        return {};
    ::unlink(m_serial.link.c_str());
    if (::symlink(m_path.c_str(), m_serial.link.c_str()) != 0)
        return m_serial.link + " cannot be made: " + std::strerror(errno) + ".";
    return {};
}

void SerialCamera::closeTerminal()
{
    for (int* descriptor : {&m_host, &m_keeper, &m_wake[0], &m_wake[1]}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
    if (!m_serial.link.empty() && !m_path.empty())
        ::unlink(m_serial.link.c_str());
    m_path.clear();
}

void SerialCamera::setRate(const BaudRate* rate)
{
    m_current = rate;
    m_baud = rate->baud;
    m_responder.writeNumber(kBaudRegister, rate->bit, 4);
}

// Both ends have one rate, or the bytes are noise.
bool SerialCamera::isHeard() const
{
    termios settings{};
    termios own{};
    return m_current->baud <= m_serial.fastest && tcgetattr(m_host, &settings) == 0 &&
           cfsetspeed(&own, m_current->baud) == 0 && cfgetospeed(&settings) == cfgetospeed(&own);
}

void SerialCamera::dropUnconfirmedRate()
{
    if (m_current == m_confirmed || Clock::now() < m_confirmBy)
        return;
    const std::lock_guard lock(m_mutex);
    setRate(m_confirmed);
}

void SerialCamera::takeBytes()
{
    uint8_t bytes[2048];
    const ssize_t count = ::read(m_host, bytes, sizeof bytes);
    if (count <= 0)
        return;
    if (m_downUntil || !isHeard()) {
        m_frames.clear();
        return;
    }
    m_frames.add(bytes, static_cast<size_t>(count));
    while (const auto frame = m_frames.next())
        takePacket(frame->packet);
}

// Nothing: the packet asks for no rate. Null: for one that this camera has not.
std::optional<const BaudRate*> SerialCamera::rateAskedFor(const Bytes& packet) const
{
    const auto command = decodeCommand(packet.data(), packet.size(), ByteOrder::Big);
    if (!command || command->command != WriteMemCmd)
        return std::nullopt;
    const auto write = parseWriteMemory(command->scd, ByteOrder::Big);
    if (!write || write->address != kBaudRegister || write->data.size() != 4)
        return std::nullopt;
    const uint64_t bit = gencp::get(write->data.data(), 4, ByteOrder::Big);
    return (m_serial.supported & bit) != 0 ? rateOfBit(bit) : nullptr;
}

void SerialCamera::takePacket(const Bytes& packet)
{
    const std::lock_guard lock(m_mutex);
    const auto asked = rateAskedFor(packet);
    if (asked && !*asked) {
        ++m_responder.counters.refused;
        const auto command = decodeCommand(packet.data(), packet.size(), ByteOrder::Big);
        m_outgoing.push_back(
            {encodeAck({InvalidParameter, WriteMemAck, command->id, {}}, ByteOrder::Big), Clock::now()});
        return;
    }
    auto replies = m_responder.handle(packet, Clock::now());
    if (asked && !replies.empty())
        adoptRate(*asked);
    m_outgoing.insert(m_outgoing.end(), replies.begin(), replies.end());
}

void SerialCamera::adoptRate(const BaudRate* rate)
{
    if (rate == m_current)
        m_confirmed = m_current;
    else
        m_next = rate;
}

void SerialCamera::send(Bytes frame)
{
    if (everyNth(m_serial.noise, m_answers)) {
        frame[frame.size() / 2] ^= 0x10;
        frame.insert(frame.begin(), {0x01, 0x00, 0x55, 0x01, 0x00});
    }
    if (everyNth(m_serial.dropped, m_frameCount))
        frame.erase(frame.begin() + static_cast<ptrdiff_t>(frame.size() / 2));
    if (m_serial.isPaced)
        std::this_thread::sleep_for(std::chrono::microseconds(frame.size() * 10 * 1000000 / m_current->baud));
    for (size_t done = 0; done < frame.size();) { // in pieces, as a line delivers them
        const ssize_t count = ::write(m_host, &frame[done], std::min<size_t>(frame.size() - done, 61));
        if (count <= 0)
            return; // nobody reads
        done += static_cast<size_t>(count);
    }
}

void SerialCamera::sendDue()
{
    while (!m_outgoing.empty() && m_outgoing.front().due <= Clock::now()) {
        if (m_serial.speaksOnOtherChannels) {
            Bytes other = m_outgoing.front().bytes;
            other.back() ^= 0xFF;
            send(serialFrame(1, other));
        }
        send(serialFrame(0, m_outgoing.front().bytes));
        m_outgoing.pop_front();
    }
    if (!m_next || !m_outgoing.empty())
        return;
    const std::lock_guard lock(m_mutex);
    setRate(m_next);
    m_next = nullptr;
    m_confirmBy = Clock::now() + milliseconds(kBaudRateConfirmation);
}

// Behind the last answer; deaf, and at the rate of delivery then.
void SerialCamera::restartAsOrdered()
{
    const std::lock_guard lock(m_mutex);
    if (m_isToRestart && m_outgoing.empty() && !m_downUntil) {
        ++m_responder.counters.restarts;
        m_downUntil = Clock::now() + m_core.config.restartTime;
    } else if (m_downUntil && Clock::now() >= *m_downUntil) {
        m_downUntil.reset();
        powerUp();
        m_confirmed = rateOf(m_serial.baud);
        m_next = nullptr;
        setRate(m_confirmed);
    }
}

void SerialCamera::run()
{
    for (;;) {
        pollfd entries[] = {{m_host, POLLIN, 0}, {m_wake[0], POLLIN, 0}};
        int timeout = m_current == m_confirmed && !m_downUntil ? -1 : 20;
        if (!m_outgoing.empty())
            timeout = static_cast<int>(std::clamp<int64_t>(
                std::chrono::ceil<milliseconds>(m_outgoing.front().due - Clock::now()).count(), 0, 60000));
        (void)::poll(entries, 2, timeout);
        if (entries[1].revents != 0)
            return;
        dropUnconfirmedRate();
        if (entries[0].revents & POLLIN)
            takeBytes();
        sendDue();
        restartAsOrdered();
    }
}

StartResult SerialCamera::start()
{
    if (m_thread.joinable())
        return {};
    if (!m_core.problem.empty())
        return {StartCode::BadConfiguration, m_core.problem};
    const std::string problem = openTerminal();
    if (!problem.empty()) {
        closeTerminal();
        return {StartCode::CannotBind, problem};
    }
    m_thread = std::thread(&SerialCamera::run, this);
    return {};
}

std::string SerialCamera::place() const
{
    return m_serial.link.empty() ? m_path : m_serial.link;
}

void SerialCamera::stop()
{
    if (!m_thread.joinable())
        return;
    ::close(std::exchange(m_wake[1], -1));
    m_thread.join();
    closeTerminal();
    m_outgoing.clear();
}

} // namespace emu
