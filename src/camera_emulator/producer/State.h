// The producer's modules: the system, the interfaces that its cameras are behind, and the cameras as devices.
// Handles are the addresses of these.
#pragma once

#include "camera_emulator/producer/Cameras.h"
#include "camera_emulator/producer/Faults.h"
#include "gentl/GenTl.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace producer
{

using namespace gentl;

// Registers and description of a module that is no camera.
struct ModuleMemory
{
    std::vector<uint8_t> registers = std::vector<uint8_t>(0x100);

    Error read(uint64_t address, void* data, size_t size) const;
    Error write(uint64_t address, const void* data, size_t size);
    static const std::string& description();
};
constexpr uint64_t kModuleDescription = 0x1000;
constexpr size_t kControlProtocol = 0x10; // register, 4 bytes; cameras that hide want a 1 here

struct Device
{
    std::string path; // of the camera's socket
    std::string id;
    std::vector<std::string> fields; // emu::GrabberField
    bool isListed = false;

    bool isOpen = false;
    bool mayWrite = false;
    char port = 0; // its address is the port's handle
    std::mutex lineMutex;
    CameraLine line;

    char event = 0; // its address is the event's handle
    bool hasEvent = false;
    std::atomic<bool> isEventKilled{false};
    bool isLossTold = false;
};

struct Interface
{
    std::string id;
    std::string layer;
    bool isOpen = false;
    ModuleMemory memory;
    std::vector<Device*> listed; // since the last update
};

struct State
{
    std::recursive_mutex mutex;
    bool isInitialised = false;
    bool isSystemOpen = false;
    ModuleMemory memory;
    std::map<std::string, std::unique_ptr<Interface>> interfaces; // by id; none ever goes
    std::map<std::string, std::unique_ptr<Device>> devices;       // by socket; none ever goes
    std::vector<Interface*> listed;

    // Asks all sockets who is there.
    void look();
};

State& state();

// Of a handle; null: it is none, or not open.
Interface* interfaceOf(Handle handle);
Device* deviceOf(Handle handle);
Device* deviceOfPort(Handle handle);
Device* deviceOfEvent(Handle handle);

// Keeps it for GCGetLastError on this thread, and gives it back.
Error fail(Error error, const std::string& text);
std::pair<Error, std::string> lastError();

} // namespace producer

#if defined(_WIN32)
#define PRODUCER_VISIBLE __declspec(dllexport)
#else
#define PRODUCER_VISIBLE __attribute__((visibility("default")))
#endif
#define PRODUCER_EXPORT extern "C" PRODUCER_VISIBLE ::gentl::Error
