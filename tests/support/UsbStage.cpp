#include "support/UsbStage.h"

#include <umockdev.h>

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace tests
{

using emu::Bytes;
using std::chrono::milliseconds;

namespace
{

// umockdev's node never blocks in poll(): who reaps without waiting is held up for this long while something
// is under way, or libusb would spin.
constexpr milliseconds kReapPatience{5};

// The program anew with umockdev's library in front, which has to be there before anything is loaded.
bool startUnderUmockdev()
{
    if (umockdev_in_mock_environment())
        return true;
    const char* others = std::getenv("LD_PRELOAD");
    if (others && std::strstr(others, "umockdev"))
        return false; // it would not come
    const std::string preload = std::string(IE_SANITIZER_PRELOAD) + "libumockdev-preload.so.0" +
                                (others ? std::string(":") + others : "");
    setenv("LD_PRELOAD", preload.c_str(), 1);
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::string line{std::istreambuf_iterator<char>(file), {}};
    std::vector<char*> arguments;
    for (size_t at = 0; at < line.size(); at += std::strlen(&line[at]) + 1)
        arguments.push_back(&line[at]);
    arguments.push_back(nullptr);
    execv("/proc/self/exe", arguments.data());
    return false;
}

[[maybe_unused]] const bool isUnderUmockdev = startUnderUmockdev();

void require(bool good, const char* what, GError* error)
{
    if (!good)
        throw std::runtime_error(std::string(what) + ": " + (error ? error->message : "failed"));
}

using Client = UMockdevIoctlClient*;

void answer(Client client, long result, int error)
{
    umockdev_ioctl_client_complete(client, result, error);
}

UMockdevIoctlData* argumentOf(Client client, size_t size)
{
    return umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0, size, nullptr);
}

// A transfer that a program has submitted and not got back yet.
struct Transfer
{
    Client client;
    UMockdevIoctlData* urb;
    UMockdevIoctlData* buffer; // null: none
    bool isOver = false;
    size_t filled = 0;

    usbdevfs_urb& raw() const { return *reinterpret_cast<usbdevfs_urb*>(urb->data); }
    void end(int status, size_t length)
    {
        raw().status = status;
        raw().actual_length = static_cast<int>(length);
        isOver = true;
    }
};

struct Device
{
    emu::UsbFunction* function;
    std::string node;    // "/dev/bus/usb/002/010"
    std::string sysPath; // "/devices/.../2-1"
    bool isGone = false;
    std::list<Transfer> transfers;
    std::map<unsigned, Client> claims;  // interfaces and their owners
    std::map<Client, GSource*> reapers; // those who wait for a transfer to end, each with a reference
};

std::string sysPathOf(const std::string& location)
{
    return "/devices/pci0000:00/usb2/" + location;
}

std::string hexText(const Bytes& bytes)
{
    std::string text;
    char two[3];
    for (const uint8_t byte : bytes) {
        std::snprintf(two, sizeof two, "%02X", byte);
        text += two;
    }
    return text;
}

} // namespace

struct UsbStage::State
{
    std::recursive_mutex mutex;      // a device that is asked may want to be asked again
    std::list<Device> devices;       // also those that are gone: programs may still hold them
    GMainContext* context = nullptr; // of the thread that ioctls come on
    UMockdevTestbed* bed = umockdev_testbed_new();
    UMockdevIoctlBase* handler = umockdev_ioctl_base_new();
    int lastPort = 0;

    std::string root() const;
    Device* byNode(const char* node);
    Device& byFunction(const emu::UsbFunction& function);
    void attach(Device& device, int address, const std::string& name);
    std::string describe(const Device& device, int address, const std::string& name) const;

    bool handle(Client client);
    void serve(Device& device, Client client, gulong request);
    void submit(Device& device, Client client);
    void start(Device& device, Transfer& transfer);
    void discard(Device& device, Client client);
    void claim(Device& device, Client client, bool isTaking);
    void reap(Device& device, Client client);
    bool giveBack(Device& device, Client client);
    void pump(Device& device);
    void serveReapers(Device& device);
    void forget(Client client);

