#include "KXCameraControl/ports/cameralink/CameraLinkPort.h"

#include <algorithm>
#include <iterator>
#include <thread>

namespace kx
{

using namespace gencp;
using std::chrono::milliseconds;

namespace
{

// One look at each rate; a camera that listens answers within this beside the line's own time.
constexpr milliseconds kGlance{60};
// The second one, for a camera or a machine that has much to do.
constexpr milliseconds kLook{100};
constexpr size_t kPacketLimit = 1024; // GenCP over a serial line knows no other

} // namespace

CameraLinkPort::CameraLinkPort(std::unique_ptr<SerialLine> line, std::string serialNumber, Rate rate)
    : GenCpPort(std::make_unique<SerialLink>(std::move(line)), std::move(serialNumber)), m_rate(rate)
{}

void CameraLinkPort::close()
{
    if (isOpen() && serial().baudRate() != kBaudRates[0].baud) {
        // One try: a camera that has vanished must not hold up whoever leaves it; it is looked for at every
        // rate.
        const PortTimeouts patience = timeouts();
        setTimeouts({kGlance, 1, milliseconds(0)});
        changeRate(kBaudRates[0]);
        setTimeouts(patience);
    }
    GenCpPort::close();
}

std::chrono::milliseconds CameraLinkPort::keepTime() const
{
    constexpr size_t kReadOnWire =
        kHeaderSize + kReadCommandSize + kHeaderSize + sizeof(uint32_t) + 2 * kSerialPrefixSize;
    return Port::keepTime() + 40 * serial().wireTime(kReadOnWire);
}

KX_Status CameraLinkPort::settle()
{
    setLimits(kPacketLimit, kPacketLimit);
    m_technologyRegisters = 0;
    KX_Status status = findRate();
    if (status == KX_OK)
        status = readNumber(RegTechnologyRegisters, 8, m_technologyRegisters);
    return status == KX_OK && m_rate == Rate::Raise ? raiseRate() : status;
}

// Cameras begin at 9,600 baud; one whose host crashed may have kept another rate.
KX_Status CameraLinkPort::findRate()
{
    const PortTimeouts patience = timeouts();
    KX_Status status = lookAtRates(kGlance);
    if (status == KX_E_NO_ANSWER)
        status = lookAtRates(kLook);
    setTimeouts(patience);
    return status == KX_E_NO_ANSWER ? fail(KX_E_NO_DEVICE, "no camera answers at " + serial().name())
                                    : status;
}

KX_Status CameraLinkPort::lookAtRates(milliseconds perRate)
{
    setTimeouts({perRate, 1, milliseconds(0)});
    KX_Status status = KX_E_NO_ANSWER;
    for (const BaudRate& rate : kBaudRates) {
        uint64_t version = 0;
        if (!serial().setBaudRate(rate.baud))
            continue;
        status = readNumber(RegVersion, 4, version);
        if (status != KX_E_NO_ANSWER)
            break;
    }
    return status;
}

// A camera without the registers, or one that will not, stays at the rate that it has.
KX_Status CameraLinkPort::raiseRate()
{
    uint64_t supported = 0;
    const KX_Status status = m_technologyRegisters == 0
                                 ? KX_E_GC_ACCESS
                                 : readNumber(m_technologyRegisters + kSupportedBaudRates, 4, supported);
    if (status == KX_E_GC_ACCESS)
        return KX_OK;
    if (status != KX_OK)
        return status;
    const uint32_t now = serial().baudRate();
    for (auto rate = std::rbegin(kBaudRates); rate != std::rend(kBaudRates) && rate->baud > now; ++rate) {
        if ((supported & rate->bit) == 0)
            continue;
        const KX_Status changed = changeRate(*rate);
        if (changed == KX_OK || changed == KX_E_CONNECTION_LOST)
            return changed;
        // The camera is back at its old rate, or on its way.
        std::this_thread::sleep_for(milliseconds(kBaudRateConfirmation));
        if (const KX_Status found = findRate())
            return found;
    }
    return KX_OK;
}

// The camera goes over after its answer and waits a moment to be told the same at the new rate; without that
// it goes back (GenCP 1.3, "Current Baud Rate").
KX_Status CameraLinkPort::changeRate(const BaudRate& rate)
{
    if (m_technologyRegisters == 0)
        return KX_E_GC_ACCESS;
    const uint64_t address = m_technologyRegisters + kCurrentBaudRate;
    const uint32_t before = serial().baudRate();
    const KX_Status status = writeNumber(address, 4, rate.bit);
    if (status != KX_OK)
        return status;
    if (!serial().setBaudRate(rate.baud)) {
        serial().setBaudRate(before);
        return fail(KX_E_NETWORK, serial().errorText());
    }
    return confirmRate(address, rate.bit);
}

KX_Status CameraLinkPort::confirmRate(uint64_t address, uint32_t bit)
{
    const PortTimeouts patience = timeouts();
    setTimeouts({kGlance, kBaudRateConfirmation / unsigned(kGlance.count()), milliseconds(0)});
    const KX_Status status = writeNumber(address, 4, bit);
    setTimeouts(patience);
    return status;
}

} // namespace kx
