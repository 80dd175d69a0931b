#include "gencp/Gencp.h"

#include <algorithm>

namespace gencp
{

namespace
{

// Common command data begins with flags in a command and with a status in an acknowledge; the rest is alike.
Bytes withHeader(uint16_t first, uint16_t command, uint16_t id, const Bytes& scd, ByteOrder order)
{
    Bytes packet;
    packet.reserve(kHeaderSize + scd.size());
    append(packet, first, 2, order);
    append(packet, command, 2, order);
    append(packet, scd.size(), 2, order);
    append(packet, id, 2, order);
    packet.insert(packet.end(), scd.begin(), scd.end());
    return packet;
}

struct Header
{
    uint16_t first = 0;
    uint16_t command = 0;
    uint16_t id = 0;
    Bytes scd;
};

uint16_t get16(const uint8_t* data, ByteOrder order)
{
    return static_cast<uint16_t>(get(data, 2, order));
}

std::optional<Header> headerOf(const uint8_t* data, size_t size, ByteOrder order)
{
    if (size < kHeaderSize || get16(data + 4, order) != size - kHeaderSize)
        return std::nullopt;
    return Header{get16(data, order), get16(data + 2, order), get16(data + 6, order),
                  Bytes(data + kHeaderSize, data + size)};
}

} // namespace

uint64_t get(const uint8_t* data, size_t size, ByteOrder order)
{
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value = value << 8 | data[order == ByteOrder::Big ? i : size - 1 - i];
    return value;
}

void put(uint8_t* data, uint64_t value, size_t size, ByteOrder order)
{
    for (size_t i = 0; i < size; ++i, value >>= 8)
        data[order == ByteOrder::Big ? size - 1 - i : i] = static_cast<uint8_t>(value);
}

void append(Bytes& bytes, uint64_t value, size_t size, ByteOrder order)
{
    bytes.resize(bytes.size() + size);
    put(&bytes[bytes.size() - size], value, size, order);
}

Bytes encodeCommand(const CommandPacket& packet, ByteOrder order)
{
    return withHeader(packet.flags, packet.command, packet.id, packet.scd, order);
}

Bytes readMemoryScd(uint64_t address, uint16_t count, ByteOrder order)
{
    Bytes scd;
    append(scd, address, 8, order);
    append(scd, 0, 2, order);
    append(scd, count, 2, order);
    return scd;
}

Bytes writeMemoryScd(uint64_t address, const uint8_t* data, size_t size, ByteOrder order)
{
    Bytes scd;
    append(scd, address, 8, order);
    scd.insert(scd.end(), data, data + size);
    return scd;
}

std::optional<CommandPacket> decodeCommand(const uint8_t* data, size_t size, ByteOrder order)
{
    auto header = headerOf(data, size, order);
    if (!header)
        return std::nullopt;
    return CommandPacket{header->first, header->command, header->id, std::move(header->scd)};
}

std::optional<MemoryRange> parseReadMemory(const Bytes& scd, ByteOrder order)
{
    if (scd.size() != kReadCommandSize)
        return std::nullopt;
    return MemoryRange{get(scd.data(), 8, order), get16(&scd[10], order)};
}

std::optional<MemoryWrite> parseWriteMemory(const Bytes& scd, ByteOrder order)
{
    if (scd.size() <= kWriteHeadSize)
        return std::nullopt;
    return MemoryWrite{get(scd.data(), 8, order), Bytes(scd.begin() + kWriteHeadSize, scd.end())};
}

Bytes encodeAck(const AckPacket& ack, ByteOrder order)
{
    return withHeader(ack.status, ack.command, ack.id, ack.scd, order);
}

std::optional<AckPacket> decodeAck(const uint8_t* data, size_t size, ByteOrder order)
{
    auto header = headerOf(data, size, order);
    if (!header)
        return std::nullopt;
    return AckPacket{header->first, header->command, header->id, std::move(header->scd)};
}

// A reserved half word stands before the number in both.
Bytes pendingAckScd(uint16_t milliseconds, ByteOrder order)
{
    Bytes scd(2);
    append(scd, milliseconds, 2, order);
    return scd;
}

std::optional<uint16_t> parsePendingAck(const Bytes& scd, ByteOrder order)
{
    if (scd.size() != 4)
        return std::nullopt;
    return get16(&scd[2], order);
}

Bytes writeAckScd(uint16_t written, ByteOrder order)
{
    return pendingAckScd(written, order);
}

ManifestEntry parseManifestEntry(const uint8_t (&data)[kManifestEntrySize], ByteOrder order)
{
    const auto info = static_cast<uint32_t>(get(data + 4, 4, order));
    ManifestEntry entry;
    entry.fileType = info & 0x7;
    entry.format = static_cast<uint8_t>(info >> 10 & 0x3F);
    entry.schemaMinor = static_cast<uint8_t>(info >> 16);
    entry.schemaMajor = static_cast<uint8_t>(info >> 24);
    entry.address = get(data + 8, 8, order);
    entry.size = get(data + 16, 8, order);
    const uint8_t* sha1 = data + 24;
    if (std::any_of(sha1, sha1 + kSha1Size, [](uint8_t byte) { return byte != 0; }))
        entry.sha1.assign(sha1, sha1 + kSha1Size);
    return entry;
}

Bytes encodeManifestEntry(const ManifestEntry& entry, ByteOrder order)
{
    Bytes data;
    append(data, 0x01000000, 4, order); // version of the file: 1.0.0
    append(data,
           uint32_t(entry.schemaMajor) << 24 | uint32_t(entry.schemaMinor) << 16 |
               uint32_t(entry.format) << 10 | entry.fileType,
           4, order);
    append(data, entry.address, 8, order);
    append(data, entry.size, 8, order);
    data.insert(data.end(), entry.sha1.begin(), entry.sha1.end());
    data.resize(kManifestEntrySize);
    return data;
}

} // namespace gencp
