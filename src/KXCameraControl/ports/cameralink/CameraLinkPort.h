// A GenCP camera behind a serial line: finds the rate that it listens at, and raises it.
//
// The line has no way of telling that a camera was unplugged: a row of requests without an answer does
// (Silence.h). A line that goes away itself (an adapter that is pulled) is a lost connection at once.
#pragma once

#include "KXCameraControl/ports/cameralink/SerialLink.h"
#include "KXCameraControl/ports/gencp/GenCpPort.h"

namespace kx
{

class CameraLinkPort final : public GenCpPort
{
public:
    // Whether the rate is raised to the fastest that both ends have; one look at a camera does without.
    enum class Rate
    {
        Raise,
        Keep
    };
    CameraLinkPort(std::unique_ptr<SerialLine> line, std::string serialNumber, Rate rate = Rate::Raise);
    ~CameraLinkPort() override { CameraLinkPort::close(); }

    // Brings the camera back to 9,600 baud, where the next program looks for it first.
    void close() override;

    // Longer than on other lines by the time of forty reads: what belongs to one feature has to come
    // together.
    std::chrono::milliseconds keepTime() const override;

    uint32_t baudRate() const { return serial().baudRate(); }

private:
    KX_Status settle() override;
    KX_Status findRate();
    KX_Status lookAtRates(std::chrono::milliseconds perRate);
    KX_Status raiseRate();
    KX_Status changeRate(const gencp::BaudRate& rate);
    KX_Status confirmRate(uint64_t address, uint32_t bit);
    const SerialLink& serial() const { return static_cast<const SerialLink&>(link()); }
    SerialLink& serial() { return static_cast<SerialLink&>(link()); }

    const Rate m_rate;
    uint64_t m_technologyRegisters = 0; // address of the SBRM; 0: none
};

} // namespace kx
