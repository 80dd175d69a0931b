// How an emulated camera answers GVCP (GigE Vision 1.2, chapters "GVCP" and "Bootstrap Registers"): packets
// in, packets out, no sockets and no clock of its own. Not thread-safe: one owner, one lock.
#pragma once

#include "camera_emulator/Counters.h"
#include "camera_emulator/FaultGate.h"
#include "camera_emulator/Memory.h"
#include "camera_emulator/Reply.h"
#include "gvcp/Gvcp.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace emu
{

// An application on the network; it stays the same one as long as it sends from the same port.
struct Peer
{
    uint32_t address = 0;
    uint16_t port = 0;
    bool operator==(const Peer& other) const { return address == other.address && port == other.port; }
};

class Responder
{
public:
    Memory memory;
    AddressRanges readOnly; // for hosts; seeds and the emulator itself write everywhere
    FaultGate gate;
    Counters counters;
    std::chrono::milliseconds latency{0};
    bool concatenation = true; // several registers per READREG and WRITEREG
    bool answersEverybody = true;
    // Behind each word that a host has written, but for control. Empty: nobody is told.
    std::function<void(uint32_t address)> written;
    // The address that FORCEIP wants, until somebody has taken it there.
    std::optional<gvcp::ForcedIp> move;

    std::vector<Reply> handle(const uint8_t* data, size_t size, Peer peer, Clock::time_point now);

    // Gives control to a host that never lets it go, until releaseControl().
    void stealControl(bool exclusive);
    void releaseControl();
    // Takes control from a holder who was silent for longer than the heartbeat time.
    void expireControl(Clock::time_point now);

private:
    struct Answer
    {
        uint16_t status = gvcp::Success;
        Bytes payload;
        bool isSilent = false; // no answer at all
    };

    Answer forceIp(const Bytes& payload);
    std::vector<Reply> finish(const gvcp::CommandPacket& command, Answer answer, Peer peer,
                              Clock::time_point now);
    bool isForEverybody(const gvcp::CommandPacket& command, Peer peer) const;
    Answer answerTo(const gvcp::CommandPacket& command, Peer peer);
    bool isMute(const gvcp::CommandPacket& command) const;
    void spoilBatch(gvcp::Bytes& values) const;
    Answer readRegisters(const Bytes& payload, Peer peer);
    Answer writeRegisters(const Bytes& payload, Peer peer);
    Answer readMemory(const Bytes& payload, Peer peer);
    Answer writeMemory(const Bytes& payload, Peer peer);
    uint16_t checkAccess(uint32_t address, uint32_t size) const;
    uint16_t checkRead(uint32_t address, uint32_t size, Peer peer) const;
    uint16_t checkWrite(uint32_t address, uint32_t size, Peer peer) const;
    void writeWord(uint32_t address, uint32_t value, Peer peer);
    void setControl(std::optional<Peer> holder, uint32_t privilege);
    bool heartbeatDisabled() const;

    std::optional<Peer> m_holder;
    bool m_stolen = false;
    Clock::time_point m_heartbeat;
};

} // namespace emu
