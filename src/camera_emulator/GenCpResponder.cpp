#include "camera_emulator/GenCpResponder.h"

#include "camera_emulator/Zip.h"
#include "digest/Digest.h"

#include <algorithm>

namespace emu
{

using namespace gencp;

std::vector<Reply> GenCpResponder::handle(const Bytes& packet, Clock::time_point now)
{
    const auto command = decodeCommand(packet.data(), packet.size(), byteOrder);
    if (gate.isSwallowed(true, now)) {
        ++counters.lost;
        return {};
    }
    if (!command) {
        ++counters.malformed;
        return {};
    }
    const auto accident = gate.takeAccident();
    if (accident && accident->mishap == Mishap::RequestLost) {
        ++counters.lost;
        return {};
    }
    const auto refusal = gate.takeRefusal(accident);
    const Answer answer = refusal ? Answer{*refusal, {}} : answerTo(*command);
    if (answer.status != Success)
        ++counters.refused;
    std::vector<Reply> replies;
    Clock::time_point due = now + latency + gate.faults.delay;
    if (gate.takePending()) {
        ++counters.pending;
        const auto time =
            static_cast<uint16_t>(std::clamp<int64_t>(gate.faults.pendingTime.count(), 0, 0xFFFF));
        replies.push_back(
            {encodeAck({Success, PendingAck, command->id, pendingAckScd(time, byteOrder)}, byteOrder), due});
        due += gate.faults.pendingTime;
    }
    const auto acknowledge = static_cast<uint16_t>(command->command + 1);
    if ((command->flags & AckRequired) != 0 && gate.losesAnswer())
        ++counters.lost;
    else if ((command->flags & AckRequired) != 0)
        replies.push_back(
            {encodeAck({answer.status, acknowledge, command->id, answer.scd}, byteOrder), due, false});
    if (accident)
        befall(*accident, byteOrder == gencp::ByteOrder::Big, replies);
    gate.countDown(now);
    return replies;
}

GenCpResponder::Answer GenCpResponder::answerTo(const CommandPacket& command)
{
    switch (command.command) {
    case ReadMemCmd:
        ++counters.readMem;
        return readMemory(command);
    case WriteMemCmd:
        ++counters.writeMem;
        return writeMemory(command);
    default:
        ++counters.unknown;
        return {NotImplemented, {}};
    }
}

GenCpResponder::Answer GenCpResponder::readMemory(const CommandPacket& command)
{
    const auto range = parseReadMemory(command.scd, byteOrder);
    if (!range || range->count == 0 || range->count > mostBytes)
        return {InvalidParameter, {}};
    const uint16_t status = check(range->address, range->count);
    if (status != Success)
        return {status, {}};
    counters.bytesRead += range->count;
    return {Success, memory.read(range->address, range->count)};
}

GenCpResponder::Answer GenCpResponder::writeMemory(const CommandPacket& command)
{
    const auto write = parseWriteMemory(command.scd, byteOrder);
    if (!write || write->data.size() > mostBytes)
        return {InvalidParameter, {}};
    uint16_t status = check(write->address, write->data.size());
    if (status == Success && readOnly.overlaps(write->address, write->data.size()))
        status = WriteProtect;
    if (status != Success)
        return {status, {}};
    memory.write(write->address, write->data);
    for (size_t done = 0; done < write->data.size(); done += 4)
        written(write->address + done);
    counters.bytesWritten += write->data.size();
    ++counters.settingWrites;
    return {Success, writeAckScd(static_cast<uint16_t>(write->data.size()), byteOrder)};
}

uint16_t GenCpResponder::check(uint64_t address, size_t size) const
{
    if (size > ~address)
        return InvalidAddress;
    return gate.refusalOf(address, size).value_or(Success);
}

void GenCpResponder::writeNumber(uint64_t address, uint64_t value, size_t size)
{
    Bytes bytes;
    append(bytes, value, size, byteOrder);
    memory.write(address, bytes);
}

uint64_t GenCpResponder::readNumber(uint64_t address, size_t size) const
{
    return get(memory.read(address, size).data(), size, byteOrder);
}

namespace
{

void writeTexts(const CameraConfig& config, Memory& memory)
{
    memory.writeText(RegManufacturer, config.manufacturer, kTextSize);
    memory.writeText(RegModel, config.model, kTextSize);
    memory.writeText(RegFamily, config.model, kTextSize);
    memory.writeText(RegDeviceVersion, config.firmware, kTextSize);
    memory.writeText(RegManufacturerInfo, "Software camera", kTextSize);
    memory.writeText(RegSerialNumber, config.serial, kTextSize);
    memory.writeText(RegUserName, config.userName, kTextSize);
}

// Of the first `size` bytes.
Bytes sha1Of(const Bytes& bytes, size_t size)
{
    const digest::Sha1 sum = digest::sha1({reinterpret_cast<const char*>(bytes.data()), size});
    return {sum.begin(), sum.end()};
}

// The form that the configuration asks for comes first.
void writeFiles(const CameraConfig& config, const std::string& description, GenCpResponder& responder)
{
    const Bytes plain(description.begin(), description.end());
    const Bytes zip = zipOneFile("camera.xml", description);
    ManifestEntry plainEntry;
    plainEntry.address = kGenCpDescription;
    plainEntry.size = std::min(plain.size(), config.descriptionLimit);
    plainEntry.sha1 = sha1Of(plain, plainEntry.size);
    ManifestEntry zipEntry = plainEntry;
    zipEntry.format = static_cast<uint8_t>(FileFormat::Zip);
    zipEntry.address = kGenCpZippedDescription;
    zipEntry.size = std::min(zip.size(), config.descriptionLimit);
    zipEntry.sha1 = sha1Of(zip, zipEntry.size);

    responder.memory.write(kGenCpDescription, plain.data(), plainEntry.size);
    responder.memory.write(kGenCpZippedDescription, zip.data(), zipEntry.size);
    responder.writeNumber(kManifestTable, 2, 8);
    const uint64_t first = kManifestTable + 8;
    responder.memory.write(first,
                           encodeManifestEntry(config.zipped ? zipEntry : plainEntry, responder.byteOrder));
    responder.memory.write(first + kManifestEntrySize,
                           encodeManifestEntry(config.zipped ? plainEntry : zipEntry, responder.byteOrder));
}

} // namespace

void writeGenCpBootstrap(const CameraConfig& config, const std::string& description,
                         GenCpResponder& responder)
{
    responder.writeNumber(RegVersion, 0x00010003, 4);
    writeTexts(config, responder.memory);
    responder.writeNumber(RegCapability, kCapabilityUserName | kCapabilityTechnologyRegisters, 8);
    responder.writeNumber(RegLongestResponseTime, 100, 4);
    responder.writeNumber(RegManifestTable, kManifestTable, 8);
    responder.writeNumber(RegTechnologyRegisters, kTechnologyRegisters, 8);
    writeFiles(config, description, responder);
    responder.readOnly.add(RegVersion, RegUserName);
    responder.readOnly.add(RegCapability, RegConfiguration - RegCapability);
    responder.readOnly.add(kManifestTable, kGenCpZippedDescription + 0x20000000 - kManifestTable);
}

} // namespace emu
