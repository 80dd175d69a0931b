// The GenICam Control Protocol's packets and bootstrap registers (GenCP 1.3, chapters "Packet Layout",
// "Commands" and "Bootstrap Register Map"), in the two byte orders that transports give it: USB3 Vision is
// little-endian, serial lines are big-endian. Pure functions over bytes: no input or output, no state.
// A packet here is what all transports share: common command data (CCD) and specific command data (SCD),
// without the prefix that a transport puts before it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace gencp
{

enum class ByteOrder
{
    Little,
    Big
};

constexpr size_t kHeaderSize = 8;       // CCD
constexpr size_t kReadCommandSize = 12; // SCD of ReadMem: address, reserved, count
constexpr size_t kWriteHeadSize = 8;    // SCD of WriteMem before the data: address
constexpr size_t kMaxScd = 0xFFFF;

enum Flag : uint16_t
{
    AckRequired = 0x4000,
    Repeated = 0x8000 // sent before under the same id
};

enum Command : uint16_t
{
    ReadMemCmd = 0x0800,
    ReadMemAck = 0x0801,
    WriteMemCmd = 0x0802,
    WriteMemAck = 0x0803,
    PendingAck = 0x0805
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
    WrongConfiguration = 0x800F,
    GenericError = 0x8FFF
};

// Technology-agnostic bootstrap registers (ABRM). Texts have 64 bytes.
enum Register : uint64_t
{
    RegVersion = 0x0000,
    RegManufacturer = 0x0004,
    RegModel = 0x0044,
    RegFamily = 0x0084,
    RegDeviceVersion = 0x00C4,
    RegManufacturerInfo = 0x0104,
    RegSerialNumber = 0x0144,
    RegUserName = 0x0184,
    RegCapability = 0x01C4,          // 8 bytes
    RegLongestResponseTime = 0x01CC, // 4, ms
    RegManifestTable = 0x01D0,       // 8: its address
    RegTechnologyRegisters = 0x01D8, // 8: address of the SBRM
    RegConfiguration = 0x01E0,       // 8
    RegTimestamp = 0x01F0,           // 8
    RegTimestampLatch = 0x01F8,
    RegTimestampIncrement = 0x01FC, // 8
    RegAccessPrivilege = 0x0204,
    BootstrapSize = 0x1000
};
constexpr size_t kTextSize = 64;

// Bits of RegCapability.
constexpr uint64_t kCapabilityUserName = 0x1;
constexpr uint64_t kCapabilityTechnologyRegisters = 0x200; // there is an SBRM

using Bytes = std::vector<uint8_t>;

// ---- byte order ----------------------------------------------------------------------------------------

// `size` is 1 to 8 bytes.
uint64_t get(const uint8_t* data, size_t size, ByteOrder order);
void put(uint8_t* data, uint64_t value, size_t size, ByteOrder order);
void append(Bytes& bytes, uint64_t value, size_t size, ByteOrder order);

// ---- commands (what a host sends) ----------------------------------------------------------------------

struct CommandPacket
{
    uint16_t flags = AckRequired;
    uint16_t command = 0;
    uint16_t id = 0;
    Bytes scd;
};

Bytes encodeCommand(const CommandPacket& packet, ByteOrder order);
Bytes readMemoryScd(uint64_t address, uint16_t count, ByteOrder order);
Bytes writeMemoryScd(uint64_t address, const uint8_t* data, size_t size, ByteOrder order);

// Nothing when the length is not that of the bytes.
std::optional<CommandPacket> decodeCommand(const uint8_t* data, size_t size, ByteOrder order);

struct MemoryRange
{
    uint64_t address = 0;
    uint16_t count = 0;
};
std::optional<MemoryRange> parseReadMemory(const Bytes& scd, ByteOrder order);
struct MemoryWrite
{
    uint64_t address = 0;
    Bytes data;
};
std::optional<MemoryWrite> parseWriteMemory(const Bytes& scd, ByteOrder order);

// ---- acknowledges (what a camera answers) --------------------------------------------------------------

struct AckPacket
{
    uint16_t status = Success;
    uint16_t command = 0;
    uint16_t id = 0;
    Bytes scd;
};

Bytes encodeAck(const AckPacket& ack, ByteOrder order);
// Nothing when the length is not that of the bytes.
std::optional<AckPacket> decodeAck(const uint8_t* data, size_t size, ByteOrder order);

Bytes pendingAckScd(uint16_t milliseconds, ByteOrder order);
std::optional<uint16_t> parsePendingAck(const Bytes& scd, ByteOrder order);
Bytes writeAckScd(uint16_t written, ByteOrder order);

// ---- the manifest --------------------------------------------------------------------------------------

constexpr size_t kManifestEntrySize = 64; // entries follow their count, which has 8 bytes
constexpr size_t kSha1Size = 20;

enum class FileFormat
{
    Plain = 0,
    Zip = 1
};

// One file that the camera has (GenCP 1.3, chapter "Manifest Table").
struct ManifestEntry
{
    uint8_t fileType = 0; // 0: the device's description
    uint8_t format = 0;   // a FileFormat, or one that is not known
    uint8_t schemaMajor = 1;
    uint8_t schemaMinor = 1;
    uint64_t address = 0;
    uint64_t size = 0;
    Bytes sha1; // kSha1Size bytes; empty: not given (zeros on the wire)
};

ManifestEntry parseManifestEntry(const uint8_t (&data)[kManifestEntrySize], ByteOrder order);
Bytes encodeManifestEntry(const ManifestEntry& entry, ByteOrder order);

} // namespace gencp
