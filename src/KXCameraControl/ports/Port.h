// The line to one camera. A port knows sockets, USB or a serial line and nothing of GenICam.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kx
{

struct PortTimeouts
{
    std::chrono::milliseconds perTry{200}; // longer where the camera or the line says that it is slower
    unsigned tries = 3;
    std::chrono::milliseconds longestPending{20000}; // what a camera may ask for by PENDING_ACK, per request
};

// What a camera says of itself.
struct CameraNames
{
    std::string manufacturer;
    std::string model;
    std::string deviceVersion;
};

// One caller at a time; the owner holds its lock around every call. Only the connection-lost handler comes
// from a thread of the port itself. How a loss is noticed is the transport's business (a heartbeat, the
// system's word that the device left, nothing but requests), and its header says how soon. A failure is a
// status of the public header, `lastError()` says more in English.
class Port
{
public:
    virtual ~Port() = default;

    // Connects and takes what the mode says (KX_ACCESS_...). On failure nothing stays open.
    virtual KX_Status open(uint32_t accessMode, uint16_t switchOverKey) = 0;
    // Gives control back and stops the heartbeat. Idempotent; never blocks longer than one try.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    // Device memory in wire order. Sizes are free; what the transport cannot address is KX_E_GC_ACCESS
    // without a request. A refusal by the camera is KX_E_GC_ACCESS.
    virtual KX_Status readMemory(uint64_t address, void* data, size_t size) = 0;
    virtual KX_Status writeMemory(uint64_t address, const void* data, size_t size) = 0;

    // One 32-bit register, its first byte in device memory the most significant one, by the transport's own
    // register commands where it has them.
    virtual KX_Status readRegister(uint64_t address, uint32_t& value) = 0;
    virtual KX_Status writeRegister(uint64_t address, uint32_t value) = 0;
    // Several registers, registersPerRequest() of them with each request. All or nothing: a refusal of one
    // fails the call.
    virtual KX_Status readRegisters(const std::vector<uint32_t>& addresses,
                                    std::vector<uint32_t>& values) = 0;
    // How many addresses one request of readRegisters can hold on this camera; 1 where it knows no batches.
    virtual size_t registersPerRequest() const = 0;
    // Whether readRegister() gives what readMemory() would, highest byte first: cameras with little-endian
    // registers turn the one and not the other.
    virtual bool registersAreMemory() const { return true; }

    // How long a register that was read may stand for the camera, up to the next write, while the port is
    // open.
    virtual std::chrono::milliseconds keepTime() const { return std::chrono::milliseconds(300); }

    // The URL texts that say where the description lies (first and, where there is one, second).
    virtual KX_Status descriptionUrls(std::vector<std::string>& urls) = 0;

    // As the camera told them when it was opened; all empty where it told none.
    virtual CameraNames names() const { return {}; }

    virtual void setTimeouts(const PortTimeouts& timeouts) = 0;
    // Called at most once per open connection. close() waits for it, so it must not wait for the owner's
    // lock.
    virtual void setConnectionLostHandler(std::function<void(KX_Status)> handler) = 0;
    // Requests sent since construction, retries included.
    virtual uint64_t requestCount() const = 0;
    virtual std::string lastError() const = 0;
};

} // namespace kx
