#include "camera_emulator/Responder.h"

#include <algorithm>

namespace emu
{

using namespace gvcp;

namespace
{

constexpr uint64_t kAddressEnd = uint64_t(1) << 32;
// A host outside of every network that a test or a demonstration uses.
constexpr Peer kThief{0x7FFFFFFE, 1};

bool isRegisterCommand(uint16_t command)
{
    return command == ReadRegCmd || command == WriteRegCmd || command == ReadMemCmd || command == WriteMemCmd;
}

bool isControl(uint32_t address)
{
    return address == RegControlPrivilege || address == RegHeartbeatTimeout;
}

} // namespace

std::vector<Reply> Responder::handle(const uint8_t* data, size_t size, Peer peer, Clock::time_point now)
{
    expireControl(now);
    const auto command = decodeCommand(data, size);
    if (gate.isSwallowed(command && isRegisterCommand(command->command), now)) {
        ++counters.lost;
        return {};
    }
    if (!command || command->id == 0) {
        ++counters.malformed;
        return {};
    }
    const bool isOfRegisters = isRegisterCommand(command->command);
    const auto accident = isOfRegisters ? gate.takeAccident() : std::nullopt;
    if (isMute(*command) || (accident && accident->mishap == Mishap::RequestLost)) {
        ++counters.lost;
        return {};
    }
    const auto refusal = isOfRegisters ? gate.takeRefusal(accident) : std::nullopt;
    Answer answer = refusal ? Answer{*refusal, {}} : answerTo(*command, peer);
    if (m_holder == peer)
        m_heartbeat = now; // any command of the holder is a sign of life
    std::vector<Reply> replies = finish(*command, std::move(answer), peer, now);
    if (accident)
        befall(*accident, true, replies);
    if (isOfRegisters && gate.countDown(now))
        stealControl(false);
    return replies;
}

std::vector<Reply> Responder::finish(const CommandPacket& command, Answer answer, Peer peer,
                                     Clock::time_point now)
{
    std::vector<Reply> replies;
    if (answer.status != Success)
        ++counters.refused;
    if ((command.flags & kFlagAckRequired) == 0 || answer.isSilent)
        return replies;

    Clock::time_point due = now + latency + gate.faults.delay;
    if (isRegisterCommand(command.command) && gate.takePending()) {
        ++counters.pending;
        const auto time =
            static_cast<uint16_t>(std::clamp<int64_t>(gate.faults.pendingTime.count(), 0, 0xFFFF));
        replies.push_back(
            {encodeAck({Success, PendingAck, command.id, pendingAckPayload(time)}), due, false});
        due += gate.faults.pendingTime;
    }
    if (gate.losesAnswer()) {
        ++counters.lost;
        return replies;
    }
    const auto acknowledge = static_cast<uint16_t>(command.command + 1);
    replies.push_back({encodeAck({answer.status, acknowledge, command.id, std::move(answer.payload)}), due,
                       isForEverybody(command, peer)});
    return replies;
}

// GigE Vision, FORCEIP_CMD: meant for one MAC address, and passed over while somebody has control. Without an
// address the camera looks for one again, and says nothing.
Responder::Answer Responder::forceIp(const Bytes& payload)
{
    const auto wanted = parseForceIp(payload);
    const bool isMeant = wanted && wanted->macHigh == memory.readWord(RegMacHigh) &&
                         wanted->macLow == memory.readWord(RegMacLow);
    if (!isMeant || m_holder)
        return {Success, {}, true};
    ++counters.forceIp;
    move = wanted;
    return {Success, {}, wanted->address == 0};
}

// GigE Vision, discovery: who may broadcast does so where the way back to the asker is not known.
bool Responder::isForEverybody(const CommandPacket& command, Peer peer) const
{
    const bool isForced = command.command == ForceIpCmd && move; // it answers from there
    const uint32_t own = isForced ? move->address : memory.readWord(RegCurrentAddress);
    const uint32_t mask = isForced ? move->mask : memory.readWord(RegCurrentMask);
    return answersEverybody && (command.command == DiscoveryCmd || isForced) &&
           (command.flags & kFlagAllowBroadcastAck) != 0 && ((own ^ peer.address) & mask) != 0;
}

Responder::Answer Responder::answerTo(const CommandPacket& command, Peer peer)
{
    switch (command.command) {
    case DiscoveryCmd:
        ++counters.discovery;
        return {Success, memory.read(0, kDiscoverySize)};
    case ForceIpCmd:
        return forceIp(command.payload);
    case ReadRegCmd:
        ++counters.readReg;
        return readRegisters(command.payload, peer);
    case WriteRegCmd:
        ++counters.writeReg;
        return writeRegisters(command.payload, peer);
    case ReadMemCmd:
        ++counters.readMem;
        return readMemory(command.payload, peer);
    case WriteMemCmd:
        ++counters.writeMem;
        return writeMemory(command.payload, peer);
    default:
        ++counters.unknown;
        return {NotImplemented, {}};
    }
}

// On an error the registers before the failing one are handed out.
Responder::Answer Responder::readRegisters(const Bytes& payload, Peer peer)
{
    const auto addresses = parseReadRegisters(payload);
    if (!addresses || (addresses->size() > 1 && (!concatenation || gate.faults.refuseConcatenation)))
        return {InvalidParameter, {}};
    if (std::all_of(addresses->begin(), addresses->end(), isControl))
        ++counters.controlRequests;
    Answer answer;
    for (uint32_t address : *addresses) {
        answer.status = checkRead(address, 4, peer);
        if (answer.status != Success)
            break;
        ++counters.registersRead;
        const Bytes value = memory.read(address, 4);
        answer.payload.insert(answer.payload.end(), value.begin(), value.end());
    }
    if (addresses->size() > 1 && answer.status == Success)
        spoilBatch(answer.payload);
    return answer;
}

void Responder::spoilBatch(Bytes& values) const
{
    switch (gate.faults.batchAnswer) {
    case BatchAnswer::Right:
        break;
    case BatchAnswer::TooFew:
        values.resize(values.size() - 4);
        break;
    case BatchAnswer::TooMany:
        values.resize(values.size() + 4);
        break;
    case BatchAnswer::Reversed:
        std::reverse(values.begin(), values.end()); // the bytes, and then those of each word back again
        for (size_t i = 0; i < values.size(); i += 4)
            std::reverse(values.begin() + static_cast<ptrdiff_t>(i),
                         values.begin() + static_cast<ptrdiff_t>(i + 4));
        break;
    }
}

// What a READREG or READMEM asks for.
bool Responder::isMute(const CommandPacket& command) const
{
    if (gate.faults.mute.empty())
        return false;
    const auto touches = [this](uint64_t address, uint64_t size) {
        return std::any_of(gate.faults.mute.begin(), gate.faults.mute.end(), [&](uint32_t word) {
            return word < address + size && address < uint64_t{word} + 4;
        });
    };
    if (command.command == ReadMemCmd) {
        const auto range = parseReadMemory(command.payload);
        return range && touches(range->address, range->count);
    }
    const auto addresses = command.command == ReadRegCmd ? parseReadRegisters(command.payload) : std::nullopt;
    return addresses && std::any_of(addresses->begin(), addresses->end(),
                                    [&](uint32_t address) { return touches(address, 4); });
}

// The answer names the failing register by its index; those before it are written.
Responder::Answer Responder::writeRegisters(const Bytes& payload, Peer peer)
{
    const auto writes = parseWriteRegisters(payload);
    if (!writes || (writes->size() > 1 && (!concatenation || gate.faults.refuseConcatenation)))
        return {InvalidParameter, writeAckPayload(0)};
    if (std::all_of(writes->begin(), writes->end(),
                    [](const RegisterWrite& write) { return isControl(write.address); }))
        ++counters.controlRequests;
    uint16_t done = 0;
    for (const RegisterWrite& write : *writes) {
        const uint16_t status = checkWrite(write.address, 4, peer);
        if (status != Success)
            return {status, writeAckPayload(done)};
        writeWord(write.address, write.value, peer);
        ++done;
        ++counters.registersWritten;
        if (!isControl(write.address))
            ++counters.settingWrites;
    }
    return {Success, writeAckPayload(done)};
}

Responder::Answer Responder::readMemory(const Bytes& payload, Peer peer)
{
    const auto range = parseReadMemory(payload);
    if (!range || range->count == 0 || range->count > kMaxReadMemory)
        return {InvalidParameter, {}};
    if (isControl(range->address) && range->count == 4)
        ++counters.controlRequests;
    const uint16_t status = checkRead(range->address, range->count, peer);
    if (status != Success)
        return {status, {}};
    counters.bytesRead += range->count;
    Bytes data(4);
    put32(data.data(), range->address);
    const Bytes content = memory.read(range->address, range->count);
    data.insert(data.end(), content.begin(), content.end());
    return {Success, data};
}

Responder::Answer Responder::writeMemory(const Bytes& payload, Peer peer)
{
    const auto write = parseWriteMemory(payload);
    if (!write)
        return {InvalidParameter, writeAckPayload(0)};
    const auto size = static_cast<uint32_t>(write->data.size());
    const bool control = isControl(write->address) && size == 4;
    if (control)
        ++counters.controlRequests;
    const uint16_t status = checkWrite(write->address, size, peer);
    if (status != Success)
        return {status, writeAckPayload(0)};
    for (uint32_t offset = 0; offset < size; offset += 4)
        writeWord(write->address + offset, get32(&write->data[offset]), peer);
    counters.bytesWritten += size;
    if (!control)
        ++counters.settingWrites;
    return {Success, writeAckPayload(static_cast<uint16_t>(size))};
}

uint16_t Responder::checkAccess(uint32_t address, uint32_t size) const
{
    if (address % 4 != 0 || size % 4 != 0)
        return BadAlignment;
    if (address + uint64_t(size) > kAddressEnd)
        return InvalidAddress;
    return gate.refusalOf(address, size).value_or(Success);
}

uint16_t Responder::checkRead(uint32_t address, uint32_t size, Peer peer) const
{
    const bool exclusive = (memory.readWord(RegControlPrivilege) & kPrivilegeExclusive) != 0;
    if (exclusive && m_holder && !(*m_holder == peer))
        return AccessDenied;
    return checkAccess(address, size);
}

// Whoever wants to write has to have control; only control itself may be asked for when nobody has it.
uint16_t Responder::checkWrite(uint32_t address, uint32_t size, Peer peer) const
{
    const bool asksForControl = address == RegControlPrivilege && size == 4;
    if (m_holder ? !(*m_holder == peer) : !asksForControl)
        return AccessDenied;
    const uint16_t status = checkAccess(address, size);
    if (status != Success)
        return status;
    return readOnly.overlaps(address, size) ? WriteProtect : Success;
}

void Responder::writeWord(uint32_t address, uint32_t value, Peer peer)
{
    if (address != RegControlPrivilege) {
        memory.writeWord(address, value);
        if (written)
            written(address);
        return;
    }
    const uint32_t privilege = value & (kPrivilegeExclusive | kPrivilegeControl);
    if (privilege == 0)
        setControl(std::nullopt, 0);
    else
        setControl(peer, privilege);
}

void Responder::setControl(std::optional<Peer> holder, uint32_t privilege)
{
    m_holder = holder;
    m_stolen = false;
    memory.writeWord(RegControlPrivilege, privilege);
    memory.writeWord(RegPrimaryPort, holder ? holder->port : 0);
    memory.writeWord(RegPrimaryAddress, holder ? holder->address : 0);
}

void Responder::stealControl(bool exclusive)
{
    setControl(kThief, exclusive ? kPrivilegeExclusive : kPrivilegeControl);
    m_stolen = true;
}

void Responder::releaseControl()
{
    setControl(std::nullopt, 0);
}

bool Responder::heartbeatDisabled() const
{
    return (memory.readWord(RegGvcpConfiguration) & kConfigurationHeartbeatDisable) != 0;
}

void Responder::expireControl(Clock::time_point now)
{
    if (!m_holder || m_stolen || heartbeatDisabled())
        return;
    if (now - m_heartbeat <= std::chrono::milliseconds(memory.readWord(RegHeartbeatTimeout)))
        return;
    ++counters.heartbeatsExpired;
    setControl(std::nullopt, 0);
}

} // namespace emu