    GSource* later(milliseconds time, GSourceFunc function, void* data, GDestroyNotify free);
};

namespace
{

// What a timer needs to find its way back.
struct Timer
{
    UsbStage::State* state;
    Device* device;
    Client client;
};

void freeTimer(void* timer)
{
    delete static_cast<Timer*>(timer);
}

gboolean onReapIsOver(void* data)
{
    const auto& timer = *static_cast<Timer*>(data);
    const std::lock_guard lock(timer.state->mutex);
    auto& reapers = timer.device->reapers;
    const auto it = reapers.find(timer.client);
    if (it == reapers.end() || it->second != g_main_current_source())
        return G_SOURCE_REMOVE; // it was answered while this thread waited for the lock
    reapers.erase(it);
    if (!timer.state->giveBack(*timer.device, timer.client))
        answer(timer.client, -1, timer.device->isGone ? ENODEV : EAGAIN);
    g_object_unref(timer.client);
    return G_SOURCE_REMOVE;
}

gboolean onAskAgain(void* data)
{
    const auto& timer = *static_cast<Timer*>(data);
    const std::lock_guard lock(timer.state->mutex);
    if (!timer.device->isGone)
        timer.state->pump(*timer.device);
    return G_SOURCE_REMOVE;
}

gboolean onIoctl(UMockdevIoctlBase*, Client client, void* state)
{
    return static_cast<UsbStage::State*>(state)->handle(client) ? TRUE : FALSE;
}

// A descriptor that was closed gives back what it held. It comes late, on another thread.
void onVanished(UMockdevIoctlBase*, Client client, void* state)
{
    static_cast<UsbStage::State*>(state)->forget(client);
}

void release(Transfer& transfer)
{
    if (transfer.buffer)
        g_object_unref(transfer.buffer);
    g_object_unref(transfer.urb);
}

} // namespace

std::string UsbStage::State::root() const
{
    gchar* path = umockdev_testbed_get_root_dir(bed);
    const std::string text = path;
    g_free(path);
    return text;
}

Device* UsbStage::State::byNode(const char* node)
{
    const auto it = std::find_if(devices.begin(), devices.end(),
                                 [&](const Device& device) { return device.node == node; });
    return it == devices.end() ? nullptr : &*it;
}

Device& UsbStage::State::byFunction(const emu::UsbFunction& function)
{
    for (Device& device : devices)
        if (device.function == &function && !device.isGone)
            return device;
    throw std::runtime_error("this device is not plugged in");
}

// As umockdev wants it; sysfs holds the descriptors that libusb reads without opening anything.
std::string UsbStage::State::describe(const Device& device, int address, const std::string& name) const
{
    const std::string number = std::to_string(address);
    const std::string interface = "\nP: " + device.sysPath + "/" + name + ":1.";
    std::string text =
        "P: " + device.sysPath + "\nN: " + device.node.substr(5) + "\nE: DEVNAME=" + device.node +
        "\nE: DEVTYPE=usb_device\nE: SUBSYSTEM=usb\nE: MAJOR=189\nE: MINOR=" + std::to_string(127 + address) +
        "\nE: BUSNUM=002\nE: DEVNUM=" + number + "\nA: busnum=2\\n\nA: devnum=" + number +
        "\\n\nA: speed=5000\\n\nA: bConfigurationValue=1\\n\nA: product=Shown by sysfs\\n\n"
        "A: serial=S" +
        number + "\\n\nH: descriptors=" + hexText(device.function->descriptors()) + "\n";
    for (int i = 0; i < 3; ++i)
        text += interface + std::to_string(i) + "\nE: DEVTYPE=usb_interface\nE: SUBSYSTEM=usb\n";
    return text;
}

