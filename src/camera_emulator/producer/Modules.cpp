// The exported functions of the library, the system, interfaces and devices.
#include "camera_emulator/producer/Infos.h"

#include <cstring>

using namespace producer;

namespace
{

std::unique_lock<std::recursive_mutex> locked()
{
    return std::unique_lock(state().mutex);
}

bool isSystem(Handle handle)
{
    return handle == &state() && state().isSystemOpen;
}

Error noSystem()
{
    return fail(ErrInvalidHandle, "the system is not open");
}

Error noInterface()
{
    return fail(ErrInvalidHandle, "no open interface");
}

Interface* listedInterface(const char* id)
{
    for (Interface* interface : state().listed)
        if (id && interface->id == id)
            return interface;
    return nullptr;
}

Device* listedDevice(const Interface& interface, const char* id)
{
    for (Device* device : interface.listed)
        if (id && device->id == id)
            return device;
    return nullptr;
}

} // namespace

PRODUCER_EXPORT GCInitLib(void)
{
    PRODUCER_ENTER(GCInitLib);
    const auto lock = locked();
    if (state().isInitialised)
        return fail(ErrResourceInUse, "initialised already");
    state().isInitialised = true;
    return Success;
}

PRODUCER_EXPORT GCCloseLib(void)
{
    PRODUCER_ENTER(GCCloseLib);
    const auto lock = locked();
    state().isInitialised = state().isSystemOpen = false;
    return Success;
}

PRODUCER_EXPORT GCGetLastError(Error* code, char* text, size_t* size)
{
    const Fault fault = enter("GCGetLastError");
    const auto [error, words] = lastError();
    if (code)
        *code = error;
    return fault.error ? fault.error : giveText(fault, nullptr, text, size, words);
}

PRODUCER_EXPORT GCGetInfo(int32_t what, int32_t* type, void* data, size_t* size)
{
    PRODUCER_ENTER(GCGetInfo);
    return systemInfo(fault, what, type, data, size);
}

PRODUCER_EXPORT TLOpen(Handle* system)
{
    PRODUCER_ENTER(TLOpen);
    const auto lock = locked();
    if (!state().isInitialised)
        return fail(ErrNotInitialized, "not initialised");
    if (state().isSystemOpen)
        return fail(ErrResourceInUse, "the system is open already");
    state().isSystemOpen = true;
    *system = &state();
    return Success;
}

PRODUCER_EXPORT TLClose(Handle system)
{
    PRODUCER_ENTER(TLClose);
    const auto lock = locked();
    if (!isSystem(system))
        return noSystem();
    state().isSystemOpen = false;
    return Success;
}

PRODUCER_EXPORT TLGetInfo(Handle system, int32_t what, int32_t* type, void* data, size_t* size)
{
    PRODUCER_ENTER(TLGetInfo);
    return isSystem(system) ? systemInfo(fault, what, type, data, size) : noSystem();
}

PRODUCER_EXPORT TLUpdateInterfaceList(Handle system, Bool8* changed, uint64_t)
{
    PRODUCER_ENTER(TLUpdateInterfaceList);
    const auto lock = locked();
    if (!isSystem(system))
        return noSystem();
    state().look();
    if (changed)
        *changed = 1;
    return Success;
}

PRODUCER_EXPORT TLGetNumInterfaces(Handle system, uint32_t* count)
{
    PRODUCER_ENTER(TLGetNumInterfaces);
    const auto lock = locked();
    return isSystem(system) ? giveCount(fault, count, state().listed.size()) : noSystem();
}

PRODUCER_EXPORT TLGetInterfaceID(Handle system, uint32_t index, char* id, size_t* size)
{
    PRODUCER_ENTER(TLGetInterfaceID);
    const auto lock = locked();
    if (!isSystem(system))
        return noSystem();
    if (index >= state().listed.size())
        return fail(ErrInvalidIndex, "no such interface");
    return giveText(fault, nullptr, id, size, state().listed[index]->id);
}

PRODUCER_EXPORT TLGetInterfaceInfo(Handle system, const char* id, int32_t what, int32_t* type, void* data,
                                   size_t* size)
{
    PRODUCER_ENTER(TLGetInterfaceInfo);
    const auto lock = locked();
    const Interface* interface = isSystem(system) ? listedInterface(id) : nullptr;
    return interface ? interfaceInfo(fault, *interface, what, type, data, size)
                     : fail(ErrInvalidId, "no such interface");
}

PRODUCER_EXPORT TLOpenInterface(Handle system, const char* id, Handle* handle)
{
    PRODUCER_ENTER(TLOpenInterface);
    const auto lock = locked();
    Interface* interface = isSystem(system) ? listedInterface(id) : nullptr;
    if (!interface)
        return fail(ErrInvalidId, "no such interface");
    if (interface->isOpen)
        return fail(ErrResourceInUse, "the interface is open already");
    interface->isOpen = true;
    *handle = interface;
    return Success;
}

