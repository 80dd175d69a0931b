#include "camera_emulator/EmulatedCamera.h"

#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/BuiltIn.h"
#include "camera_emulator/CameraCore.h"
#include "camera_emulator/IpPlace.h"
#include "camera_emulator/KeptState.h"
#include "camera_emulator/Responder.h"
#include "camera_emulator/Seed.h"
#include "camera_emulator/UdpSocket.h"

#include <map>
#include <mutex>
#include <thread>

namespace emu
{
namespace
{

constexpr uint32_t kEverybody = 0xFFFFFFFF; // the limited broadcast
constexpr uint32_t kStreamPacketSize = 8164;
constexpr uint32_t kStreamDelay = 250;

struct Waiting
{
    Peer peer;
    Bytes packet;
};

} // namespace

struct EmulatedCamera::State
{
    explicit State(const CameraConfig& wanted);
    void run();
    void takePackets(UdpSocket& socket);
    void sendDue();
    std::optional<Clock::time_point> nextDue() const;
    std::optional<std::string> bindSockets();
    void closeSockets();
    void obey();
    void move(const IpPlace& from, const IpPlace& to);
    void goDown();
    void comeUp();
    void powerUp();
    void tellPlumber(const IpPlace& place, bool isTaken) const;

    CameraCore core;
    std::optional<uint32_t> address;

    mutable std::mutex mutex; // guards the responder and what the camera keeps
    mutable Responder responder;
    std::optional<KeptState> kept;
    bool isToRestart = false;

    // The camera's thread alone, while it runs.
    std::multimap<Clock::time_point, Waiting> outgoing;
    std::optional<Clock::time_point> downUntil; // restarting
    UdpSocket unicast;
    UdpSocket broadcast;

    EndSignal ending;
    std::thread thread;
};

namespace
{

constexpr size_t kNameSize = 16;

OwnRegisters ownRegisters()
{
    using namespace gvcp;
    return {BootstrapSize,
            uint64_t(1) << 32,
            {{RegUserName, kNameSize},
             {RegIpCurrent, 4},
             {RegPersistentAddress, 4},
             {RegPersistentMask, 4},
             {RegPersistentGateway, 4}}};
}

std::string placeProblem(const CameraConfig& config)
{
    if (!gvcp::parseAddress(config.address))
        return '"' + config.address + "\" is no IPv4 address.";
    if (!config.dhcpAddress.empty() && !gvcp::parseAddress(config.dhcpAddress))
        return '"' + config.dhcpAddress + "\" is no IPv4 address.";
    if (!gvcp::parseAddress(config.mask))
        return '"' + config.mask + "\" is no IPv4 network mask.";
    if (!config.mac.empty() && !macIn(config.mac))
        return '"' + config.mac + "\" is no MAC address.";
    return {};
}

} // namespace

EmulatedCamera::State::State(const CameraConfig& wanted)
    : core(wanted, builtInDescription()), address(gvcp::parseAddress(wanted.address))
{
    if (const std::string problem = placeProblem(wanted); !problem.empty())
        core.problem = problem;
    const auto mask = gvcp::parseAddress(wanted.mask);
    responder.latency = wanted.latency;
    responder.concatenation = wanted.concatenation;
    responder.answersEverybody = wanted.answersEverybody;
    responder.readOnly = core.nodes->readOnlyRegisters();
    responder.readOnly.add(readOnlyBootstrap());
    writeBootstrap(wanted, address.value_or(0), mask.value_or(0), responder.memory);
    writeDescription(wanted, core.description, core.nodes->schemaVersion(), responder.memory,
                     responder.readOnly);
    core.seed(responder.memory);
    kept.emplace(*core.nodes, responder.memory, ownRegisters());
    responder.written = [this](uint32_t word) {
        isToRestart = kept->written(word, responder.gate.faults.unsaved, responder.memory) || isToRestart;
    };
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
            outgoing.emplace(reply.due, Waiting{reply.isForEverybody ? Peer{kEverybody, peer.port} : peer,
                                                std::move(reply.bytes)});
    }
}

void EmulatedCamera::State::sendDue()
{
    const auto end = outgoing.upper_bound(Clock::now());
    for (auto entry = outgoing.begin(); entry != end; entry = outgoing.erase(entry))
        unicast.send(entry->second.packet, entry->second.peer);
}

std::optional<Clock::time_point> EmulatedCamera::State::nextDue() const
{
    if (downUntil)
        return downUntil;
    return outgoing.empty() ? std::nullopt : std::make_optional(outgoing.begin()->first);
}

void EmulatedCamera::State::run()
{
    for (;;) {
        waitForTraffic(unicast, broadcast, ending, nextDue());
        if (ending.isRaised())
            return;
        takePackets(unicast);
        takePackets(broadcast);
        obey();
        sendDue();
    }
}

std::optional<std::string> EmulatedCamera::State::bindSockets()
{
    std::optional<std::string> reason =
        unicast.bind(responder.memory.readWord(gvcp::RegCurrentAddress), gvcp::kPort, false);
    if (!reason && core.config.broadcast)
        reason = broadcast.bind(kEverybody, gvcp::kPort, true);
    return reason;
}

void EmulatedCamera::State::closeSockets()
{
    unicast.close();
    broadcast.close();
}

