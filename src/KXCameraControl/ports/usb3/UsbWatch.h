// Notices that a USB device was unplugged, whether or not anybody talks to it.
#pragma once

#include "KXCameraControl/ports/usb3/UsbNodes.h"

#include <functional>

namespace kx
{

// One thread looks after all devices that are watched, and ends with the last of them. It is told by the
// system (hot-plug events); where nobody tells, it looks every half second.
class UsbWatch
{
public:
    // `onGone` comes once, at once where the device has left already, and on any thread; it must not end the
    // watch. Never after the destructor, which waits for it.
    UsbWatch(const UsbPlace& place, std::function<void()> onGone);
    ~UsbWatch();
    UsbWatch(const UsbWatch&) = delete;
    UsbWatch& operator=(const UsbWatch&) = delete;

private:
    friend class UsbWatcher;
    void tell();

    const UsbPlace m_place;
    std::function<void()> m_onGone; // empty: told
};

} // namespace kx
