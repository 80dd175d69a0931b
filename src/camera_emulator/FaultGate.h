// What goes wrong, counted down request by request; shared by all transports.
#pragma once

#include "camera_emulator/Faults.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace emu
{

using Clock = std::chrono::steady_clock;

class FaultGate
{
public:
    Faults faults; // as they stand: counts that run down show what is left

    void set(const Faults& newFaults);

    // A packet that came in is lost, or the camera is silent. `isRegisterCommand`: it asks for more than
    // discovery.
    bool isSwallowed(bool isRegisterCommand, Clock::time_point now);
    // What befalls this register command.
    std::optional<Accident> takeAccident();
    // The status that a register command is answered with, and is not carried out: BUSY, GENERIC_ERROR, which
    // GVCP and GenCP have alike. Nothing: it is.
    std::optional<uint16_t> takeRefusal(const std::optional<Accident>& accident);
    // The next register command is answered by PENDING_ACK first.
    bool takePending();
    bool losesAnswer();
    // The refusal that bytes [address, address + size) meet; nothing: none.
    std::optional<uint16_t> refusalOf(uint64_t address, uint64_t size) const;
    // Behind each register command. True: another host takes control now.
    bool countDown(Clock::time_point now);

private:
    unsigned m_packetsIn = 0;
    unsigned m_answersOut = 0;
    std::optional<Clock::time_point> m_silentUntil;
};

} // namespace emu
