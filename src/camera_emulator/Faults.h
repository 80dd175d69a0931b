// What an emulated camera does wrong, on demand. Set at any time with Camera::setFaults().
#pragma once

#include "camera_emulator/Accident.h"
#include "gvcp/Gvcp.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace emu
{

constexpr unsigned kAlways = ~0u;

// Commands whose bytes touch [address, address + length) are refused with `status`.
struct Refusal
{
    uint64_t address = 0;
    uint64_t length = 4;
    uint16_t status = gvcp::InvalidAddress;
};

// After `after` more register commands nothing is answered any more, not even discovery: for `duration`, or
// for ever without one.
struct Silence
{
    unsigned after = 0;
    std::optional<std::chrono::milliseconds> duration;
};

// What a READREG of several registers is answered with.
enum class BatchAnswer
{
    Right,
    TooFew,  // the last register's value is missing
    TooMany, // there is one more
    Reversed // the last register's value first
};

// "Command" means any of READREG, WRITEREG, READMEM, WRITEMEM; discovery is never refused or counted down.
struct Faults
{
    unsigned loseRequests = 0;          // every n-th packet is lost on its way in; 0: none
    unsigned loseAnswers = 0;           // every n-th answer is lost on its way out; 0: none
    std::chrono::milliseconds delay{0}; // before each answer, beside the camera's own latency
    std::optional<Silence> silence;
    bool discoveryOnly = false; // nothing but discovery is answered
    bool refuseConcatenation =
        false; // READREG and WRITEREG of several registers are refused, though announced
    BatchAnswer batchAnswer = BatchAnswer::Right;
    std::vector<Refusal> refusals;
    std::vector<uint32_t> mute; // words: reading commands that touch one are not answered
    unsigned busy = 0;          // the next n commands answer BUSY
    unsigned pending = 0;       // the next n commands answer PENDING_ACK first, and come `pendingTime` later
    std::chrono::milliseconds pendingTime{100}; // the PENDING_ACK announces at most 65535 of them
    std::vector<uint32_t> unsaved;              // words that UserSetSave leaves as they were delivered
    std::optional<unsigned> stealControlAfter;  // after n more commands another host takes control
    std::optional<Accident> accident;           // of one single command
};

} // namespace emu
