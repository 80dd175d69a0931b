#include "gencp/SerialFrame.h"

#include <algorithm>

namespace gencp
{

namespace
{

constexpr ByteOrder kOrder = ByteOrder::Big;
constexpr uint8_t kPreamble[] = {0x01, 0x00};
constexpr size_t kChannel = 6; // where the checksums begin
constexpr size_t kHead = kSerialPrefixSize + kHeaderSize;

} // namespace

uint16_t serialChecksum(const uint8_t* data, size_t size)
{
    uint32_t sum = 0;
    for (size_t i = 0; i < size; ++i)
        sum += i % 2 == 0 ? uint32_t(data[i]) << 8 : data[i];
    while (sum >> 16 != 0)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<uint16_t>(~sum);
}

Bytes serialFrame(uint16_t channel, const Bytes& packet)
{
    Bytes frame(kSerialPrefixSize);
    std::copy(std::begin(kPreamble), std::end(kPreamble), frame.begin());
    put(&frame[kChannel], channel, 2, kOrder);
    frame.insert(frame.end(), packet.begin(), packet.end());
    put(&frame[2], serialChecksum(&frame[kChannel], kHead - kChannel), 2, kOrder);
    put(&frame[4], serialChecksum(&frame[kChannel], frame.size() - kChannel), 2, kOrder);
    return frame;
}

void SerialFrames::drop(size_t count)
{
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<ptrdiff_t>(count));
    m_dropped += count;
}

std::optional<SerialFrames::Frame> SerialFrames::next()
{
    for (;;) {
        const auto begin =
            std::search(m_bytes.begin(), m_bytes.end(), std::begin(kPreamble), std::end(kPreamble));
        const bool isCut = begin == m_bytes.end() && !m_bytes.empty() && m_bytes.back() == kPreamble[0];
        drop(static_cast<size_t>(begin - m_bytes.begin()) - (isCut ? 1 : 0));
        if (m_bytes.size() < kHead)
            return std::nullopt;
        const Bytes head(m_bytes.begin(), m_bytes.begin() + kHead);
        const size_t length = get(&head[kSerialPrefixSize + 4], 2, kOrder);
        const size_t total = kHead + length;
        if (serialChecksum(&head[kChannel], kHead - kChannel) != get(&head[2], 2, kOrder) ||
            kHeaderSize + length > m_longest) {
            drop(1);
            continue;
        }
        if (m_bytes.size() < total)
            return std::nullopt;
        const Bytes frame(m_bytes.begin(), m_bytes.begin() + static_cast<ptrdiff_t>(total));
        if (serialChecksum(&frame[kChannel], total - kChannel) != get(&frame[4], 2, kOrder)) {
            drop(1);
            continue;
        }
        m_bytes.erase(m_bytes.begin(), m_bytes.begin() + static_cast<ptrdiff_t>(total));
        return Frame{static_cast<uint16_t>(get(&frame[kChannel], 2, kOrder)),
                     Bytes(frame.begin() + kSerialPrefixSize, frame.end())};
    }
}

} // namespace gencp
