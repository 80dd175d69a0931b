// GenCP packets on a serial line (GenCP 1.3, chapter "Serial Protocol"): preamble, two checksums, channel.
// Big-endian throughout. Pure: bytes in, frames out.
#pragma once

#include "gencp/Gencp.h"

#include <deque>

namespace gencp
{

constexpr size_t kSerialPrefixSize = 8; // preamble, checksum of the header, checksum of all, channel

// One's complement of the one's complement sum of 16-bit words; a last odd byte is an upper half.
uint16_t serialChecksum(const uint8_t* data, size_t size);

Bytes serialFrame(uint16_t channel, const Bytes& packet);

// Finds frames in what a line delivers: whatever is no frame is dropped byte by byte, so that noise costs the
// frames that it hit and no other.
class SerialFrames
{
public:
    struct Frame
    {
        uint16_t channel = 0;
        Bytes packet;
    };

    // `longest`: of a packet; a header that announces more is noise.
    explicit SerialFrames(size_t longest = 4096) : m_longest(longest) {}

    void add(const uint8_t* data, size_t size) { m_bytes.insert(m_bytes.end(), data, data + size); }
    void clear() { m_bytes.clear(); }
    // The next whole frame; nothing: more bytes are needed.
    std::optional<Frame> next();
    // Bytes that were dropped as noise since construction.
    uint64_t dropped() const { return m_dropped; }

private:
    void drop(size_t count);

    const size_t m_longest;
    std::deque<uint8_t> m_bytes;
    uint64_t m_dropped = 0;
};

// Bits of the registers "supported baud rates" (SBRM + 0) and "current baud rate" (SBRM + 4) of a camera
// behind a serial line.
struct BaudRate
{
    uint32_t bit;
    uint32_t baud;
};
constexpr BaudRate kBaudRates[] = {{0x01, 9600},   {0x02, 19200},  {0x04, 38400},  {0x08, 57600},
                                   {0x10, 115200}, {0x20, 230400}, {0x40, 460800}, {0x80, 921600}};
constexpr uint64_t kSupportedBaudRates = 0x0;
constexpr uint64_t kCurrentBaudRate = 0x4;
constexpr unsigned kBaudRateConfirmation = 250; // ms that a camera waits for a command at a new rate

} // namespace gencp
