// GenCP frames over a serial line (GenCP 1.3, chapter "Serial Protocol"), channel 0.
#pragma once

#include "KXCameraControl/ports/cameralink/SerialLine.h"
#include "KXCameraControl/ports/gencp/GenCpLink.h"
#include "gencp/SerialFrame.h"

#include <memory>

namespace kx
{

class SerialLink final : public GenCpLink
{
public:
    explicit SerialLink(std::unique_ptr<SerialLine> line) : m_line(std::move(line)) {}

    KX_Status open() override;
    void close() override { m_line->close(); }
    bool isOpen() const override { return m_line->isOpen(); }
    gencp::ByteOrder byteOrder() const override { return gencp::ByteOrder::Big; }
    size_t prefixSize() const override { return gencp::kSerialPrefixSize; }
    Outcome send(const gencp::Bytes& packet, Clock::time_point deadline) override;
    Outcome receive(gencp::Bytes& packet, Clock::time_point deadline) override;
    std::chrono::milliseconds wireTime(size_t bytes) const override;
    std::string name() const override { return m_line->name(); }
    std::string errorText() const override { return m_line->errorText(); }
    std::string lossText() const override { return m_line->lossText(); }

    // What has arrived and was not taken is forgotten.
    bool setBaudRate(uint32_t baud);
    uint32_t baudRate() const { return m_baud; }

private:
    const std::unique_ptr<SerialLine> m_line;
    gencp::SerialFrames m_frames;
    uint32_t m_baud = 9600;
};

} // namespace kx
