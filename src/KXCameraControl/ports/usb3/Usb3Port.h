// A USB3 Vision camera. It is lost as soon as the system says that it was unplugged (UsbWatch).
#pragma once

#include "KXCameraControl/ports/gencp/GenCpPort.h"
#include "KXCameraControl/ports/usb3/UsbLink.h"
#include "KXCameraControl/ports/usb3/UsbWatch.h"

namespace kx
{

class Usb3Port final : public GenCpPort
{
public:
    explicit Usb3Port(const KX_Usb3DeviceInfo& wanted)
        : GenCpPort(std::make_unique<UsbLink>(wanted), {}) // the link has looked at its GUID
    {}
    ~Usb3Port() override { Usb3Port::close(); }

    void close() override;

private:
    KX_Status settle() override;
    KX_Status readLimits() override;
    UsbLink& usb() { return static_cast<UsbLink&>(link()); }

    std::unique_ptr<UsbWatch> m_cable;
};

} // namespace kx
