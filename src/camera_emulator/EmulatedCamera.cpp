#include "camera_emulator/EmulatedCamera.h"

#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/BuiltIn.h"
#include "camera_emulator/Files.h"
#include "camera_emulator/Responder.h"
#include "camera_emulator/Seed.h"
#include "camera_emulator/UdpSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <thread>

namespace emu
{
namespace
{

struct Waiting
{
    Peer peer;
    Bytes packet;
};

// Blocks until a socket or the wake pipe has something, or `due` has come.
void waitForTraffic(const UdpSocket& unicast, const UdpSocket& broadcast, int wake,
                    std::optional<Clock::time_point> due)
{
    // poll() leaves negative descriptors out.
    pollfd entries[] = {
        {unicast.descriptor(), POLLIN, 0}, {broadcast.descriptor(), POLLIN, 0}, {wake, POLLIN, 0}};
    int timeout = -1;
    if (due) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*due - Clock::now()).count();
        timeout = static_cast<int>(std::clamp<int64_t>(left, 0, 60000));
    }
    (void)::poll(entries, 3, timeout);
}

} // namespace

struct EmulatedCamera::State
{
    explicit State(const CameraConfig& wanted);
    void run();
    void takePackets(UdpSocket& socket);
    void sendDue();

    const CameraConfig config;
    std::optional<uint32_t> address;
    std::string description;
    std::string problem; // with the configuration
    SeedResult seeded;
    std::optional<Description> nodes; // constant after construction

    mutable std::mutex mutex; // guards the responder
    mutable Responder responder;

    // The camera's thread alone, while it runs.
    std::multimap<Clock::time_point, Waiting> outgoing;
    UdpSocket unicast;
    UdpSocket broadcast;

    int wake[2] = {-1, -1}; // closed at its writing end to end the thread
    std::thread thread;
};

EmulatedCamera::State::State(const CameraConfig& wanted)
    : config(wanted), address(gvcp::parseAddress(wanted.address))
{
    const bool builtIn = config.description.empty() && config.descriptionFile.empty();
    if (!address)
        problem = "\"" + config.address + "\" is no IPv4 address.";
    if (builtIn) {
        description = builtInDescription();
    } else if (!config.description.empty()) {
        description = config.description;
    } else {
        description = readFile(config.descriptionFile).value_or("");
        if (description.empty())
            problem = "The description " + config.descriptionFile + " cannot be read or is empty.";
    }
    if (description.size() > kMaxDescriptionSize)
        problem = "The description is longer than " + std::to_string(kMaxDescriptionSize) + " bytes.";

    nodes.emplace(description);
    responder.latency = config.latency;
    responder.concatenation = config.concatenation;
    responder.readOnly = nodes->readOnlyRegisters();
    responder.readOnly.add(readOnlyBootstrap());
    writeBootstrap(config, address.value_or(0), responder.memory);
    writeDescription(config, description, nodes->schemaVersion(), responder.memory, responder.readOnly);
    if (builtIn)
        seeded = applySeed(builtInSeed(), *nodes, responder.memory);
    if (!config.seed.empty()) {
        const SeedResult own = applySeed(config.seed, *nodes, responder.memory);
        seeded.problems.insert(seeded.problems.end(), own.problems.begin(), own.problems.end());
        seeded.remarks.insert(seeded.remarks.end(), own.remarks.begin(), own.remarks.end());
    }
}

void EmulatedCamera::State::takePackets(UdpSocket& socket)
{
    Peer peer;
    while (socket.descriptor() >= 0) {
        const auto packet = socket.receive(peer);
        if (!packet)
            return;
        std::lock_guard lock(mutex);
        for (Reply& reply : responder.handle(packet->data(), packet->size(), peer, Clock::now()))
            outgoing.emplace(reply.due, Waiting{peer, std::move(reply.bytes)});
    }
}

void EmulatedCamera::State::sendDue()
{
    const auto end = outgoing.upper_bound(Clock::now());
    for (auto entry = outgoing.begin(); entry != end; entry = outgoing.erase(entry))
        unicast.send(entry->second.packet, entry->second.peer);
}

