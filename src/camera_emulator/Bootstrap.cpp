#include "camera_emulator/Bootstrap.h"

#include "camera_emulator/Zip.h"
#include "gvcp/Gvcp.h"

#include <algorithm>
#include <cstdio>

namespace emu
{

using namespace gvcp;

namespace
{

constexpr uint32_t kVersion = 0x00010002;    // GigE Vision 1.2
constexpr uint32_t kDeviceMode = 0x80000001; // big-endian registers, UTF-8 texts
constexpr uint64_t kLocallyAdministered = 0x0200;
constexpr uint32_t kHeartbeat = 3000; // ms
constexpr uint32_t kTickFrequency = 1000000000;
constexpr uint32_t kLinkSpeed = 1000; // Mbit/s
constexpr uint32_t kPacketSize = 1400;
constexpr size_t kUrlSize = 512;

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::string hexadecimal(uint64_t number)
{
    char text[20];
    std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(number));
    return text;
}

std::string baseName(const CameraConfig& config)
{
    std::string name = config.descriptionFile.substr(config.descriptionFile.find_last_of('/') + 1);
    name.resize(std::min(name.size(), name.find_last_of('.')));
    std::replace(name.begin(), name.end(), ';', '_'); // the URL's own separator
    return name.empty() || !config.description.empty() ? "camera_emulator" : name;
}

std::string url(std::string text, const std::string& name, uint32_t address, size_t length,
                const std::string& schema)
{
    replaceAll(text, "{name}", name);
    replaceAll(text, "{address}", hexadecimal(address));
    replaceAll(text, "{length}", hexadecimal(length));
    replaceAll(text, "{schema}", schema);
    return text;
}

} // namespace

std::optional<uint64_t> macIn(const std::string& text)
{
    unsigned part[6] = {};
    int size = 0;
    const int count = std::sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%n", &part[0], &part[1], &part[2],
                                  &part[3], &part[4], &part[5], &size);
    if (count != 6 || static_cast<size_t>(size) != text.size())
        return std::nullopt;
    uint64_t mac = 0;
    for (const unsigned byte : part)
        mac = mac << 8 | byte;
    return mac;
}

void writeBootstrap(const CameraConfig& config, uint32_t address, uint32_t mask, Memory& memory)
{
    memory.writeWord(RegVersion, kVersion);
    memory.writeWord(RegDeviceMode, kDeviceMode);
    const uint64_t mac = macIn(config.mac).value_or(kLocallyAdministered << 32 | address);
    memory.writeWord(RegMacHigh, static_cast<uint32_t>(mac >> 32));
    memory.writeWord(RegMacLow, static_cast<uint32_t>(mac));
    memory.writeWord(RegIpOptions, kIpLinkLocal | kIpDhcp | kIpPersistent);
    memory.writeWord(RegIpCurrent, kIpLinkLocal | (config.isPersistent ? kIpPersistent : kIpDhcp));
    memory.writeWord(RegCurrentAddress, address);
    memory.writeWord(RegCurrentMask, mask);
    memory.writeText(RegManufacturer, config.manufacturer, 32);
    memory.writeText(RegModel, config.model, 32);
    memory.writeText(RegDeviceVersion, config.firmware, 32);
    memory.writeText(RegManufacturerInfo, "Software camera", 48);
    memory.writeText(RegSerialNumber, config.serial, 16);
    memory.writeText(RegUserName, config.userName, 16);

    memory.writeWord(RegInterfaceCount, 1);
    memory.writeWord(RegPersistentAddress, config.isPersistent ? address : 0);
    memory.writeWord(RegPersistentMask, config.isPersistent ? mask : 0);
    memory.writeWord(RegLinkSpeed, kLinkSpeed);
    memory.writeWord(RegMessageChannelCount, 0);
    memory.writeWord(RegStreamChannelCount, 1);
    memory.writeWord(RegCapabilities, kCapabilityUserName | kCapabilitySerialNumber |
                                          kCapabilityHeartbeatDisable | kCapabilityPendingAck |
                                          kCapabilityWriteMemory |
                                          (config.concatenation ? kCapabilityConcatenation : 0));
    memory.writeWord(RegHeartbeatTimeout, kHeartbeat);
    memory.writeWord(RegTimestampHigh, 0);
    memory.writeWord(RegTimestampLow, kTickFrequency);
    memory.writeWord(RegStreamPacketSize0, kPacketSize);
}

void writeDescription(const CameraConfig& config, const std::string& description,
                      const std::string& schemaVersion, Memory& memory, AddressRanges& readOnly)
{
    const std::string name = baseName(config);
    Bytes plain(description.begin(), description.end());
    Bytes zip = zipOneFile(name + ".xml", description);
    const size_t limit = std::min(config.descriptionLimit, kMaxDescriptionSize);
    plain.resize(std::min(plain.size(), limit));
    zip.resize(std::min(zip.size(), limit));
    memory.write(kDescriptionAddress, plain);
    memory.write(kZippedDescriptionAddress, zip);
    // Reads come in whole words.
    readOnly.add(kDescriptionAddress, plain.size() + 4);
    readOnly.add(kZippedDescriptionAddress, zip.size() + 4);

    const std::string usual = "Local:{name};{address};{length}?SchemaVersion={schema}";
    const auto urlFor = [&](bool zipped, const std::string& text) {
        return zipped ? url(text.empty() ? usual : text, name + ".zip", kZippedDescriptionAddress, zip.size(),
                            schemaVersion)
                      : url(text.empty() ? usual : text, name + ".xml", kDescriptionAddress, plain.size(),
                            schemaVersion);
    };
    memory.writeText(RegFirstUrl, urlFor(config.zipped, config.firstUrl), kUrlSize);
    memory.writeText(RegSecondUrl, urlFor(!config.zipped, config.secondUrl), kUrlSize);
}

AddressRanges readOnlyBootstrap()
{
    AddressRanges ranges;
    ranges.add(RegVersion, RegIpCurrent - RegVersion);
    ranges.add(RegIpCurrent + 4, RegUserName - RegIpCurrent - 4);
    ranges.add(RegFirstUrl, 2 * kUrlSize);
    for (uint32_t address :
         {RegInterfaceCount, RegLinkSpeed, RegMessageChannelCount, RegStreamChannelCount, RegCapabilities,
          RegTimestampHigh, RegTimestampLow, RegPrimaryPort, RegPrimaryAddress})
        ranges.add(address, 4);
    return ranges;
}

} // namespace emu
