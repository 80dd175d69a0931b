#include "gentl_host/OpenModule.h"

#include <algorithm>

namespace gentl_host
{

namespace
{

// Without end some producers never come back, killed or not.
constexpr uint64_t kEventPatience = 500;                     // ms
constexpr std::chrono::milliseconds kPauseAfterFailure{100}; // of waiting
constexpr size_t kSpare = 64; // what a producer writes too much lands here first
// Of one call: on the slowest of serial lines they take less than two seconds.
constexpr size_t kMostStacked = 32;

} // namespace

void OpenModule::mustBeOpen() const
{
    if (!m_port)
        throw Failure{Outcome::Bad, Success, "nothing is open"};
}

void OpenModule::open(Caller& call, const std::string& interface, const std::string& device, int32_t access)
{
    if (m_port)
        throw Failure{Outcome::Bad, Success, "something is open"};
    m_interface = interface;
    m_deviceId = device;
    if (device.empty()) {
        m_port = interface.empty() ? m_modules.system(call) : m_modules.interface(call, interface);
        return;
    }
    m_device = m_modules.openDevice(call, interface, device, access);
    try {
        call.must(call(call.gc.DevGetPort, m_device, &m_port));
        startWatching(call);
    } catch (const Failure&) {
        close(call);
        throw;
    }
}

void OpenModule::close(Caller& call)
{
    stopWatching(call);
    m_port = nullptr;
    if (const Handle device = std::exchange(m_device, nullptr))
        call.must(call(call.gc.DevClose, device));
}

// A producer without error events tells of a loss by failing requests only.
void OpenModule::startWatching(Caller& call)
{
    const Producer& gc = call.gc;
    if (!m_loss.isOpen() || !gc.GCRegisterEvent || !gc.GCUnregisterEvent || !gc.EventGetData || !gc.EventKill)
        return;
    if (call(gc.GCRegisterEvent, m_device, int32_t(EventError), &m_event) != Success) {
        m_event = nullptr;
        return;
    }
    m_stopping = false;
    m_watcher = std::thread([this] { watch(); });
}

void OpenModule::stopWatching(Caller& call)
{
    if (!m_watcher.joinable())
        return;
    m_stopping = true;
    call(call.gc.EventKill, m_event);
    m_watcher.join();
    call(call.gc.GCUnregisterEvent, m_device, int32_t(EventError));
    m_event = nullptr;
}

// Errors happen to devices that are well: only one that is not listed any more is lost.
void OpenModule::watch()
{
    Channel nobody; // these calls are nobody's request
    Caller call(m_modules.producer, nobody);
    while (!m_stopping) {
        std::vector<uint8_t> data(kMaxText);
        size_t size = data.size();
        const Error error = call(call.gc.EventGetData, m_event, data.data(), &size, kEventPatience);
        if (m_stopping || error == ErrTimeout)
            continue;
        if (error != Success) {
            std::this_thread::sleep_for(kPauseAfterFailure);
            continue;
        }
        try {
            if (m_modules.isThere(call, m_interface, m_deviceId))
                continue;
        } catch (const Failure&) {
            continue;
        }
        m_loss.send({1});
        return;
    }
}

Bytes OpenModule::read(Caller& call, uint64_t address, size_t size)
{
    mustBeOpen();
    Bytes data(size + kSpare);
    size_t done = size;
    call.must(call(call.gc.GCReadPort, m_port, address, static_cast<void*>(data.data()), &done));
    call.checkLength(done, size);
    if (done < size)
        throw Failure{Outcome::Bad, Success,
                      "GCReadPort gives " + std::to_string(done) + " bytes for " + std::to_string(size)};
    data.resize(size);
    return data;
}

Bytes OpenModule::readRegisters(Caller& call, const std::vector<uint32_t>& addresses)
{
    Bytes all;
    for (size_t first = 0; first < addresses.size() && call.gc.GCReadPortStacked && m_stacks;
         first += kMostStacked) {
        const size_t count = std::min(addresses.size() - first, kMostStacked);
        const Bytes some = readStacked(call, &addresses[first], count);
        all.insert(all.end(), some.begin(), some.end());
    }
    for (size_t done = all.size() / 4; done < addresses.size(); ++done) {
        const Bytes one = read(call, addresses[done], 4);
        all.insert(all.end(), one.begin(), one.end());
    }
    return all;
}

// Empty: the producer has the function, and does not serve it.
Bytes OpenModule::readStacked(Caller& call, const uint32_t* addresses, size_t count)
{
    mustBeOpen();
    Bytes data(4 * count + kSpare);
    std::vector<StackEntry> entries;
    for (size_t i = 0; i < count; ++i)
        entries.push_back({addresses[i], &data[4 * i], 4});
    size_t done = count;
    const Error error = call(call.gc.GCReadPortStacked, m_port, entries.data(), &done);
    m_stacks = error != ErrNotImplemented;
    if (!m_stacks)
        return {};
    call.must(error);
    const bool isWhole =
        done == count &&
        std::all_of(entries.begin(), entries.end(), [](const StackEntry& entry) { return entry.size == 4; });
    if (!isWhole)
        throw Failure{Outcome::Bad, Success, "GCReadPortStacked does not give what it was asked for"};
    data.resize(4 * count);
    return data;
}

void OpenModule::write(Caller& call, uint64_t address, const Bytes& data)
{
    mustBeOpen();
    size_t done = data.size();
    call.must(call(call.gc.GCWritePort, m_port, address, static_cast<const void*>(data.data()), &done));
    if (done != data.size())
        throw Failure{Outcome::Bad, Success,
                      "GCWritePort took " + std::to_string(done) + " bytes of " +
                          std::to_string(data.size())};
}

std::vector<std::string> OpenModule::urls(Caller& call)
{
    mustBeOpen();
    const Producer& gc = call.gc;
    uint32_t count = 0;
    std::vector<std::string> urls;
    if (gc.GCGetNumPortURLs && gc.GCGetPortURLInfo && call(gc.GCGetNumPortURLs, m_port, &count) == Success)
        for (uint32_t i = 0; i < std::min(count, kMostUrls); ++i)
            urls.push_back(call.text([&](int32_t* type, void* data, size_t* size) {
                return call(gc.GCGetPortURLInfo, m_port, i, int32_t(UrlText), type, data, size);
            }));
    else if (gc.GCGetPortURL) // GenTL 1.0
        urls.push_back(call.text([&](int32_t*, void* data, size_t* size) {
            return call(gc.GCGetPortURL, m_port, static_cast<char*>(data), size);
        }));
    urls.erase(std::remove(urls.begin(), urls.end(), std::string()), urls.end());
    return urls;
}

bool OpenModule::isThere(Caller& call)
{
    return m_deviceId.empty() || m_modules.isThere(call, m_interface, m_deviceId);
}

} // namespace gentl_host