void EmulatedCamera::State::run()
{
    for (;;) {
        waitForTraffic(unicast, broadcast, wake[0],
                       outgoing.empty() ? std::nullopt : std::make_optional(outgoing.begin()->first));
        char byte;
        if (::read(wake[0], &byte, 1) == 0)
            return;
        takePackets(unicast);
        takePackets(broadcast);
        sendDue();
    }
}

EmulatedCamera::EmulatedCamera(const CameraConfig& config) : m_state(std::make_unique<State>(config)) {}

EmulatedCamera::~EmulatedCamera()
{
    stop();
}

StartResult EmulatedCamera::start()
{
    State& state = *m_state;
    if (state.thread.joinable())
        return {};
    if (!state.problem.empty())
        return {StartCode::BadConfiguration, state.problem};
    std::optional<std::string> reason = state.unicast.bind(*state.address, gvcp::kPort, false);
    if (!reason && state.config.broadcast)
        reason = state.broadcast.bind(0xFFFFFFFF, gvcp::kPort, true);
    if (!reason && ::pipe2(state.wake, O_CLOEXEC | O_NONBLOCK) != 0)
        reason = "no pipe";
    if (reason) {
        state.unicast.close();
        state.broadcast.close();
        return {StartCode::CannotBind, "UDP port " + std::to_string(gvcp::kPort) + " of " +
                                           state.config.address + " cannot be taken: " + *reason + "."};
    }
    releaseControl();
    state.thread = std::thread(&State::run, &state);
    return {};
}

void EmulatedCamera::stop()
{
    State& state = *m_state;
    if (!state.thread.joinable())
        return;
    ::close(state.wake[1]);
    state.thread.join();
    ::close(state.wake[0]);
    state.unicast.close();
    state.broadcast.close();
    state.outgoing.clear();
}

const CameraConfig& EmulatedCamera::config() const
{
    return m_state->config;
}

const std::vector<std::string>& EmulatedCamera::seedProblems() const
{
    return m_state->seeded.problems;
}

const std::vector<std::string>& EmulatedCamera::seedRemarks() const
{
    return m_state->seeded.remarks;
}

const std::string& EmulatedCamera::description() const
{
    return m_state->description;
}

Bytes EmulatedCamera::peek(uint32_t address, size_t size) const
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.expireControl(Clock::now());
    return m_state->responder.memory.read(address, size);
}

void EmulatedCamera::poke(uint32_t address, const Bytes& data)
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.memory.write(address, data);
}

uint32_t EmulatedCamera::peekWord(uint32_t address) const
{
    return gvcp::get32(peek(address, 4).data());
}

void EmulatedCamera::pokeWord(uint32_t address, uint32_t value)
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.memory.writeWord(address, value);
}

std::optional<NodeValue> EmulatedCamera::node(const std::string& name) const
{
    const auto field = m_state->nodes->field(name);
    if (!std::holds_alternative<RegisterField>(field))
        return std::nullopt;
    std::lock_guard lock(m_state->mutex);
    return decode(std::get<RegisterField>(field), m_state->responder.memory);
}

std::string EmulatedCamera::setNode(const std::string& name, const NodeValue& value)
{
    std::lock_guard lock(m_state->mutex);
    return writeNode(*m_state->nodes, name, value, m_state->responder.memory);
}

std::vector<std::string> EmulatedCamera::change(const std::string& json)
{
    std::lock_guard lock(m_state->mutex);
    const SeedResult result = applySeed(json, *m_state->nodes, m_state->responder.memory);
    std::vector<std::string> sentences = result.problems;
    sentences.insert(sentences.end(), result.remarks.begin(), result.remarks.end());
    return sentences;
}

Faults EmulatedCamera::faults() const
{
    std::lock_guard lock(m_state->mutex);
    return m_state->responder.faults;
}

void EmulatedCamera::setFaults(const Faults& faults)
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.setFaults(faults);
}

void EmulatedCamera::stealControl(bool exclusive)
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.stealControl(exclusive);
}

void EmulatedCamera::releaseControl()
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.releaseControl();
}

bool EmulatedCamera::isControlled() const
{
    return peekWord(gvcp::RegControlPrivilege) != 0;
}

Counters EmulatedCamera::counters() const
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.expireControl(Clock::now());
    return m_state->responder.counters;
}

void EmulatedCamera::resetCounters()
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.counters = {};
}

void EmulatedCamera::pause()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace emu