// What hosts have ordered that the camera does by itself: another address, a restart.
void EmulatedCamera::State::obey()
{
    std::lock_guard lock(mutex);
    if (responder.move) {
        const gvcp::ForcedIp wanted = *responder.move;
        responder.move.reset();
        const IpPlace from = currentPlace(responder.memory);
        move(from, wanted.address == 0 ? placeAtPowerUp(core.config, responder.memory)
                                       : IpPlace{wanted.address, wanted.mask, wanted.gateway});
    }
    if (isToRestart)
        goDown();
    else if (downUntil && Clock::now() >= *downUntil)
        comeUp();
}

void EmulatedCamera::State::move(const IpPlace& from, const IpPlace& to)
{
    unicast.close();
    tellPlumber(from, false);
    setCurrentPlace(to, responder.memory);
    tellPlumber(to, true);
    (void)bindSockets(); // an address that cannot be had is one without answers
}

// What was to be answered by now is; the rest is lost.
void EmulatedCamera::State::goDown()
{
    isToRestart = false;
    ++responder.counters.restarts;
    sendDue();
    outgoing.clear();
    closeSockets();
    tellPlumber(currentPlace(responder.memory), false);
    downUntil = Clock::now() + core.config.restartTime;
}

void EmulatedCamera::State::comeUp()
{
    downUntil.reset();
    responder.releaseControl();
    powerUp();
    tellPlumber(currentPlace(responder.memory), true);
    (void)bindSockets();
}

void EmulatedCamera::State::powerUp()
{
    kept->powerUp(responder.memory);
    setCurrentPlace(placeAtPowerUp(core.config, responder.memory), responder.memory);
}

void EmulatedCamera::State::tellPlumber(const IpPlace& place, bool isTaken) const
{
    if (core.config.plumb)
        core.config.plumb(place.address, place.mask, isTaken);
}

EmulatedCamera::EmulatedCamera(const CameraConfig& config) : m_state(std::make_unique<State>(config)) {}

EmulatedCamera::~EmulatedCamera()
{
    EmulatedCamera::stop();
}

StartResult EmulatedCamera::start()
{
    State& state = *m_state;
    if (state.thread.joinable())
        return {};
    if (!state.core.problem.empty())
        return {StartCode::BadConfiguration, state.core.problem};
    std::optional<std::string> reason = state.bindSockets();
    if (!reason)
        reason = state.ending.open();
    if (reason) {
        state.closeSockets();
        return {StartCode::CannotBind, "UDP port " + std::to_string(gvcp::kPort) + " of " +
                                           state.core.config.address + " cannot be taken: " + *reason + "."};
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
    state.ending.raise();
    state.thread.join();
    state.ending.close();
    state.closeSockets();
    state.outgoing.clear();
    state.downUntil.reset();
}

void EmulatedCamera::switchOff()
{
    stop();
    std::lock_guard lock(m_state->mutex);
    m_state->powerUp();
}

const CameraConfig& EmulatedCamera::config() const
{
    return m_state->core.config;
}

const std::vector<std::string>& EmulatedCamera::seedProblems() const
{
    return m_state->core.seeded.problems;
}

const std::vector<std::string>& EmulatedCamera::seedRemarks() const
{
    return m_state->core.seeded.remarks;
}

const std::string& EmulatedCamera::description() const
{
    return m_state->core.description;
}

Bytes EmulatedCamera::peek(uint64_t address, size_t size) const
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.expireControl(Clock::now());
    return m_state->responder.memory.read(address, size);
}

Bytes EmulatedCamera::peekAtPowerUp(uint64_t address, size_t size) const
{
    std::lock_guard lock(m_state->mutex);
    Memory memory = m_state->responder.memory;
    m_state->kept->powerUp(memory);
    return memory.read(address, size);
}

void EmulatedCamera::poke(uint64_t address, const Bytes& data)
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
    const auto field = m_state->core.nodes->field(name);
    if (!std::holds_alternative<RegisterField>(field))
        return std::nullopt;
    std::lock_guard lock(m_state->mutex);
    return decode(std::get<RegisterField>(field), m_state->responder.memory);
}

std::string EmulatedCamera::setNode(const std::string& name, const NodeValue& value)
{
    std::lock_guard lock(m_state->mutex);
    return writeNode(*m_state->core.nodes, name, value, m_state->responder.memory);
}

std::vector<std::string> EmulatedCamera::change(const std::string& json)
{
    std::lock_guard lock(m_state->mutex);
    return m_state->core.change(json, m_state->responder.memory);
}

Faults EmulatedCamera::faults() const
{
    std::lock_guard lock(m_state->mutex);
    return m_state->responder.gate.faults;
}

void EmulatedCamera::setFaults(const Faults& faults)
{
    std::lock_guard lock(m_state->mutex);
    m_state->responder.gate.set(faults);
}

void EmulatedCamera::streamTo(uint32_t host, uint16_t port)
{
    pokeWord(gvcp::RegStreamAddress0, host);
    pokeWord(gvcp::RegStreamPort0, port);
    pokeWord(gvcp::RegStreamPacketSize0, kStreamPacketSize);
    pokeWord(gvcp::RegStreamDelay0, kStreamDelay);
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
