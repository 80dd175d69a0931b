// What an emulated camera was asked. Only packets that were well formed and not lost count as requests.
#pragma once

#include <cstdint>
#include <string>

namespace emu
{

struct Counters
{
    uint64_t discovery = 0;
    uint64_t readReg = 0;  // packets
    uint64_t writeReg = 0; // packets
    uint64_t readMem = 0;
    uint64_t writeMem = 0;
    uint64_t forceIp = 0;          // for this camera, obeyed
    uint64_t restarts = 0;         // by DeviceReset
    uint64_t unknown = 0;          // commands that are not implemented
    uint64_t registersRead = 0;    // addresses in READREG packets
    uint64_t registersWritten = 0; // addresses in WRITEREG packets that were carried out
    uint64_t bytesRead = 0;        // through READMEM
    uint64_t bytesWritten = 0;     // through WRITEMEM
    uint64_t controlRequests =
        0; // packets that touch nothing but the control privilege or the heartbeat time
    uint64_t settingWrites =
        0;                  // writes carried out that are neither: registers of WRITEREG, packets of WRITEMEM
    uint64_t refused = 0;   // answers with an error status
    uint64_t pending = 0;   // PENDING_ACKs sent
    uint64_t malformed = 0; // packets that are no command
    uint64_t lost = 0;      // packets and answers that a fault swallowed
    uint64_t heartbeatsExpired = 0; // control given up because its holder fell silent

    // Well-formed packets of every kind.
    uint64_t requests() const
    {
        return discovery + readReg + writeReg + readMem + writeMem + forceIp + unknown;
    }
};

// One JSON object, names as above, "requests" first.
std::string toJson(const Counters& counters);

} // namespace emu
