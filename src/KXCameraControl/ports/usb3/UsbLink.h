// GenCP over the two bulk endpoints of a USB3 Vision control interface (USB3 Vision, chapter "Control
// Interface"). The interface has one owner at a time: whoever has claimed it.
#pragma once

#include "KXCameraControl/ports/gencp/GenCpLink.h"
#include "KXCameraControl/ports/usb3/Usb.h"
#include "KXCameraControl/ports/usb3/UsbNodes.h"
#include "gencp/Usb3Vision.h"

#include <KXCameraControl/KXCameraControl.h>

namespace kx
{

class UsbLink final : public GenCpLink
{
public:
    // Whoever only looks takes the camera for moments: `patience` is how long a taken one is tried again.
    explicit UsbLink(const KX_Usb3DeviceInfo& wanted,
                     std::chrono::milliseconds patience = std::chrono::milliseconds(500))
        : m_wanted(wanted), m_patience(patience)
    {}
    ~UsbLink() override { UsbLink::close(); }

    // Beside what GenCpLink says: KX_E_NETWORK also where this user may not open the device.
    KX_Status open() override;
    void close() override;
    bool isOpen() const override { return m_handle != nullptr; }
    gencp::ByteOrder byteOrder() const override { return gencp::ByteOrder::Little; }
    size_t prefixSize() const override { return sizeof gencp::kUsbPrefix; }
    void expect(size_t packetSize) override { m_expected = prefixSize() + packetSize; }
    Outcome send(const gencp::Bytes& packet, Clock::time_point deadline) override;
    Outcome receive(gencp::Bytes& packet, Clock::time_point deadline) override;
    std::string name() const override;
    std::string errorText() const override { return m_errorText; }

    // Which device it is as long as it stays plugged in. Only while open.
    UsbPlace place() const;

private:
    KX_Status fail(KX_Status status, std::string text);
    KX_Status take(UsbCamera camera, UsbHandle handle);
    Outcome transfer(const UsbEndpoint& endpoint, uint8_t* data, size_t size, size_t& done,
                     Clock::time_point deadline);
    Outcome judge(int code);

    const KX_Usb3DeviceInfo m_wanted;
    const std::chrono::milliseconds m_patience;
    UsbContext m_context; // of its own: waiting for one camera holds up no other
    UsbCamera m_camera;
    UsbHandle m_handle;
    size_t m_expected = 0; // prefix included
    std::string m_errorText;
};

} // namespace kx
