#include "KXCameraControl/ports/cameralink/SerialLink.h"

namespace kx
{

using gencp::Bytes;

namespace
{

constexpr uint16_t kControlChannel = 0;
constexpr size_t kBitsPerByte = 10; // start and stop bit included
constexpr size_t kMostLate = 8192;  // bytes that are looked at when the time is over

GenCpLink::Outcome toOutcome(SerialLine::Outcome outcome)
{
    switch (outcome) {
    case SerialLine::Outcome::Done:
        return GenCpLink::Outcome::Done;
    case SerialLine::Outcome::TimedOut:
        return GenCpLink::Outcome::TimedOut;
    case SerialLine::Outcome::Gone:
        return GenCpLink::Outcome::Gone;
    default:
        return GenCpLink::Outcome::Failed;
    }
}

} // namespace

KX_Status SerialLink::open()
{
    m_frames.clear();
    m_baud = 9600;
    return m_line->open();
}

bool SerialLink::setBaudRate(uint32_t baud)
{
    m_frames.clear();
    if (!m_line->setBaudRate(baud))
        return false;
    m_baud = baud;
    return true;
}

std::chrono::milliseconds SerialLink::wireTime(size_t bytes) const
{
    return std::chrono::milliseconds(bytes * kBitsPerByte * 1000 / m_baud + 1);
}

GenCpLink::Outcome SerialLink::send(const Bytes& packet, Clock::time_point deadline)
{
    const Bytes frame = gencp::serialFrame(kControlChannel, packet);
    return toOutcome(m_line->write(frame.data(), frame.size(), deadline));
}

GenCpLink::Outcome SerialLink::receive(Bytes& packet, Clock::time_point deadline)
{
    size_t late = 0;
    for (;;) {
        while (auto frame = m_frames.next())
            if (frame->channel == kControlChannel) {
                packet = std::move(frame->packet);
                return Outcome::Done;
            }
        uint8_t bytes[1024];
        size_t size = 0;
        const SerialLine::Outcome outcome = m_line->read(bytes, sizeof bytes, size, deadline);
        if (outcome != SerialLine::Outcome::Done)
            return toOutcome(outcome);
        m_frames.add(bytes, size);
        // Noise without end must not keep a request alive.
        late += Clock::now() >= deadline ? size : 0;
        if (late > kMostLate)
            return Outcome::TimedOut;
    }
}

} // namespace kx
