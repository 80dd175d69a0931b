// How an emulated camera answers GenCP (GenCP 1.3, chapters "Commands" and "Bootstrap Register Map"): packets
// in, packets out, without the prefix that a transport gives them, and with no line and no clock of its own.
// Not thread-safe: one owner, one lock.
#pragma once

#include "camera_emulator/CameraConfig.h"
#include "camera_emulator/Counters.h"
#include "camera_emulator/FaultGate.h"
#include "camera_emulator/Memory.h"
#include "camera_emulator/Reply.h"
#include "gencp/Gencp.h"

#include <chrono>
#include <functional>
#include <vector>

namespace emu
{

// Far from the registers that cameras are known to have, and behind what 32 bits can name.
constexpr uint64_t kTechnologyRegisters = 0x100000000; // SBRM
constexpr uint64_t kManifestTable = 0x110000000;
constexpr uint64_t kGenCpDescription = 0x120000000;
constexpr uint64_t kGenCpZippedDescription = 0x140000000;

class GenCpResponder
{
public:
    explicit GenCpResponder(gencp::ByteOrder order) : byteOrder(order) {}

    const gencp::ByteOrder byteOrder;
    Memory memory;
    AddressRanges readOnly; // for hosts; seeds and the emulator itself write everywhere
    FaultGate gate;
    Counters counters;
    std::chrono::milliseconds latency{0};
    size_t mostBytes = 1024;                                      // of one read or write
    std::function<void(uint64_t word)> written = [](uint64_t) {}; // by a host, a word at a time

    std::vector<Reply> handle(const Bytes& packet, Clock::time_point now);

    void writeNumber(uint64_t address, uint64_t value, size_t size);
    uint64_t readNumber(uint64_t address, size_t size) const;

private:
    struct Answer
    {
        uint16_t status = gencp::Success;
        Bytes scd;
    };
    Answer answerTo(const gencp::CommandPacket& command);
    Answer readMemory(const gencp::CommandPacket& command);
    Answer writeMemory(const gencp::CommandPacket& command);
    uint16_t check(uint64_t address, size_t size) const;
};

// Bootstrap registers, manifest and description, and what hosts may not write of them.
void writeGenCpBootstrap(const CameraConfig& config, const std::string& description,
                         GenCpResponder& responder);

} // namespace emu