PRODUCER_EXPORT IFClose(Handle handle)
{
    PRODUCER_ENTER(IFClose);
    const auto lock = locked();
    Interface* interface = interfaceOf(handle);
    if (!interface)
        return noInterface();
    interface->isOpen = false;
    return Success;
}

PRODUCER_EXPORT IFGetInfo(Handle handle, int32_t what, int32_t* type, void* data, size_t* size)
{
    PRODUCER_ENTER(IFGetInfo);
    const auto lock = locked();
    const Interface* interface = interfaceOf(handle);
    return interface ? interfaceInfo(fault, *interface, what, type, data, size) : noInterface();
}

PRODUCER_EXPORT IFGetParentTL(Handle handle, Handle* system)
{
    PRODUCER_ENTER(IFGetParentTL);
    const auto lock = locked();
    if (!interfaceOf(handle))
        return noInterface();
    *system = &state();
    return Success;
}

PRODUCER_EXPORT IFUpdateDeviceList(Handle handle, Bool8* changed, uint64_t)
{
    PRODUCER_ENTER(IFUpdateDeviceList);
    const auto lock = locked();
    if (!interfaceOf(handle))
        return noInterface();
    state().look();
    if (changed)
        *changed = 1;
    return Success;
}

PRODUCER_EXPORT IFGetNumDevices(Handle handle, uint32_t* count)
{
    PRODUCER_ENTER(IFGetNumDevices);
    const auto lock = locked();
    const Interface* interface = interfaceOf(handle);
    return interface ? giveCount(fault, count, interface->listed.size()) : noInterface();
}

PRODUCER_EXPORT IFGetDeviceID(Handle handle, uint32_t index, char* id, size_t* size)
{
    PRODUCER_ENTER(IFGetDeviceID);
    const auto lock = locked();
    const Interface* interface = interfaceOf(handle);
    if (!interface)
        return noInterface();
    if (index >= interface->listed.size())
        return fail(ErrInvalidIndex, "no such device");
    return giveText(fault, nullptr, id, size, interface->listed[index]->id);
}

PRODUCER_EXPORT IFGetDeviceInfo(Handle handle, const char* id, int32_t what, int32_t* type, void* data,
                                size_t* size)
{
    PRODUCER_ENTER(IFGetDeviceInfo);
    const auto lock = locked();
    const Interface* interface = interfaceOf(handle);
    const Device* device = interface ? listedDevice(*interface, id) : nullptr;
    return device ? deviceInfo(fault, *device, what, type, data, size) : fail(ErrInvalidId, "no such device");
}

// A device is only known once the list was updated.
PRODUCER_EXPORT IFOpenDevice(Handle handle, const char* id, int32_t access, Handle* opened)
{
    PRODUCER_ENTER(IFOpenDevice);
    const auto lock = locked();
    const Interface* interface = interfaceOf(handle);
    Device* device = interface ? listedDevice(*interface, id) : nullptr;
    if (!device)
        return fail(ErrInvalidId, "no such device");
    if (device->isOpen)
        return fail(ErrResourceInUse, "the device is open already");
    if (!device->line.connect(device->path))
        return fail(ErrInvalidId, "the device is gone");
    if (const Error error = device->line.open(access != AccessReadOnly)) {
        device->line.disconnect();
        return fail(error, "another process has the device");
    }
    device->isOpen = true;
    device->mayWrite = access != AccessReadOnly;
    *opened = device;
    return Success;
}

PRODUCER_EXPORT DevClose(Handle handle)
{
    PRODUCER_ENTER(DevClose);
    const auto lock = locked();
    Device* device = deviceOf(handle);
    if (!device)
        return fail(ErrInvalidHandle, "no open device");
    const std::lock_guard line(device->lineMutex);
    device->line.close();
    device->isOpen = device->mayWrite = false;
    return Success;
}

PRODUCER_EXPORT DevGetPort(Handle handle, Handle* port)
{
    PRODUCER_ENTER(DevGetPort);
    const auto lock = locked();
    Device* device = deviceOf(handle);
    if (!device)
        return fail(ErrInvalidHandle, "no open device");
    *port = &device->port;
    return Success;
}

PRODUCER_EXPORT DevGetInfo(Handle handle, int32_t what, int32_t* type, void* data, size_t* size)
{
    PRODUCER_ENTER(DevGetInfo);
    const auto lock = locked();
    const Device* device = deviceOf(handle);
    return device ? deviceInfo(fault, *device, what, type, data, size)
                  : fail(ErrInvalidHandle, "no open device");
}

PRODUCER_EXPORT DevGetParentIF(Handle handle, Handle* parent)
{
    PRODUCER_ENTER(DevGetParentIF);
    const auto lock = locked();
    const Device* device = deviceOf(handle);
    if (!device)
        return fail(ErrInvalidHandle, "no open device");
    *parent = state().interfaces[device->fields[emu::FieldInterface]].get();
    return Success;
}