void UsbStage::State::attach(Device& device, int address, const std::string& name)
{
    GError* error = nullptr;
    require(umockdev_testbed_add_from_string(bed, describe(device, address, name).c_str(), &error) != FALSE,
            "the bed takes no device", error);
    require(umockdev_testbed_attach_ioctl(bed, device.node.c_str(), handler, &error) != FALSE,
            "the bed takes no handler", error);
    // umockdev goes there even for a device that could not be opened, and ends the program where it may not.
    chmod((root() + "/ioctl" + device.node).c_str(), 0666);
}

GSource* UsbStage::State::later(milliseconds time, GSourceFunc function, void* data, GDestroyNotify free)
{
    GSource* source = g_timeout_source_new(static_cast<guint>(time.count()));
    g_source_set_callback(source, function, data, free);
    g_source_attach(source, context);
    g_source_unref(source); // its context keeps it
    return source;
}

bool UsbStage::State::handle(Client client)
{
    const std::lock_guard lock(mutex);
    context = g_main_context_get_thread_default();
    Device* device = byNode(umockdev_ioctl_client_get_devnode(client));
    if (!device)
        return false;
    const gulong request = umockdev_ioctl_client_get_request(client);
    const bool isReap = request == USBDEVFS_REAPURB || request == USBDEVFS_REAPURBNDELAY;
    if (device->isGone && !isReap)
        answer(client, -1, ENODEV);
    else
        serve(*device, client, request);
    return true;
}

void UsbStage::State::serve(Device& device, Client client, gulong request)
{
    switch (request) {
    case USBDEVFS_GET_CAPABILITIES: {
        g_autoptr(UMockdevIoctlData) argument = argumentOf(client, sizeof(uint32_t));
        *reinterpret_cast<uint32_t*>(argument->data) =
            USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
        return answer(client, 0, 0);
    }
    case USBDEVFS_CLAIMINTERFACE:
        return claim(device, client, true);
    case USBDEVFS_DISCONNECT_CLAIM: // begins with the number of the interface too
        return claim(device, client, true);
    case USBDEVFS_RELEASEINTERFACE:
        return claim(device, client, false);
    case USBDEVFS_SUBMITURB:
        return submit(device, client);
    case USBDEVFS_DISCARDURB:
        return discard(device, client);
    case USBDEVFS_REAPURB:
    case USBDEVFS_REAPURBNDELAY:
        return reap(device, client);
    case USBDEVFS_CLEAR_HALT: {
        g_autoptr(UMockdevIoctlData) argument = argumentOf(client, sizeof(unsigned));
        device.function->haltCleared(static_cast<uint8_t>(*reinterpret_cast<unsigned*>(argument->data)));
        return answer(client, 0, 0);
    }
    case USBDEVFS_SETINTERFACE:
    case USBDEVFS_RESETEP:
    case USBDEVFS_RESET:
        return answer(client, 0, 0);
    case USBDEVFS_IOCTL: // to a driver of the kernel: there is none
    case USBDEVFS_GETDRIVER:
        return answer(client, -1, ENODATA);
    default:
        return answer(client, -1, ENOTTY);
    }
}

void UsbStage::State::claim(Device& device, Client client, bool isTaking)
{
    g_autoptr(UMockdevIoctlData) argument = argumentOf(client, sizeof(unsigned));
    const unsigned number = *reinterpret_cast<unsigned*>(argument->data);
    const auto owner = device.claims.find(number);
    const bool isOthers = owner != device.claims.end() && owner->second != client;
    if (isTaking && isOthers)
        return answer(client, -1, EBUSY);
    if (isTaking)
        device.claims[number] = client;
    else if (owner != device.claims.end() && !isOthers)
        device.claims.erase(owner);
    answer(client, 0, 0);
}

