#include "KXCameraControl/ports/usb3/UsbWatch.h"

#include "KXCameraControl/ports/usb3/Usb.h"

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

namespace kx
{

namespace
{

constexpr timeval kLookInterval{0, 500'000};
constexpr timeval kNoLook{3600, 0};

} // namespace

// Of the whole process. It has a context of its own, without open devices: waiting in it costs nothing.
class UsbWatcher
{
public:
    void add(UsbWatch& watch)
    {
        const std::lock_guard<std::mutex> running(m_runningMutex);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_watches.insert(&watch);
        }
        if (!m_thread.joinable())
            start();
        lookAfter(watch); // it may have left before anybody listened
    }

    void remove(UsbWatch& watch)
    {
        const std::lock_guard<std::mutex> running(m_runningMutex);
        bool isLast = false;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_watches.erase(&watch);
            isLast = m_watches.empty();
        }
        if (isLast)
            stop();
    }

private:
    void start()
    {
        m_context = newUsbContext();
        if (!m_context)
            return; // the device has left with the rest of USB, and requests will tell
        const bool canTell = libusb_has_capability(LIBUSB_CAP_HAS_HOTPLUG) != 0;
        if (canTell)
            libusb_hotplug_register_callback(m_context.get(), LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT, 0,
                                             LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
                                             LIBUSB_HOTPLUG_MATCH_ANY, onLeft, this, nullptr);
        m_looks = !canTell || !areUsbEventsTold();
        m_isStopping = false;
        m_thread = std::thread([this] { run(); });
    }

    void stop()
    {
        m_isStopping = true;
        if (m_thread.joinable()) {
            libusb_interrupt_event_handler(m_context.get());
            m_thread.join();
        }
        m_context.reset();
    }

    void run()
    {
        while (!m_isStopping) {
            timeval patience = m_looks ? kLookInterval : kNoLook;
            libusb_handle_events_timeout_completed(m_context.get(), &patience, nullptr);
            const std::lock_guard<std::mutex> lock(m_mutex);
            for (UsbWatch* watch : m_watches)
                if (m_looks && !isUsbNodeThere(watch->m_place))
                    watch->tell();
        }
    }

    void lookAfter(UsbWatch& watch)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!isUsbNodeThere(watch.m_place))
            watch.tell();
    }

    static int LIBUSB_CALL onLeft(libusb_context*, libusb_device* device, libusb_hotplug_event, void* user)
    {
        auto& self = *static_cast<UsbWatcher*>(user);
        const UsbPlace place{libusb_get_bus_number(device), libusb_get_device_address(device)};
        const std::lock_guard<std::mutex> lock(self.m_mutex);
        for (UsbWatch* watch : self.m_watches)
            if (watch->m_place == place)
                watch->tell();
        return 0;
    }

    std::mutex m_runningMutex; // around starting and stopping; taken first
    std::mutex m_mutex;        // guards the watches, and is held while one is told
    std::set<UsbWatch*> m_watches;
    UsbContext m_context;
    bool m_looks = false;
    std::atomic<bool> m_isStopping{false};
    std::thread m_thread;
};

namespace
{

// Never destroyed: handles may outlive the end of main.
UsbWatcher& watcher()
{
    static auto* const instance = new UsbWatcher;
    return *instance;
}

} // namespace

UsbWatch::UsbWatch(const UsbPlace& place, std::function<void()> onGone)
    : m_place(place), m_onGone(std::move(onGone))
{
    try {
        watcher().add(*this);
    } catch (...) {
        watcher().remove(*this);
        throw;
    }
}

UsbWatch::~UsbWatch()
{
    watcher().remove(*this);
}

void UsbWatch::tell()
{
    if (const auto onGone = std::move(m_onGone)) {
        m_onGone = nullptr;
        onGone();
    }
}

} // namespace kx
