// A device behind a GenTL producer, or the features of a module that is no device (the system, an interface).
//
// A loss is told by the producer's error events, within a second where it has them; else by the next request.
// The end of the producer's helper, by a crash or because a call hung, is a loss at once.
#pragma once

#include "KXCameraControl/ports/Port.h"
#include "KXCameraControl/ports/Silence.h"
#include "KXCameraControl/ports/gentl/GenTlDevices.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace kx
{

class GenTlPort final : public Port
{
public:
    explicit GenTlPort(const KX_DeviceInfo& record) : m_record(record) {}
    ~GenTlPort() override { GenTlPort::close(); }

    KX_Status open(uint32_t accessMode, uint16_t switchOverKey) override;
    // The features of an interface, or of the system where it is empty. Nobody tells of a loss.
    KX_Status openModule(std::unique_ptr<HostLink> link, const std::string& interface);
    // Takes up to gentlCallTime() when the producer hangs, and ends it then.
    void close() override;
    bool isOpen() const override { return m_isOpen; }
    // Beyond what a producer tells of failures: its input and output errors mean a refusal when the camera's
    // description can still be read, no answer when it cannot, and a loss when the device is not listed any
    // more.
    KX_Status readMemory(uint64_t address, void* data, size_t size) override;
    KX_Status writeMemory(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override;
    size_t registersPerRequest() const override;
    KX_Status descriptionUrls(std::vector<std::string>& urls) override;
    CameraNames names() const override { return m_names; }
    // Producers have time-outs of their own; the number of tries counts for a device that is busy.
    void setTimeouts(const PortTimeouts& timeouts) override { m_timeouts = timeouts; }
    void setConnectionLostHandler(std::function<void(KX_Status)> handler) override;
    uint64_t requestCount() const override { return m_requestCount + (m_link ? m_link->requestCount() : 0); }
    std::string lastError() const override { return m_error; }

private:
    KX_Status fail(KX_Status status, std::string text);
    KX_Status openDevice(uint32_t accessMode);
    KX_Status connect(const std::string& producer, gentl::Channel& loss);
    KX_Status checkUsable();
    KX_Status failOpening(const HostReply& reply);
    HostReply request(const gentl::Writer& message);
    KX_Status ask(const gentl::Writer& message, const std::string& what, HostReply& reply);
    KX_Status meaningOf(const HostReply& reply);
    KX_Status judgeSilence();
    bool isDeviceThere();
    bool isMemoryReadable();
    void watch();
    void lose();

    const KX_DeviceInfo m_record;
    PortTimeouts m_timeouts;
    std::unique_ptr<HostLink> m_link;
    bool m_isOpen = false;
    bool m_readOnly = false;
    CameraNames m_names;
    std::vector<std::string> m_urls;
    uint64_t m_requestCount = 0; // of links that are closed
    std::string m_error;
    Silence m_silence;

    gentl::Channel m_losses;
    std::thread m_watcher;
    std::atomic<bool> m_isLost{false};
    std::atomic<bool> m_isClosing{false};
    std::mutex m_handlerMutex;
    std::function<void(KX_Status)> m_handler;
};

} // namespace kx
