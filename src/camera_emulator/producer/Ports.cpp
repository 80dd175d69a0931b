// The exported functions of ports: the cameras', and those of the system and the interfaces.
#include "camera_emulator/producer/Infos.h"

#include <cstdio>

using namespace producer;

namespace
{

ModuleMemory* memoryOf(Handle port)
{
    if (port == &state() && state().isSystemOpen)
        return &state().memory;
    Interface* interface = interfaceOf(port);
    return interface ? &interface->memory : nullptr;
}

// What stands behind a port; both null: nothing.
struct Behind
{
    ModuleMemory* memory = nullptr;
    Device* device = nullptr;
};

Behind behind(Handle port)
{
    const std::lock_guard lock(state().mutex);
    return {memoryOf(port), deviceOfPort(port)};
}

Error noPort()
{
    return fail(ErrInvalidHandle, "no port");
}

Error told(Error error)
{
    return error == Success ? Success : fail(error, "the camera refuses it, or does not answer");
}

Error readFrom(Handle port, uint64_t address, void* data, size_t size)
{
    const Behind there = behind(port);
    if (there.memory)
        return there.memory->read(address, data, size);
    if (!there.device)
        return noPort();
    const std::lock_guard lock(there.device->lineMutex);
    return told(there.device->line.read(address, data, size));
}

Error writeTo(Handle port, uint64_t address, const void* data, size_t size)
{
    const Behind there = behind(port);
    if (there.memory)
        return there.memory->write(address, data, size);
    if (!there.device)
        return noPort();
    if (!there.device->mayWrite)
        return fail(ErrAccessDenied, "the device is open for reading only");
    const std::lock_guard lock(there.device->lineMutex);
    return told(there.device->line.write(address, data, size));
}

std::vector<std::string> urlsOf(const Behind& there)
{
    if (there.device)
        return {there.device->fields[emu::FieldFirstUrl], there.device->fields[emu::FieldSecondUrl]};
    char text[64];
    std::snprintf(text, sizeof text, "local:module.xml;%llX;%zX",
                  static_cast<unsigned long long>(kModuleDescription), ModuleMemory::description().size());
    return {text};
}

// "local:NAME;ADDRESS;SIZE?..."
struct UrlParts
{
    std::string name;
    unsigned long long address = 0;
    unsigned long long size = 0;
};

UrlParts partsOf(const std::string& url)
{
    UrlParts parts;
    const size_t colon = url.find(':');
    const size_t semicolon = url.find(';');
    if (colon == std::string::npos || semicolon == std::string::npos)
        return parts;
    parts.name = url.substr(colon + 1, semicolon - colon - 1);
    std::sscanf(url.c_str() + semicolon, ";%llx;%llx", &parts.address, &parts.size);
    return parts;
}

} // namespace

PRODUCER_EXPORT GCReadPort(Handle port, uint64_t address, void* data, size_t* size)
{
    PRODUCER_ENTER(GCReadPort);
    if (fault.isTooLong) {
        *size = size_t(1) << 40;
        return Success;
    }
    return readFrom(port, address, data, *size);
}

PRODUCER_EXPORT GCWritePort(Handle port, uint64_t address, const void* data, size_t* size)
{
    PRODUCER_ENTER(GCWritePort);
    const Error error = writeTo(port, address, data, *size);
    if (fault.isTooLong)
        *size = size_t(1) << 40;
    return error;
}

PRODUCER_EXPORT GCReadPortStacked(Handle port, StackEntry* entries, size_t* count)
{
    PRODUCER_ENTER(GCReadPortStacked);
    if (fault.isTooLong) {
        *count = size_t(1) << 40;
        return Success;
    }
    for (size_t i = 0; i < *count; ++i)
        if (const Error error = readFrom(port, entries[i].address, entries[i].data, entries[i].size)) {
            *count = i;
            return error;
        }
    return Success;
}

PRODUCER_EXPORT GCWritePortStacked(Handle port, StackEntry* entries, size_t* count)
{
    PRODUCER_ENTER(GCWritePortStacked);
    for (size_t i = 0; i < *count; ++i)
        if (const Error error = writeTo(port, entries[i].address, entries[i].data, entries[i].size)) {
            *count = i;
            return error;
        }
    return Success;
}

PRODUCER_EXPORT GCGetPortURL(Handle port, char* url, size_t* size)
{
    PRODUCER_ENTER(GCGetPortURL);
    const Behind there = behind(port);
    if (!there.memory && !there.device)
        return noPort();
    return giveText(fault, nullptr, url, size, urlsOf(there)[0]);
}

PRODUCER_EXPORT GCGetNumPortURLs(Handle port, uint32_t* count)
{
    PRODUCER_ENTER(GCGetNumPortURLs);
    const Behind there = behind(port);
    return there.memory || there.device ? giveCount(fault, count, urlsOf(there).size()) : noPort();
}

PRODUCER_EXPORT GCGetPortURLInfo(Handle port, uint32_t index, int32_t what, int32_t* type, void* data,
                                 size_t* size)
{
    PRODUCER_ENTER(GCGetPortURLInfo);
    const Behind there = behind(port);
    if (!there.memory && !there.device)
        return noPort();
    const auto urls = urlsOf(there);
    if (index >= urls.size())
        return fail(ErrInvalidIndex, "no such description");
    const UrlParts parts = partsOf(urls[index]);
    switch (what) {
    case UrlText:
        return giveText(fault, type, data, size, urls[index]);
    case UrlSchemaMajor:
    case UrlSchemaMinor:
    case UrlFileMajor:
        return giveNumber<int32_t>(fault, type, data, size, TypeInt32, 1);
    case UrlFileMinor:
    case UrlFileSubMinor:
    case UrlScheme:
        return giveNumber<int32_t>(fault, type, data, size, TypeInt32, 0);
    case UrlAddress:
        return giveNumber<uint64_t>(fault, type, data, size, TypeUint64, parts.address);
    case UrlSize:
        return giveNumber<uint64_t>(fault, type, data, size, TypeUint64, parts.size);
    case UrlFileName:
        return giveText(fault, type, data, size, parts.name);
    default:
        return fail(ErrNotAvailable, "not available");
    }
}

PRODUCER_EXPORT GCGetPortInfo(Handle port, int32_t what, int32_t* type, void* data, size_t* size)
{
    PRODUCER_ENTER(GCGetPortInfo);
    const Behind there = behind(port);
    if (!there.memory && !there.device)
        return noPort();
    switch (what) {
    case PortId:
        return giveText(fault, type, data, size, there.device ? there.device->id : "EmulatedModule");
    case PortVendor:
    case PortModel:
        return giveText(fault, type, data, size, "Emulated cameras");
    case PortType:
        return giveText(fault, type, data, size,
                        there.device ? there.device->fields[emu::FieldLayer] : "Mixed");
    case PortModule:
        return giveText(fault, type, data, size, there.device ? "Device" : "TLInterface");
    case PortLittleEndian:
    case PortNotAvailable:
    case PortNotImplemented:
        return giveNumber<uint8_t>(fault, type, data, size, TypeBool8, 0);
    case PortBigEndian:
    case PortReadable:
        return giveNumber<uint8_t>(fault, type, data, size, TypeBool8, 1);
    case PortWritable:
        return giveNumber<uint8_t>(fault, type, data, size, TypeBool8,
                                   !there.device || there.device->mayWrite);
    case PortVersion:
        return giveText(fault, type, data, size, "1.0.0");
    case PortName:
        return giveText(fault, type, data, size, there.device ? "Device" : "ModulePort");
    default:
        return fail(ErrNotImplemented, "no such information of a port");
    }
}
