#include "camera_emulator/FaultGate.h"

namespace emu
{

namespace
{

bool everyNth(unsigned n, unsigned& counter)
{
    return n != 0 && ++counter % n == 0;
}

bool take(unsigned& left)
{
    if (left == 0)
        return false;
    if (left != kAlways)
        --left;
    return true;
}

} // namespace

void FaultGate::set(const Faults& newFaults)
{
    faults = newFaults;
    m_packetsIn = 0;
    m_answersOut = 0;
    m_silentUntil.reset();
}

bool FaultGate::isSwallowed(bool isRegisterCommand, Clock::time_point now)
{
    if (faults.silence && faults.silence->after == 0) {
        if (!faults.silence->duration)
            return true;
        if (!m_silentUntil)
            m_silentUntil = now + *faults.silence->duration;
        if (now < *m_silentUntil)
            return true;
        faults.silence.reset();
        m_silentUntil.reset();
    }
    if (faults.discoveryOnly && isRegisterCommand)
        return true;
    return everyNth(faults.loseRequests, m_packetsIn);
}

std::optional<Accident> FaultGate::takeAccident()
{
    if (!faults.accident || (faults.accident->request > 1 && faults.accident->request-- > 1))
        return std::nullopt;
    const std::optional<Accident> accident = faults.accident;
    if (accident->mishap == Mishap::PendingForEver) {
        faults.pending = kAlways;
        faults.pendingTime = std::chrono::milliseconds(0xFFFF);
    } else {
        faults.accident.reset();
        if (accident->mishap == Mishap::DeafFromThenOn)
            faults.loseAnswers = 1;
    }
    return accident;
}

std::optional<uint16_t> FaultGate::takeRefusal(const std::optional<Accident>& accident)
{
    if (accident && accident->mishap == Mishap::Refused)
        return gvcp::GenericError;
    if ((accident && accident->mishap == Mishap::Busy) || take(faults.busy))
        return gvcp::Busy;
    return std::nullopt;
}

bool FaultGate::takePending()
{
    return take(faults.pending);
}

bool FaultGate::losesAnswer()
{
    return everyNth(faults.loseAnswers, m_answersOut);
}

std::optional<uint16_t> FaultGate::refusalOf(uint64_t address, uint64_t size) const
{
    for (const Refusal& refusal : faults.refusals)
        if (address < refusal.address + refusal.length && refusal.address < address + size)
            return refusal.status;
    return std::nullopt;
}

bool FaultGate::countDown(Clock::time_point now)
{
    if (faults.silence && faults.silence->after > 0 && --faults.silence->after == 0 &&
        faults.silence->duration)
        m_silentUntil = now + *faults.silence->duration;
    if (!faults.stealControlAfter || (*faults.stealControlAfter > 0 && --*faults.stealControlAfter > 0))
        return false;
    faults.stealControlAfter.reset();
    return true;
}

} // namespace emu
