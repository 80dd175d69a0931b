// What one session has open: a device, or the system or an interface for their own features.
#pragma once

#include "gentl_host/Modules.h"

#include <atomic>
#include <thread>

namespace gentl_host
{

class OpenModule
{
public:
    // `loss` (may be closed) gets a message when the device is lost.
    OpenModule(Modules& modules, Channel loss) : m_modules(modules), m_loss(std::move(loss)) {}

    // All of them throw Failure.
    void open(Caller& call, const std::string& interface, const std::string& device, int32_t access);
    void close(Caller& call); // idempotent
    Bytes read(Caller& call, uint64_t address, size_t size);
    // 4 bytes each; several with each call where the producer has a function for that.
    Bytes readRegisters(Caller& call, const std::vector<uint32_t>& addresses);
    void write(Caller& call, uint64_t address, const Bytes& data);
    std::vector<std::string> urls(Caller& call);
    bool isThere(Caller& call);

private:
    void mustBeOpen() const;
    Bytes readStacked(Caller& call, const uint32_t* addresses, size_t count);
    void watch();
    void startWatching(Caller& call);
    void stopWatching(Caller& call);

    Modules& m_modules;
    Channel m_loss;
    std::string m_interface;
    std::string m_deviceId;
    Handle m_device = nullptr;
    Handle m_port = nullptr;
    bool m_stacks = true; // as far as is known
    Handle m_event = nullptr;
    std::atomic<bool> m_stopping{false};
    std::thread m_watcher;
};

} // namespace gentl_host
