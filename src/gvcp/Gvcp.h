// The GigE Vision Control Protocol's packets and bootstrap registers (GigE Vision 1.2/2.0, chapters "GVCP"
// and "Bootstrap Registers"). Pure functions over bytes: no sockets, no state. Everything on the wire is
// big-endian; everything handed out is in host order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace gvcp
{

constexpr uint16_t kPort = 3956;
constexpr uint8_t kKey = 0x42;
constexpr uint8_t kFlagAckRequired = 0x01;
// Of a discovery or FORCEIP: a camera that cannot answer the asker, being of another network, may answer
// everybody.
constexpr uint8_t kFlagAllowBroadcastAck = 0x10;
constexpr size_t kHeaderSize = 8;
constexpr size_t kMaxReadMemory = 536;    // bytes per READMEM and WRITEMEM
constexpr size_t kMaxReadRegisters = 135; // addresses per READREG
constexpr size_t kMaxWriteRegisters = 67; // pairs per WRITEREG
constexpr size_t kMaxPacket = 576;

enum Command : uint16_t
{
    DiscoveryCmd = 0x0002,
    DiscoveryAck = 0x0003,
    ForceIpCmd = 0x0004,
    ForceIpAck = 0x0005,
    PacketResendCmd = 0x0040,
    ReadRegCmd = 0x0080,
    ReadRegAck = 0x0081,
    WriteRegCmd = 0x0082,
    WriteRegAck = 0x0083,
    ReadMemCmd = 0x0084,
    ReadMemAck = 0x0085,
    WriteMemCmd = 0x0086,
    WriteMemAck = 0x0087,
    PendingAck = 0x0089
};

enum Status : uint16_t
{
    Success = 0x0000,
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    Busy = 0x8007,
    MessageTimeout = 0x800B,
    InvalidHeader = 0x800E,
    GenericError = 0x8FFF
};

// Bootstrap registers.
enum Register : uint32_t
{
    RegVersion = 0x0000,
    RegDeviceMode = 0x0004,
    RegMacHigh = 0x0008,
    RegMacLow = 0x000C,
    RegIpOptions = 0x0010,
    RegIpCurrent = 0x0014,
    RegCurrentAddress = 0x0024,
    RegCurrentMask = 0x0034,
    RegCurrentGateway = 0x0044,
    RegManufacturer = 0x0048,     // 32 bytes
    RegModel = 0x0068,            // 32
    RegDeviceVersion = 0x0088,    // 32
    RegManufacturerInfo = 0x00A8, // 48
    RegSerialNumber = 0x00D8,     // 16
    RegUserName = 0x00E8,         // 16
    RegFirstUrl = 0x0200,         // 512
    RegSecondUrl = 0x0400,        // 512
    RegInterfaceCount = 0x0600,
    RegPersistentAddress = 0x064C,
    RegPersistentMask = 0x065C,
    RegPersistentGateway = 0x066C,
    RegLinkSpeed = 0x0670,
    RegMessageChannelCount = 0x0900,
    RegStreamChannelCount = 0x0904,
    RegCapabilities = 0x0934,
    RegHeartbeatTimeout = 0x0938,
    RegTimestampHigh = 0x093C,
    RegTimestampLow = 0x0940,
    RegDiscoveryAckDelay = 0x0950,
    RegGvcpConfiguration = 0x0954,
    RegPendingTimeout = 0x0958,
    RegControlSwitchoverKey = 0x095C,
    RegControlPrivilege = 0x0A00,
    RegPrimaryPort = 0x0A04,
    RegPrimaryAddress = 0x0A14,
    RegStreamPort0 = 0x0D00,
    RegStreamPacketSize0 = 0x0D04,
    RegStreamDelay0 = 0x0D08,
    RegStreamAddress0 = 0x0D18,
    BootstrapSize = 0xA000 // maker-specific space begins here
};

constexpr size_t kDiscoverySize = 0xF8;

// How a camera comes by its address (registers 0x0010: what it can, 0x0014: what is switched on).
constexpr uint32_t kIpPersistent = 0x1;
constexpr uint32_t kIpDhcp = 0x2;
constexpr uint32_t kIpLinkLocal = 0x4;

// Device mode (register 0x0004).
constexpr uint32_t kDeviceModeBigEndian = 0x80000000;

// Control channel privilege (register 0x0A00).
constexpr uint32_t kPrivilegeExclusive = 0x00000001;
constexpr uint32_t kPrivilegeControl = 0x00000002;
constexpr uint32_t kPrivilegeSwitchover = 0x00000004;

// Capability bits of register 0x0934.
constexpr uint32_t kCapabilityConcatenation = 0x00000001;
constexpr uint32_t kCapabilityWriteMemory = 0x00000002;
constexpr uint32_t kCapabilityPacketResend = 0x00000004;
constexpr uint32_t kCapabilityPendingAck = 0x00000020;
constexpr uint32_t kCapabilityHeartbeatDisable = 0x20000000;
constexpr uint32_t kCapabilitySerialNumber = 0x40000000;
constexpr uint32_t kCapabilityUserName = 0x80000000;

// Configuration bits of register 0x0954.
constexpr uint32_t kConfigurationHeartbeatDisable = 0x00000001;

using Bytes = std::vector<uint8_t>;

struct RegisterWrite
{
    uint32_t address = 0;
    uint32_t value = 0;
};

// ---- commands (what an application sends) --------------------------------------------------------------

struct CommandPacket
{
    uint8_t flags = kFlagAckRequired;
    uint16_t command = 0;
    uint16_t id = 0; // never 0 on the wire
    Bytes payload;
};

Bytes encodeDiscovery(uint16_t id, bool mayBroadcastAck = false);
Bytes encodeReadRegisters(uint16_t id, const std::vector<uint32_t>& addresses);
Bytes encodeWriteRegisters(uint16_t id, const std::vector<RegisterWrite>& writes);
Bytes encodeReadMemory(uint16_t id, uint32_t address, uint16_t count);
Bytes encodeWriteMemory(uint16_t id, uint32_t address, const uint8_t* data, size_t size);
// What FORCEIP_CMD gives the camera of that MAC address, and nobody else.
struct ForcedIp
{
    uint32_t macHigh = 0; // the upper 16 bits
    uint32_t macLow = 0;
    uint32_t address = 0; // 0: the camera is to look for one again, as after power-up
    uint32_t mask = 0;
    uint32_t gateway = 0;
};
Bytes encodeForceIp(uint16_t id, const ForcedIp& wanted);
// Gives an encoded command another id.
void setId(Bytes& command, uint16_t id);
// The id that follows; 0 is none.
uint16_t nextId(uint16_t id);

// Nothing when the bytes are no command: wrong key, short header, or a length that is not the payload's.
std::optional<CommandPacket> decodeCommand(const uint8_t* data, size_t size);

// Payload readers; nothing when the payload has not the shape that the command asks for.
std::optional<std::vector<uint32_t>> parseReadRegisters(const Bytes& payload);
std::optional<std::vector<RegisterWrite>> parseWriteRegisters(const Bytes& payload);
struct MemoryRange
{
    uint32_t address = 0;
    uint16_t count = 0;
};
std::optional<MemoryRange> parseReadMemory(const Bytes& payload);
struct MemoryWrite
{
    uint32_t address = 0;
    Bytes data;
};
std::optional<MemoryWrite> parseWriteMemory(const Bytes& payload);
std::optional<ForcedIp> parseForceIp(const Bytes& payload);

// ---- acknowledges (what a camera answers) --------------------------------------------------------------

struct AckPacket
{
    uint16_t status = Success;
    uint16_t command = 0;
    uint16_t id = 0;
    Bytes payload;
};

Bytes encodeAck(const AckPacket& ack);
// Nothing when the bytes are no acknowledge (short header, or a length that exceeds the bytes).
std::optional<AckPacket> decodeAck(const uint8_t* data, size_t size);

// Payload of READREG_ACK; nothing unless it holds exactly `expected` values.
std::optional<std::vector<uint32_t>> parseRegisterValues(const Bytes& payload, size_t expected);
// Milliseconds that a PENDING_ACK asks for; nothing when malformed.
std::optional<uint16_t> parsePendingAck(const Bytes& payload);
Bytes pendingAckPayload(uint16_t milliseconds);
// Index of the last register written and index of the failed one are one word in WRITEREG_ACK.
Bytes writeAckPayload(uint16_t index);

struct Discovery
{
    uint32_t version = 0; // of the standard
    uint32_t macHigh = 0;
    uint32_t macLow = 0;
    uint32_t address = 0;
    bool isBigEndian = false; // its registers, of the device mode
    std::string manufacturer;
    std::string model;
    std::string deviceVersion;
    std::string serialNumber;
    std::string userName;
};
// Reads the 248 bytes of a DISCOVERY_ACK; nothing when there are fewer.
std::optional<Discovery> parseDiscovery(const Bytes& payload);

// ---- byte order ----------------------------------------------------------------------------------------

uint16_t get16(const uint8_t* data);
uint32_t get32(const uint8_t* data);
void put16(uint8_t* data, uint16_t value);
void put32(uint8_t* data, uint32_t value);

// "127.0.0.11" <-> 0x7F00000B; nothing when the text is no dotted quad.
std::optional<uint32_t> parseAddress(const std::string& text);
std::string formatAddress(uint32_t address);

} // namespace gvcp
