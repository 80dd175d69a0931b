#include "gentl_host/Modules.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace gentl_host
{

namespace
{

constexpr uint64_t kSearchTime = 1000; // ms that a producer may take to look for its devices
constexpr std::chrono::milliseconds kTurnPause{5};
constexpr unsigned kPausesPerNote = 40;

} // namespace

// Waiting for another session tells so: the time of a call is not used up by somebody else's.
class Modules::Turn
{
public:
    Turn(std::mutex& mutex, Caller& call) : m_mutex(mutex)
    {
        for (unsigned pauses = 1; !m_mutex.try_lock(); ++pauses) {
            std::this_thread::sleep_for(kTurnPause);
            if (pauses % kPausesPerNote == 0)
                call.note("waiting");
        }
    }
    ~Turn() { m_mutex.unlock(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    std::mutex& m_mutex;
};

void Modules::load(Caller& call)
{
    const Turn turn(m_mutex, call);
    if (!m_isLoaded) {
        call.note("loading");
        const std::string problem = producer.load(m_path);
        if (!problem.empty())
            throw Failure{Outcome::Unusable, Success, problem};
        call.must(call(producer.GCInitLib));
        m_isLoaded = true;
    }
    if (!m_system)
        call.must(call(producer.TLOpen, &m_system));
}

std::vector<std::string> Modules::listInterfaces(Caller& call)
{
    Bool8 changed = 0;
    const Error updated = call(producer.TLUpdateInterfaceList, m_system, &changed, kSearchTime);
    if (updated != ErrTimeout) // what is known by then counts
        call.must(updated);
    uint32_t count = 0;
    call.must(call(producer.TLGetNumInterfaces, m_system, &count));
    std::vector<std::string> ids;
    for (uint32_t i = 0; i < std::min(count, kMostInterfaces); ++i)
        ids.push_back(call.neededText([&](int32_t*, void* data, size_t* size) {
            return call(producer.TLGetInterfaceID, m_system, i, static_cast<char*>(data), size);
        }));
    return ids;
}

std::vector<std::string> Modules::interfaces(Caller& call)
{
    const Turn turn(m_mutex, call);
    return listInterfaces(call);
}

Handle Modules::openInterface(Caller& call, const std::string& id)
{
    Handle& handle = m_interfaces[id];
    if (!handle)
        call.must(call(producer.TLOpenInterface, m_system, id.c_str(), &handle));
    return handle;
}

std::vector<std::string> Modules::listDevices(Caller& call, Handle interface)
{
    Bool8 changed = 0;
    const Error updated = call(producer.IFUpdateDeviceList, interface, &changed, kSearchTime);
    if (updated != ErrTimeout)
        call.must(updated);
    uint32_t count = 0;
    call.must(call(producer.IFGetNumDevices, interface, &count));
    std::vector<std::string> ids;
    for (uint32_t i = 0; i < std::min(count, kMostDevices); ++i)
        ids.push_back(call.neededText([&](int32_t*, void* data, size_t* size) {
            return call(producer.IFGetDeviceID, interface, i, static_cast<char*>(data), size);
        }));
    return ids;
}

FoundDevice Modules::describe(Caller& call, Handle interface, const std::string& device)
{
    const auto ask = [&](int32_t what) {
        return [&, what](int32_t* type, void* data, size_t* size) {
            return call(producer.IFGetDeviceInfo, interface, device.c_str(), what, type, data, size);
        };
    };
    FoundDevice found;
    found.device = device;
    found.vendor = call.text(ask(DeviceVendor));
    found.model = call.text(ask(DeviceModel));
    found.serialNumber = call.text(ask(DeviceSerialNumber));
    found.version = call.text(ask(DeviceVersion));
    found.layer = call.text(ask(DeviceType));
    found.status = call.number(ask(DeviceAccessStatus), StatusUnknown);
    return found;
}

void Modules::lookBehind(Caller& call, const std::string& id, std::vector<FoundDevice>& found)
{
    const auto ask = [&](int32_t what) {
        return [&, what](int32_t* type, void* data, size_t* size) {
            return call(producer.TLGetInterfaceInfo, m_system, id.c_str(), what, type, data, size);
        };
    };
    const Handle interface = openInterface(call, id);
    const std::string name = call.text(ask(InterfaceDisplayName));
    const std::string layer = call.text(ask(InterfaceType));
    for (const std::string& device : listDevices(call, interface)) {
        found.push_back(describe(call, interface, device));
        found.back().interface = id;
        found.back().interfaceName = name.empty() ? id : name;
        if (found.back().layer.empty())
            found.back().layer = layer;
    }
}

std::vector<FoundDevice> Modules::devices(Caller& call, std::string& problems)
{
    const Turn turn(m_mutex, call);
    std::vector<FoundDevice> found;
    for (const std::string& id : listInterfaces(call)) {
        try {
            lookBehind(call, id, found);
        } catch (const Failure& failure) {
            problems += (problems.empty() ? "" : "; ") + ("interface \"" + id + "\": ") + failure.text;
        }
    }
    return found;
}

Handle Modules::system(Caller& call)
{
    const Turn turn(m_mutex, call);
    return m_system;
}

Handle Modules::interface(Caller& call, const std::string& id)
{
    const Turn turn(m_mutex, call);
    return openInterface(call, id);
}

// Not every producer knows every kind of access.
Handle Modules::openDevice(Caller& call, const std::string& interface, const std::string& device,
                           int32_t access)
{
    const Turn turn(m_mutex, call);
    const Handle parent = openInterface(call, interface);
    Handle handle = nullptr;
    Error error = call(producer.IFOpenDevice, parent, device.c_str(), access, &handle);
    if (error == ErrNotImplemented || error == ErrInvalidParameter)
        error = call(producer.IFOpenDevice, parent, device.c_str(), int32_t(AccessExclusive), &handle);
    call.must(error);
    return handle;
}

bool Modules::isThere(Caller& call, const std::string& interface, const std::string& device)
{
    const Turn turn(m_mutex, call);
    const Handle parent = openInterface(call, interface);
    const auto listed = listDevices(call, parent);
    return std::find(listed.begin(), listed.end(), device) != listed.end() &&
           describe(call, parent, device).status != StatusNoAccess;
}

void Modules::closeAll()
{
    if (!m_mutex.try_lock())
        return;
    for (const auto& [id, handle] : m_interfaces)
        if (handle)
            producer.IFClose.address(handle);
    if (m_system)
        producer.TLClose.address(m_system);
    if (m_isLoaded)
        producer.GCCloseLib.address();
    m_mutex.unlock();
}

} // namespace gentl_host
