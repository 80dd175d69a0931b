// The exported functions of events: the one that tells that a camera is gone.
#include "camera_emulator/producer/Infos.h"

#include <chrono>
#include <thread>

using namespace producer;

namespace
{

constexpr std::chrono::milliseconds kLook{20};

Device* withEvent(Handle event)
{
    const std::lock_guard lock(state().mutex);
    Device* device = deviceOfEvent(event);
    return device && device->hasEvent ? device : nullptr;
}

Error noEvent()
{
    return fail(ErrInvalidHandle, "no event");
}

} // namespace

PRODUCER_EXPORT GCRegisterEvent(Handle module, int32_t event, Handle* handle)
{
    PRODUCER_ENTER(GCRegisterEvent);
    const std::lock_guard lock(state().mutex);
    Device* device = deviceOf(module);
    if (!device || event != EventError)
        return fail(ErrNotImplemented, "no such event");
    if (device->hasEvent)
        return fail(ErrResourceInUse, "registered already");
    device->hasEvent = true;
    device->isEventKilled = device->isLossTold = false;
    *handle = &device->event;
    return Success;
}

PRODUCER_EXPORT GCUnregisterEvent(Handle module, int32_t)
{
    PRODUCER_ENTER(GCUnregisterEvent);
    const std::lock_guard lock(state().mutex);
    Device* device = deviceOf(module);
    if (!device || !device->hasEvent)
        return noEvent();
    device->hasEvent = false;
    return Success;
}

PRODUCER_EXPORT EventGetData(Handle event, void* data, size_t* size, uint64_t milliseconds)
{
    PRODUCER_ENTER(EventGetData);
    using Clock = std::chrono::steady_clock;
    Device* device = withEvent(event);
    if (!device)
        return noEvent();
    const auto end =
        Clock::now() + std::chrono::milliseconds(std::min<uint64_t>(milliseconds, 24 * 3600 * 1000));
    for (;;) {
        if (device->isEventKilled.exchange(false))
            return fail(ErrAbort, "killed");
        if (!device->isLossTold && device->line.isGone()) {
            device->isLossTold = true;
            return giveNumber<Error>(fault, nullptr, data, size, TypeInt32, ErrIo);
        }
        if (Clock::now() >= end)
            return fail(ErrTimeout, "nothing happened");
        std::this_thread::sleep_for(kLook);
    }
}

PRODUCER_EXPORT EventGetDataInfo(Handle, const void* in, size_t, int32_t what, int32_t* type, void* data,
                                 size_t* size)
{
    PRODUCER_ENTER(EventGetDataInfo);
    if (what == EventDataValue)
        return giveText(fault, type, data, size, "The camera is gone.");
    return give(fault, type, data, size, TypeInt32, in, sizeof(Error));
}

PRODUCER_EXPORT EventGetInfo(Handle, int32_t what, int32_t* type, void* data, size_t* size)
{
    PRODUCER_ENTER(EventGetInfo);
    constexpr size_t kLargest = 256;
    if (what == EventTypeInfo)
        return giveNumber<int32_t>(fault, type, data, size, TypeInt32, EventError);
    return giveNumber<size_t>(fault, type, data, size, TypeSize, what >= 3 ? kLargest : 0);
}

PRODUCER_EXPORT EventFlush(Handle)
{
    PRODUCER_ENTER(EventFlush);
    return Success;
}

PRODUCER_EXPORT EventKill(Handle event)
{
    PRODUCER_ENTER(EventKill);
    Device* device = withEvent(event);
    if (!device)
        return noEvent();
    device->isEventKilled = true;
    return Success;
}
