#include "camera_emulator/producer/State.h"

#include <cstring>
#include <thread>

namespace producer
{

namespace
{

// Not thread_local: leak checkers fall over that in a library that is loaded late.
struct LastErrors
{
    std::mutex mutex;
    std::map<std::thread::id, std::pair<Error, std::string>> byThread;
};

LastErrors& lastErrors()
{
    static auto* const instance = new LastErrors;
    return *instance;
}

const char kDescription[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<RegisterDescription ModelName="Grabber" VendorName="Emulated" ToolTip="Module of the emulated producer"
    StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="0"
    MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="5B1C2D6E-0001-4A6B-9C21-3E6D1C0A7F01" VersionGuid="5B1C2D6E-0002-4A6B-9C21-3E6D1C0A7F01"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">
    <Category Name="Root">
        <pFeature>DeviceControlProtocol</pFeature>
        <pFeature>LinkSpeed</pFeature>
        <pFeature>LinkGain</pFeature>
        <pFeature>LinkName</pFeature>
        <pFeature>LinkReset</pFeature>
        <pFeature>LinkPower</pFeature>
    </Category>
    <Enumeration Name="DeviceControlProtocol">
        <EnumEntry Name="None"><Value>0</Value></EnumEntry>
        <EnumEntry Name="GenCP"><Value>1</Value></EnumEntry>
        <pValue>ControlProtocolRegister</pValue>
    </Enumeration>
    <Integer Name="LinkSpeed"><pValue>LinkSpeedRegister</pValue><Min>0</Min><Max>12500</Max></Integer>
    <Float Name="LinkGain"><pValue>LinkGainRegister</pValue></Float>
    <Boolean Name="LinkPower"><pValue>LinkPowerRegister</pValue></Boolean>
    <StringReg Name="LinkName">
        <Address>0x40</Address><Length>16</Length><AccessMode>RW</AccessMode><pPort>ModulePort</pPort>
    </StringReg>
    <Command Name="LinkReset"><pValue>LinkResetRegister</pValue><CommandValue>1</CommandValue></Command>
    <IntReg Name="ControlProtocolRegister">
        <Address>0x10</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>ModulePort</pPort>
        <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
    </IntReg>
    <IntReg Name="LinkSpeedRegister">
        <Address>0x14</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>ModulePort</pPort>
        <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
    </IntReg>
    <FloatReg Name="LinkGainRegister">
        <Address>0x18</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>ModulePort</pPort>
        <Endianess>BigEndian</Endianess>
    </FloatReg>
    <IntReg Name="LinkPowerRegister">
        <Address>0x1C</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>ModulePort</pPort>
        <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
    </IntReg>
    <IntReg Name="LinkResetRegister">
        <Address>0x20</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>ModulePort</pPort>
        <Sign>Unsigned</Sign><Endianess>BigEndian</Endianess>
    </IntReg>
    <Port Name="ModulePort"/>
</RegisterDescription>
)";

bool isHidden(const Interface& interface)
{
    return !settings("CAMERA_EMULATOR_GENTL_HIDDEN").empty() &&
           interface.memory.registers[kControlProtocol + 3] != 1;
}

} // namespace

const std::string& ModuleMemory::description()
{
    static const auto* const text = new std::string(kDescription);
    return *text;
}

Error ModuleMemory::read(uint64_t address, void* data, size_t size) const
{
    const std::string& text = description();
    if (address <= registers.size() && size <= registers.size() - address)
        std::memcpy(data, registers.data() + address, size);
    else if (address >= kModuleDescription && address - kModuleDescription <= text.size() &&
             size <= text.size() - (address - kModuleDescription))
        std::memcpy(data, &text[address - kModuleDescription], size);
    else
        return fail(ErrInvalidAddress, "nothing lies there");
    return Success;
}

Error ModuleMemory::write(uint64_t address, const void* data, size_t size)
{
    if (address > registers.size() || size > registers.size() - address)
        return fail(ErrInvalidAddress, "nothing lies there");
    std::memcpy(registers.data() + address, data, size);
    return Success;
}

State& state()
{
    static auto* const instance = new State;
    return *instance;
}

void State::look()
{
    for (auto& [path, device] : devices)
        device->isListed = false;
    for (auto& [id, interface] : interfaces)
        interface->listed.clear();
    listed.clear();
    for (const std::string& path : settings("CAMERA_EMULATOR_GENTL")) {
        CameraLine line;
        const auto fields = line.connect(path) ? line.who() : std::vector<std::string>();
        if (fields.empty())
            continue;
        auto& device = devices[path];
        if (!device)
            device = std::make_unique<Device>();
        device->path = path;
        device->fields = fields;
        device->id = "EMU-" + fields[emu::FieldSerial];
        device->isListed = true;
        const std::string& name = fields[emu::FieldInterface];
        auto& interface = interfaces[name];
        if (!interface)
            interface = std::make_unique<Interface>();
        interface->id = name;
        interface->layer = fields[emu::FieldLayer];
        interface->listed.push_back(device.get());
    }
    for (auto& [id, interface] : interfaces) {
        listed.push_back(interface.get());
        if (isHidden(*interface))
            interface->listed.clear();
    }
}

Interface* interfaceOf(Handle handle)
{
    for (auto& [id, interface] : state().interfaces)
        if (interface.get() == handle && interface->isOpen)
            return interface.get();
    return nullptr;
}

namespace
{

template <class Part>
Device* deviceWith(Part part, Handle handle)
{
    for (auto& [path, device] : state().devices)
        if (device->isOpen && part(*device) == handle)
            return device.get();
    return nullptr;
}

} // namespace

Device* deviceOf(Handle handle)
{
    return deviceWith([](Device& device) -> void* { return &device; }, handle);
}

Device* deviceOfPort(Handle handle)
{
    return deviceWith([](Device& device) -> void* { return &device.port; }, handle);
}

Device* deviceOfEvent(Handle handle)
{
    return deviceWith([](Device& device) -> void* { return &device.event; }, handle);
}

Error fail(Error error, const std::string& text)
{
    LastErrors& all = lastErrors();
    const std::lock_guard lock(all.mutex);
    all.byThread[std::this_thread::get_id()] = {error, text};
    return error;
}

std::pair<Error, std::string> lastError()
{
    LastErrors& all = lastErrors();
    const std::lock_guard lock(all.mutex);
    return all.byThread[std::this_thread::get_id()];
}

} // namespace producer
