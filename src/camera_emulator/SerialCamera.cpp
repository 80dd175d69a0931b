#include "camera_emulator/SerialCamera.h"

#include "camera_emulator/CameraCore.h"
#include "camera_emulator/GenCpResponder.h"
#include "gencp/SerialFrame.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

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

struct SerialCamera::State
{
    State(const CameraConfig& config, const SerialConfig& wanted);

    std::string openTerminal();
    void closeTerminal();
    void run();
    void takeBytes();
    void takePacket(const Bytes& packet);
    std::optional<const BaudRate*> rateAskedFor(const Bytes& packet) const;
    void adoptRate(const BaudRate* rate);
    void dropUnconfirmedRate();
    void setRate(const BaudRate* rate);
    void sendDue();
    void send(Bytes frame);
    bool isHeard() const;

    CameraCore core;
    const SerialConfig serial;
    std::string path;

    mutable std::mutex mutex; // guards the responder
    GenCpResponder responder{ByteOrder::Big};
    std::atomic<uint32_t> baud{9600};

    // The camera's thread alone, while it runs.
    SerialFrames frames;
    std::deque<Reply> outgoing;
    const BaudRate* confirmed = nullptr;
    const BaudRate* current = nullptr;
    const BaudRate* next = nullptr; // once all answers are out
    Clock::time_point confirmBy;
    unsigned answers = 0;
    unsigned frameCount = 0;

    int host = -1;   // the camera's end of the terminal
    int keeper = -1; // the other end, open so that a host that leaves does not hang the line up
    int wake[2] = {-1, -1};
    std::thread thread;
};

SerialCamera::State::State(const CameraConfig& config, const SerialConfig& wanted)
    : core(config), serial(wanted)
{
    responder.latency = config.latency;
    responder.readOnly = core.nodes->readOnlyRegisters();
    writeGenCpBootstrap(config, core.description, responder);
    responder.writeNumber(kTechnologyRegisters + kSupportedBaudRates, serial.supported, 4);
    current = confirmed = rateOf(serial.baud);
    if (!current)
        core.problem = std::to_string(serial.baud) + " is no baud rate of a camera.";
    else
        setRate(current);
    core.seed(responder.memory);
}

std::string SerialCamera::State::openTerminal()
{
    host = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (host < 0 || ::grantpt(host) != 0 || ::unlockpt(host) != 0)
        return std::string("No pseudo terminal: ") + std::strerror(errno) + ".";
    path = ::ptsname(host);
    makeRaw(host);
    keeper = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (keeper < 0 || ::pipe2(wake, O_CLOEXEC | O_NONBLOCK) != 0)
        return path + ": " + std::strerror(errno) + ".";
    if (serial.link.empty())
        return {};
    ::unlink(serial.link.c_str());
    if (::symlink(path.c_str(), serial.link.c_str()) != 0)
        return serial.link + " cannot be made: " + std::strerror(errno) + ".";
    return {};
}

void SerialCamera::State::closeTerminal()
{
    for (int* descriptor : {&host, &keeper, &wake[0], &wake[1]}) {
        if (*descriptor >= 0)
            ::close(*descriptor);
        *descriptor = -1;
    }
    if (!serial.link.empty() && !path.empty())
        ::unlink(serial.link.c_str());
    path.clear();
}

void SerialCamera::State::setRate(const BaudRate* rate)
{
    current = rate;
    baud = rate->baud;
    responder.writeNumber(kBaudRegister, rate->bit, 4);
}

// Both ends have one rate, or the bytes are noise.
bool SerialCamera::State::isHeard() const
{
    termios settings{};
    termios own{};
    return current->baud <= serial.fastest && tcgetattr(host, &settings) == 0 &&
           cfsetspeed(&own, current->baud) == 0 && cfgetospeed(&settings) == cfgetospeed(&own);
}

void SerialCamera::State::dropUnconfirmedRate()
{
    if (current == confirmed || Clock::now() < confirmBy)
        return;
    const std::lock_guard lock(mutex);
    setRate(confirmed);
}

void SerialCamera::State::takeBytes()
{
    uint8_t bytes[2048];
    const ssize_t count = ::read(host, bytes, sizeof bytes);
    if (count <= 0)
        return;
    if (!isHeard()) {
        frames.clear();
        return;
    }
    frames.add(bytes, static_cast<size_t>(count));
    while (const auto frame = frames.next())
        takePacket(frame->packet);
}

// Nothing: the packet asks for no rate. Null: for one that this camera has not.
std::optional<const BaudRate*> SerialCamera::State::rateAskedFor(const Bytes& packet) const
{
    const auto command = decodeCommand(packet.data(), packet.size(), ByteOrder::Big);
    if (!command || command->command != WriteMemCmd)
        return std::nullopt;
    const auto write = parseWriteMemory(command->scd, ByteOrder::Big);
    if (!write || write->address != kBaudRegister || write->data.size() != 4)
        return std::nullopt;
    const uint64_t bit = gencp::get(write->data.data(), 4, ByteOrder::Big);
    return (serial.supported & bit) != 0 ? rateOfBit(bit) : nullptr;
}

