// The modules of a producer that all sessions share: the system and its interfaces, open from their first use
// on. The standard lets a process open each once.
#pragma once

#include "gentl_host/Caller.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace gentl_host
{

struct FoundDevice
{
    std::string interface;
    std::string interfaceName;
    std::string device;
    std::string vendor;
    std::string model;
    std::string serialNumber;
    std::string version;
    std::string layer; // "CL", "CXP", "GEV", ...
    int32_t status = StatusUnknown;
};

// From the threads of all sessions. Only one of them looks or opens at a time: producers say that they allow
// more, and crash.
class Modules
{
public:
    explicit Modules(std::string path) : m_path(std::move(path)) {}

    Producer producer;

    // All of them throw Failure.
    void load(Caller& call);
    std::vector<std::string> interfaces(Caller& call);
    // An interface that cannot be opened or searched hides no other: `problems` says why.
    std::vector<FoundDevice> devices(Caller& call, std::string& problems);
    Handle system(Caller& call);
    Handle interface(Caller& call, const std::string& id);
    Handle openDevice(Caller& call, const std::string& interface, const std::string& device, int32_t access);
    // Whether the interface lists the device, and within reach.
    bool isThere(Caller& call, const std::string& interface, const std::string& device);

    // Best effort, in the last moments of the process.
    void closeAll();

private:
    class Turn;
    std::vector<std::string> listInterfaces(Caller& call);
    void lookBehind(Caller& call, const std::string& id, std::vector<FoundDevice>& found);
    FoundDevice describe(Caller& call, Handle interface, const std::string& device);
    std::vector<std::string> listDevices(Caller& call, Handle interface);
    Handle openInterface(Caller& call, const std::string& id);

    const std::string m_path;
    std::mutex m_mutex;
    bool m_isLoaded = false;
    Handle m_system = nullptr;
    std::map<std::string, Handle> m_interfaces;
};

} // namespace gentl_host