void UsbStage::State::submit(Device& device, Client client)
{
    Transfer transfer{client, argumentOf(client, sizeof(usbdevfs_urb)), nullptr};
    const auto length = static_cast<gsize>(std::max(transfer.raw().buffer_length, 0));
    if (length > 0)
        transfer.buffer =
            umockdev_ioctl_data_resolve(transfer.urb, offsetof(usbdevfs_urb, buffer), length, nullptr);
    device.transfers.push_back(transfer);
    start(device, device.transfers.back());
    answer(client, 0, 0);
    pump(device);
}

// All that does not wait for the device to have something to say.
void UsbStage::State::start(Device& device, Transfer& transfer)
{
    const auto length = static_cast<size_t>(std::max(transfer.raw().buffer_length, 0));
    uint8_t* bytes = transfer.buffer ? transfer.buffer->data : nullptr;
    if (transfer.raw().type == USBDEVFS_URB_TYPE_CONTROL) {
        std::array<uint8_t, 8> setup{};
        std::copy_n(bytes, std::min(length, setup.size()), setup.begin());
        const auto content = device.function->control(setup);
        if (!content)
            return transfer.end(-EPIPE, 0);
        const size_t size = std::min(content->size(), length - setup.size());
        std::copy_n(content->begin(), size, bytes + setup.size());
        transfer.end(0, size);
    } else if ((transfer.raw().endpoint & 0x80) == 0) {
        const bool isTaken = device.function->bulkOut(transfer.raw().endpoint, Bytes(bytes, bytes + length));
        transfer.end(isTaken ? 0 : -EPIPE, isTaken ? length : 0);
    }
}

// What the device has for those who ask it.
void UsbStage::State::pump(Device& device)
{
    for (Transfer& transfer : device.transfers) {
        if (transfer.isOver)
            continue;
        const auto content = device.function->bulkIn(transfer.raw().endpoint);
        if (!content)
            continue;
        const size_t room = static_cast<size_t>(transfer.raw().buffer_length) - transfer.filled;
        const size_t size = std::min(content->size(), room);
        if (size > 0)
            std::copy_n(content->begin(), size, transfer.buffer->data + transfer.filled);
        transfer.filled += size;
        const bool isShort = content->empty() || content->size() % device.function->packetSize() != 0;
        if (isShort || content->size() >= room)
            transfer.end(content->size() > room ? -EOVERFLOW : 0, transfer.filled);
    }
    serveReapers(device);
}

void UsbStage::State::discard(Device& device, Client client)
{
    const auto address = *reinterpret_cast<gulong*>(umockdev_ioctl_client_get_arg(client)->data);
    const auto it = std::find_if(device.transfers.begin(), device.transfers.end(), [&](const Transfer& one) {
        return one.client == client && one.urb->client_addr == address && !one.isOver;
    });
    if (it == device.transfers.end())
        return answer(client, -1, EINVAL);
    it->end(-ENOENT, 0);
    answer(client, 0, 0);
    serveReapers(device);
}

void UsbStage::State::reap(Device& device, Client client)
{
    if (giveBack(device, client))
        return;
    const bool isAnyUnderWay = std::any_of(device.transfers.begin(), device.transfers.end(),
                                           [&](const Transfer& one) { return one.client == client; });
    if (device.isGone || !isAnyUnderWay)
        return answer(client, -1, device.isGone ? ENODEV : EAGAIN);
    g_object_ref(client); // nobody else keeps one that is answered later
    device.reapers[client] = later(kReapPatience, onReapIsOver, new Timer{this, &device, client}, freeTimer);
}

// A transfer that is over, if there is one.
bool UsbStage::State::giveBack(Device& device, Client client)
{
    const auto it = std::find_if(device.transfers.begin(), device.transfers.end(),
                                 [&](const Transfer& one) { return one.isOver && one.client == client; });
    if (it == device.transfers.end())
        return false;
    g_autoptr(UMockdevIoctlData) argument = argumentOf(client, sizeof(void*));
    umockdev_ioctl_data_set_ptr(argument, 0, it->urb);
    answer(client, 0, 0);
    release(*it);
    device.transfers.erase(it);
    return true;
}

