#include "KXCameraControl/ports/usb3/Usb3Port.h"

#include "gencp/Usb3Vision.h"

namespace kx
{

using namespace gencp;

void Usb3Port::close()
{
    m_cable.reset();
    GenCpPort::close();
}

KX_Status Usb3Port::settle()
{
    m_cable = std::make_unique<UsbWatch>(
        usb().place(), [this, name = usb().name()] { reportLoss(name + " was unplugged"); });
    return KX_OK;
}

// A camera that does not show its limits keeps those that every camera has.
KX_Status Usb3Port::readLimits()
{
    uint64_t registers = 0;
    uint64_t command = 0;
    uint64_t ack = 0;
    KX_Status status = readNumber(RegTechnologyRegisters, 8, registers);
    if (status == KX_OK)
        status = readNumber(registers + kUsbMaxCommandLength, 4, command);
    if (status == KX_OK)
        status = readNumber(registers + kUsbMaxAckLength, 4, ack);
    if (status == KX_OK)
        setLimits(command, ack);
    return status == KX_E_GC_ACCESS ? KX_OK : status;
}

} // namespace kx