void SerialCamera::State::takePacket(const Bytes& packet)
{
    const std::lock_guard lock(mutex);
    const auto asked = rateAskedFor(packet);
    if (asked && !*asked) {
        ++responder.counters.refused;
        const auto command = decodeCommand(packet.data(), packet.size(), ByteOrder::Big);
        outgoing.push_back(
            {encodeAck({InvalidParameter, WriteMemAck, command->id, {}}, ByteOrder::Big), Clock::now()});
        return;
    }
    auto replies = responder.handle(packet, Clock::now());
    if (asked && !replies.empty())
        adoptRate(*asked);
    outgoing.insert(outgoing.end(), replies.begin(), replies.end());
}

void SerialCamera::State::adoptRate(const BaudRate* rate)
{
    if (rate == current)
        confirmed = current;
    else
        next = rate;
}

void SerialCamera::State::send(Bytes frame)
{
    if (everyNth(serial.noise, answers)) {
        frame[frame.size() / 2] ^= 0x10;
        frame.insert(frame.begin(), {0x01, 0x00, 0x55, 0x01, 0x00});
    }
    if (everyNth(serial.dropped, frameCount))
        frame.erase(frame.begin() + static_cast<ptrdiff_t>(frame.size() / 2));
    if (serial.isPaced)
        std::this_thread::sleep_for(std::chrono::microseconds(frame.size() * 10 * 1000000 / current->baud));
    for (size_t done = 0; done < frame.size();) { // in pieces, as a line delivers them
        const ssize_t count = ::write(host, &frame[done], std::min<size_t>(frame.size() - done, 61));
        if (count <= 0)
            return; // nobody reads
        done += static_cast<size_t>(count);
    }
}

void SerialCamera::State::sendDue()
{
    while (!outgoing.empty() && outgoing.front().due <= Clock::now()) {
        if (serial.speaksOnOtherChannels) {
            Bytes other = outgoing.front().bytes;
            other.back() ^= 0xFF;
            send(serialFrame(1, other));
        }
        send(serialFrame(0, outgoing.front().bytes));
        outgoing.pop_front();
    }
    if (!next || !outgoing.empty())
        return;
    const std::lock_guard lock(mutex);
    setRate(next);
    next = nullptr;
    confirmBy = Clock::now() + milliseconds(kBaudRateConfirmation);
}

void SerialCamera::State::run()
{
    for (;;) {
        pollfd entries[] = {{host, POLLIN, 0}, {wake[0], POLLIN, 0}};
        int timeout = current == confirmed ? -1 : 20;
        if (!outgoing.empty())
            timeout = static_cast<int>(std::clamp<int64_t>(
                std::chrono::ceil<milliseconds>(outgoing.front().due - Clock::now()).count(), 0, 60000));
        (void)::poll(entries, 2, timeout);
        if (entries[1].revents != 0)
            return;
        dropUnconfirmedRate();
        if (entries[0].revents & POLLIN)
            takeBytes();
        sendDue();
    }
}

SerialCamera::SerialCamera(const CameraConfig& config, const SerialConfig& serial)
    : m_state(std::make_unique<State>(config, serial))
{}

SerialCamera::~SerialCamera()
{
    SerialCamera::stop();
}

StartResult SerialCamera::start()
{
    State& state = *m_state;
    if (state.thread.joinable())
        return {};
    if (!state.core.problem.empty())
        return {StartCode::BadConfiguration, state.core.problem};
    const std::string problem = state.openTerminal();
    if (!problem.empty()) {
        state.closeTerminal();
        return {StartCode::CannotBind, problem};
    }
    state.thread = std::thread(&State::run, &state);
    return {};
}

std::string SerialCamera::place() const
{
    return m_state->serial.link.empty() ? m_state->path : m_state->serial.link;
}

void SerialCamera::stop()
{
    State& state = *m_state;
    if (!state.thread.joinable())
        return;
    ::close(state.wake[1]);
    state.wake[1] = -1;
    state.thread.join();
    state.closeTerminal();
    state.outgoing.clear();
}

const std::string& SerialCamera::path() const
{
    return m_state->path;
}

const CameraConfig& SerialCamera::config() const
{
    return m_state->core.config;
}

const std::vector<std::string>& SerialCamera::seedProblems() const
{
    return m_state->core.seeded.problems;
}

const std::vector<std::string>& SerialCamera::seedRemarks() const
{
    return m_state->core.seeded.remarks;
}

uint32_t SerialCamera::baudRate() const
{
    return m_state->baud;
}

Bytes SerialCamera::peek(uint64_t address, size_t size) const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->responder.memory.read(address, size);
}

void SerialCamera::poke(uint64_t address, const Bytes& data)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->responder.memory.write(address, data);
}

std::optional<NodeValue> SerialCamera::node(const std::string& name) const
{
    const auto field = m_state->core.nodes->field(name);
    if (!std::holds_alternative<RegisterField>(field))
        return std::nullopt;
    const std::lock_guard lock(m_state->mutex);
    return decode(std::get<RegisterField>(field), m_state->responder.memory);
}

std::vector<std::string> SerialCamera::change(const std::string& json)
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->core.change(json, m_state->responder.memory);
}

void SerialCamera::setFaults(const Faults& faults)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->responder.gate.set(faults);
}

Counters SerialCamera::counters() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->responder.counters;
}

void SerialCamera::resetCounters()
{
    const std::lock_guard lock(m_state->mutex);
    m_state->responder.counters = {};
}

} // namespace emu