void UsbStage::State::serveReapers(Device& device)
{
    for (auto it = device.reapers.begin(); it != device.reapers.end();) {
        const auto reaper = it++;
        const Client client = reaper->first;
        GSource* timer = reaper->second;
        if (!giveBack(device, client))
            continue;
        device.reapers.erase(reaper);
        g_source_destroy(timer);
        g_object_unref(client);
    }
}

void UsbStage::State::forget(Client client)
{
    const std::lock_guard lock(mutex);
    for (Device& device : devices) {
        for (auto it = device.claims.begin(); it != device.claims.end();)
            it = it->second == client ? device.claims.erase(it) : std::next(it);
        for (auto it = device.transfers.begin(); it != device.transfers.end();) {
            const auto transfer = it++;
            if (transfer->client != client)
                continue;
            release(*transfer);
            device.transfers.erase(transfer);
        }
    }
}

UsbStage::UsbStage() : m_state(std::make_unique<State>())
{
    g_signal_connect(m_state->handler, "handle-ioctl", G_CALLBACK(onIoctl), m_state.get());
    g_signal_connect(m_state->handler, "client-vanished", G_CALLBACK(onVanished), m_state.get());
    // An empty bus is a bus as well; without one libusb finds no USB at all.
    umockdev_testbed_add_from_string(m_state->bed, "P: /devices/pci0000:00/usb2\nE: SUBSYSTEM=usb_host\n",
                                     nullptr);
    chmod(m_state->root().c_str(), 0777); // ordinary users listen for devices as well
}

UsbStage::~UsbStage()
{
    g_signal_handlers_disconnect_by_data(m_state->handler, m_state.get());
    g_object_unref(m_state->bed);
    g_object_unref(m_state->handler);
}

std::string UsbStage::plug(emu::UsbFunction& function)
{
    Device* device = nullptr;
    int address = 0;
    std::string name;
    {
        const std::lock_guard lock(m_state->mutex);
        const int port = ++m_state->lastPort;
        address = port + 1; // the hub has the first one
        name = "2-" + std::to_string(port);
        char node[32];
        std::snprintf(node, sizeof node, "/dev/bus/usb/002/%03d", address);
        m_state->devices.push_back(Device{&function, node, sysPathOf(name), false, {}, {}, {}});
        device = &m_state->devices.back();
    }
    m_state->attach(*device, address, name);
    umockdev_testbed_uevent(m_state->bed, ("/sys" + device->sysPath).c_str(), "add");
    return name;
}

void UsbStage::unplug(emu::UsbFunction& function)
{
    std::string path;
    std::string node;
    {
        const std::lock_guard lock(m_state->mutex);
        Device& device = m_state->byFunction(function);
        device.isGone = true;
        for (Transfer& transfer : device.transfers)
            if (!transfer.isOver)
                transfer.end(-ESHUTDOWN, 0);
        m_state->serveReapers(device);
        path = "/sys" + device.sysPath;
        node = device.node;
    }
    umockdev_testbed_uevent(m_state->bed, path.c_str(), "remove");
    umockdev_testbed_remove_device(m_state->bed, path.c_str());
    ::unlink((m_state->root() + node).c_str()); // which the bed leaves there
}

void UsbStage::askAgain(emu::UsbFunction& function, milliseconds time)
{
    const std::lock_guard lock(m_state->mutex);
    Device& device = m_state->byFunction(function);
    m_state->later(time, onAskAgain, new Timer{m_state.get(), &device, nullptr}, freeTimer);
}

void UsbStage::setOpenable(const std::string& location, bool isOpenable)
{
    const std::lock_guard lock(m_state->mutex);
    const auto device = std::find_if(m_state->devices.begin(), m_state->devices.end(),
                                     [&](const Device& one) { return one.sysPath == sysPathOf(location); });
    require(device != m_state->devices.end(), "nothing hangs there", nullptr);
    chmod((m_state->root() + device->node).c_str(), isOpenable ? 0666 : 0);
}

} // namespace tests
