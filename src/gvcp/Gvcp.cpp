#include "gvcp/Gvcp.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace gvcp
{
namespace
{

// FORCEIP_CMD's payload.
constexpr size_t kForceIpMacHigh = 2;
constexpr size_t kForceIpMacLow = 4;
constexpr size_t kForceIpAddress = 20;
constexpr size_t kForceIpMask = 36;
constexpr size_t kForceIpGateway = 52;
constexpr size_t kForceIpSize = 56;

Bytes withHeader(uint16_t command, uint16_t id, size_t payloadSize)
{
    Bytes packet(kHeaderSize + payloadSize);
    packet[0] = kKey;
    packet[1] = kFlagAckRequired;
    put16(&packet[2], command);
    put16(&packet[4], static_cast<uint16_t>(payloadSize));
    put16(&packet[6], id);
    return packet;
}

std::string textField(const Bytes& bytes, size_t offset, size_t size)
{
    const auto* begin = reinterpret_cast<const char*>(bytes.data()) + offset;
    return std::string(begin, strnlen(begin, size));
}

} // namespace

uint16_t get16(const uint8_t* data)
{
    return static_cast<uint16_t>(data[0] << 8 | data[1]);
}

uint32_t get32(const uint8_t* data)
{
    return uint32_t(data[0]) << 24 | uint32_t(data[1]) << 16 | uint32_t(data[2]) << 8 | uint32_t(data[3]);
}

void put16(uint8_t* data, uint16_t value)
{
    data[0] = static_cast<uint8_t>(value >> 8);
    data[1] = static_cast<uint8_t>(value);
}

void put32(uint8_t* data, uint32_t value)
{
    put16(data, static_cast<uint16_t>(value >> 16));
    put16(data + 2, static_cast<uint16_t>(value));
}

Bytes encodeDiscovery(uint16_t id, bool mayBroadcastAck)
{
    Bytes packet = withHeader(DiscoveryCmd, id, 0);
    if (mayBroadcastAck)
        packet[1] |= kFlagAllowBroadcastAck;
    return packet;
}

Bytes encodeReadRegisters(uint16_t id, const std::vector<uint32_t>& addresses)
{
    Bytes packet = withHeader(ReadRegCmd, id, addresses.size() * 4);
    uint8_t* out = packet.data() + kHeaderSize;
    for (uint32_t address : addresses) {
        put32(out, address);
        out += 4;
    }
    return packet;
}

Bytes encodeWriteRegisters(uint16_t id, const std::vector<RegisterWrite>& writes)
{
    Bytes packet = withHeader(WriteRegCmd, id, writes.size() * 8);
    uint8_t* out = packet.data() + kHeaderSize;
    for (const RegisterWrite& write : writes) {
        put32(out, write.address);
        put32(out + 4, write.value);
        out += 8;
    }
    return packet;
}

Bytes encodeReadMemory(uint16_t id, uint32_t address, uint16_t count)
{
    Bytes packet = withHeader(ReadMemCmd, id, 8);
    put32(packet.data() + kHeaderSize, address);
    put16(packet.data() + kHeaderSize + 6, count);
    return packet;
}

Bytes encodeWriteMemory(uint16_t id, uint32_t address, const uint8_t* data, size_t size)
{
    Bytes packet = withHeader(WriteMemCmd, id, 4 + size);
    put32(packet.data() + kHeaderSize, address);
    std::copy(data, data + size, packet.begin() + kHeaderSize + 4);
    return packet;
}

// Words at offsets of the payload, with reserved bytes between them.
Bytes encodeForceIp(uint16_t id, const ForcedIp& wanted)
{
    Bytes packet = withHeader(ForceIpCmd, id, kForceIpSize);
    packet[1] |= kFlagAllowBroadcastAck;
    uint8_t* payload = packet.data() + kHeaderSize;
    put16(payload + kForceIpMacHigh, static_cast<uint16_t>(wanted.macHigh));
    put32(payload + kForceIpMacLow, wanted.macLow);
    put32(payload + kForceIpAddress, wanted.address);
    put32(payload + kForceIpMask, wanted.mask);
    put32(payload + kForceIpGateway, wanted.gateway);
    return packet;
}

void setId(Bytes& command, uint16_t id)
{
    put16(&command[6], id);
}

uint16_t nextId(uint16_t id)
{
    return id == 0xFFFF ? 1 : static_cast<uint16_t>(id + 1);
}

std::optional<CommandPacket> decodeCommand(const uint8_t* data, size_t size)
{
    if (size < kHeaderSize || data[0] != kKey)
        return std::nullopt;
    const size_t length = get16(data + 4);
    if (length != size - kHeaderSize)
        return std::nullopt;
    CommandPacket packet;
    packet.flags = data[1];
    packet.command = get16(data + 2);
    packet.id = get16(data + 6);
    packet.payload.assign(data + kHeaderSize, data + size);
    return packet;
}

std::optional<std::vector<uint32_t>> parseReadRegisters(const Bytes& payload)
{
    const size_t count = payload.size() / 4;
    if (payload.size() % 4 != 0 || count == 0 || count > kMaxReadRegisters)
        return std::nullopt;
    std::vector<uint32_t> addresses(count);
    for (size_t i = 0; i < count; ++i)
        addresses[i] = get32(&payload[i * 4]);
    return addresses;
}

std::optional<std::vector<RegisterWrite>> parseWriteRegisters(const Bytes& payload)
{
    const size_t count = payload.size() / 8;
    if (payload.size() % 8 != 0 || count == 0 || count > kMaxWriteRegisters)
        return std::nullopt;
    std::vector<RegisterWrite> writes(count);
    for (size_t i = 0; i < count; ++i)
        writes[i] = {get32(&payload[i * 8]), get32(&payload[i * 8 + 4])};
    return writes;
}

std::optional<MemoryRange> parseReadMemory(const Bytes& payload)
{
    if (payload.size() != 8)
        return std::nullopt;
    return MemoryRange{get32(&payload[0]), get16(&payload[6])};
}

std::optional<MemoryWrite> parseWriteMemory(const Bytes& payload)
{
    if (payload.size() <= 4 || payload.size() > 4 + kMaxReadMemory)
        return std::nullopt;
    return MemoryWrite{get32(&payload[0]), Bytes(payload.begin() + 4, payload.end())};
}

std::optional<ForcedIp> parseForceIp(const Bytes& payload)
{
    if (payload.size() != kForceIpSize)
        return std::nullopt;
    return ForcedIp{get16(&payload[kForceIpMacHigh]), get32(&payload[kForceIpMacLow]),
                    get32(&payload[kForceIpAddress]), get32(&payload[kForceIpMask]),
                    get32(&payload[kForceIpGateway])};
}

Bytes encodeAck(const AckPacket& ack)
{
    Bytes packet(kHeaderSize + ack.payload.size());
    put16(&packet[0], ack.status);
    put16(&packet[2], ack.command);
    put16(&packet[4], static_cast<uint16_t>(ack.payload.size()));
    put16(&packet[6], ack.id);
    std::copy(ack.payload.begin(), ack.payload.end(), packet.begin() + kHeaderSize);
    return packet;
}

std::optional<AckPacket> decodeAck(const uint8_t* data, size_t size)
{
    if (size < kHeaderSize)
        return std::nullopt;
    const size_t length = get16(data + 4);
    if (length > size - kHeaderSize)
        return std::nullopt;
    AckPacket ack;
    ack.status = get16(data);
    ack.command = get16(data + 2);
    ack.id = get16(data + 6);
    ack.payload.assign(data + kHeaderSize, data + kHeaderSize + length);
    return ack;
}

std::optional<std::vector<uint32_t>> parseRegisterValues(const Bytes& payload, size_t expected)
{
    if (payload.size() != expected * 4)
        return std::nullopt;
    std::vector<uint32_t> values(expected);
    for (size_t i = 0; i < expected; ++i)
        values[i] = get32(&payload[i * 4]);
    return values;
}

std::optional<uint16_t> parsePendingAck(const Bytes& payload)
{
    if (payload.size() < 4)
        return std::nullopt;
    return get16(&payload[2]);
}

Bytes pendingAckPayload(uint16_t milliseconds)
{
    Bytes payload(4);
    put16(&payload[2], milliseconds);
    return payload;
}

Bytes writeAckPayload(uint16_t index)
{
    Bytes payload(4);
    put16(&payload[2], index);
    return payload;
}

std::optional<Discovery> parseDiscovery(const Bytes& payload)
{
    if (payload.size() < kDiscoverySize)
        return std::nullopt;
    Discovery found;
    found.version = get32(&payload[RegVersion]);
    found.macHigh = get32(&payload[RegMacHigh]) & 0xFFFF;
    found.macLow = get32(&payload[RegMacLow]);
    found.address = get32(&payload[RegCurrentAddress]);
    found.isBigEndian = (get32(&payload[RegDeviceMode]) & kDeviceModeBigEndian) != 0;
    found.manufacturer = textField(payload, RegManufacturer, 32);
    found.model = textField(payload, RegModel, 32);
    found.deviceVersion = textField(payload, RegDeviceVersion, 32);
    found.serialNumber = textField(payload, RegSerialNumber, 16);
    found.userName = textField(payload, RegUserName, 16);
    return found;
}

std::optional<uint32_t> parseAddress(const std::string& text)
{
    unsigned part[4];
    char rest = 0;
    if (std::sscanf(text.c_str(), "%3u.%3u.%3u.%3u%c", &part[0], &part[1], &part[2], &part[3], &rest) != 4)
        return std::nullopt;
    uint32_t address = 0;
    for (unsigned value : part) {
        if (value > 255)
            return std::nullopt;
        address = address << 8 | value;
    }
    return address;
}

std::string formatAddress(uint32_t address)
{
    char text[16];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", address >> 24, address >> 16 & 255, address >> 8 & 255,
                  address & 255);
    return text;
}

} // namespace gvcp
