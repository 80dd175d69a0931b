// A line without a camera: memory in the test's process, refusals and failures on demand, and a record of
// what was asked.
#pragma once

#include "KXCameraControl/camera/PortFactory.h"

#include <KXCameraControl/KXCameraControl.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tests
{

// The camera; outlives the ports to it.
struct FakeDevice
{
    static constexpr uint64_t descriptionAddress = 0xFE000000; // where no description has a register

    std::map<uint64_t, uint8_t> memory; // zero elsewhere
    std::string description;            // from descriptionAddress on
    std::vector<std::string> urls;
    kx::CameraNames names; // of a camera that says nothing of itself, unless a test fills them
    std::map<uint64_t, KX_Status> failures; // of requests that touch the address
    KX_Status openStatus = KX_OK;
    KX_Status urlStatus = KX_OK;

    std::vector<std::string>
        requests; // "read 100 4", "write 100 4", "readreg 100", "writereg 100", "readregs 100 3" (so many)
    std::map<uint64_t, unsigned> wordReads;      // how often each word was asked for, whatever the answer
    std::function<void(uint64_t address)> wrote; // the camera's own reaction to a write
    std::vector<std::pair<uint64_t, size_t>> descriptionReads; // offset and size; not among `requests`
    unsigned opened = 0;
    unsigned closed = 0;
    kx::PortTimeouts timeouts;
    size_t registersPerRequest = 1;
    bool registersAreMemory = true;
    std::chrono::milliseconds keepTime{300};
    std::function<KX_Status(const std::vector<uint32_t>& addresses)>
        batchFailure; // of those that nothing else fails
    std::function<void(KX_Status)> lostHandler;
    bool isLost = false; // since the handler was called: registers are asked for no more

    // The description as a camera would offer it.
    void offer(const std::string& text, const std::string& name = "camera.xml")
    {
        char url[200];
        std::snprintf(url, sizeof url, "Local:%s;%llX;%zX", name.c_str(),
                      static_cast<unsigned long long>(descriptionAddress), text.size());
        description = text;
        urls = {url};
    }

    void set(uint64_t address, const std::vector<uint8_t>& bytes)
    {
        for (size_t i = 0; i < bytes.size(); ++i)
            memory[address + i] = bytes[i];
    }
    void set32(uint64_t address, uint32_t value) // big-endian
    {
        set(address, {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                      static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)});
    }
    uint32_t get32(uint64_t address) { return static_cast<uint32_t>(get(address, 4)); }
    uint64_t get(uint64_t address, size_t size) // big-endian
    {
        uint64_t value = 0;
        for (size_t i = 0; i < size; ++i)
            value = value << 8 | byteAt(address + i);
        return value;
    }
    uint8_t byteAt(uint64_t address) const
    {
        if (address >= descriptionAddress && address - descriptionAddress < description.size())
            return static_cast<uint8_t>(description[address - descriptionAddress]);
        const auto it = memory.find(address);
        return it == memory.end() ? 0 : it->second;
    }
    KX_Status failureAt(uint64_t address, size_t size) const
    {
        const auto it = failures.lower_bound(address);
        return it != failures.end() && it->first - address < size ? it->second : KX_OK;
    }
    void touch(uint64_t address, size_t size)
    {
        for (uint64_t word = address / 4 * 4; word < address + size; word += 4)
            ++wordReads[word];
    }
    void record(const char* kind, uint64_t address, size_t size)
    {
        char line[80];
        if (size == 0)
            std::snprintf(line, sizeof line, "%s %llx", kind, static_cast<unsigned long long>(address));
        else
            std::snprintf(line, sizeof line, "%s %llx %zu", kind, static_cast<unsigned long long>(address),
                          size);
        requests.emplace_back(line);
    }
};

class FakePort : public kx::Port
{
public:
    explicit FakePort(FakeDevice& device) : m_device(device) {}

    KX_Status open(uint32_t, uint16_t) override
    {
        if (m_device.openStatus == KX_OK) {
            m_isOpen = true;
            m_device.isLost = false;
            ++m_device.opened;
        }
        return m_device.openStatus;
    }
    void close() override
    {
        if (m_isOpen)
            ++m_device.closed;
        m_isOpen = false;
    }
    bool isOpen() const override { return m_isOpen; }

    KX_Status readMemory(uint64_t address, void* data, size_t size) override
    {
        if (address < FakeDevice::descriptionAddress)
            count("read", address, size);
        else
            m_device.descriptionReads.emplace_back(address - FakeDevice::descriptionAddress, size);
        m_device.touch(address, size);
        if (const KX_Status failure = m_device.failureAt(address, size))
            return failure;
        if (address == FakeDevice::descriptionAddress) {
            std::memset(data, 0, size);
            std::memcpy(data, m_device.description.data(), std::min(size, m_device.description.size()));
            return KX_OK;
        }
        for (size_t i = 0; i < size; ++i)
            static_cast<uint8_t*>(data)[i] = m_device.byteAt(address + i);
        return KX_OK;
    }
    KX_Status writeMemory(uint64_t address, const void* data, size_t size) override
    {
        count("write", address, size);
        if (const KX_Status failure = m_device.failureAt(address, size))
            return failure;
        const auto* bytes = static_cast<const uint8_t*>(data);
        m_device.set(address, std::vector<uint8_t>(bytes, bytes + size));
        if (m_device.wrote)
            m_device.wrote(address);
        return KX_OK;
    }
    KX_Status readRegister(uint64_t address, uint32_t& value) override
    {
        if (m_device.isLost)
            return KX_E_CONNECTION_LOST;
        count("readreg", address, 0);
        m_device.touch(address, 4);
        if (const KX_Status failure = m_device.failureAt(address, 4))
            return failure;
        value = m_device.get32(address);
        return KX_OK;
    }
    KX_Status writeRegister(uint64_t address, uint32_t value) override
    {
        count("writereg", address, 0);
        if (const KX_Status failure = m_device.failureAt(address, 4))
            return failure;
        m_device.set32(address, value);
        if (m_device.wrote)
            m_device.wrote(address);
        return KX_OK;
    }
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override
    {
        count("readregs", addresses.front(), addresses.size());
        values.clear();
        for (const uint32_t address : addresses) {
            m_device.touch(address, 4);
            if (const KX_Status failure = m_device.failureAt(address, 4))
                return failure;
            values.push_back(m_device.get32(address));
        }
        return m_device.batchFailure ? m_device.batchFailure(addresses) : KX_OK;
    }
    size_t registersPerRequest() const override { return m_device.registersPerRequest; }
    bool registersAreMemory() const override { return m_device.registersAreMemory; }
    std::chrono::milliseconds keepTime() const override { return m_device.keepTime; }
    KX_Status descriptionUrls(std::vector<std::string>& urls) override
    {
        urls = m_device.urls;
        return m_device.urlStatus;
    }
    kx::CameraNames names() const override { return m_device.names; }
    void setTimeouts(const kx::PortTimeouts& timeouts) override { m_device.timeouts = timeouts; }
    void setConnectionLostHandler(std::function<void(KX_Status)> handler) override
    {
        m_device.lostHandler = [&device = m_device, handler = std::move(handler)](KX_Status status) {
            device.isLost = true;
            if (handler)
                handler(status);
        };
    }
    uint64_t requestCount() const override { return m_requests; }
    std::string lastError() const override { return "the fake line says no"; }

private:
    void count(const char* kind, uint64_t address, size_t size)
    {
        m_device.record(kind, address, size);
        ++m_requests;
    }

    FakeDevice& m_device;
    bool m_isOpen = false;
    uint64_t m_requests = 0;
};

// Every handle that is created while this lives talks to `device`.
class FakePorts
{
public:
    explicit FakePorts(FakeDevice& device)
    {
        kx::setPortFactory([&device](const KX_DeviceInfo&) { return std::make_unique<FakePort>(device); });
    }
    ~FakePorts() { kx::setPortFactory(nullptr); }
    FakePorts(const FakePorts&) = delete;
    FakePorts& operator=(const FakePorts&) = delete;
};

// An open camera over a fake line.
class FakeCamera
{
public:
    // `prepare` sees the device before it is opened.
    explicit FakeCamera(const std::string& description = {}, uint32_t mode = KX_ACCESS_EXCLUSIVE,
                        const std::function<void(FakeDevice&)>& prepare = {})
        : m_ports(device)
    {
        if (prepare)
            prepare(device);
        if (!description.empty())
            device.offer(description);
        KX_DeviceInfo info{};
        info.transportType = KX_TRANSPORT_GIGE;
        info.layout = KX_DEVICE_INFO_LAYOUT;
        KX_CC_CreateHandle(&handle, &info);
        openStatus = KX_CC_OpenDevice(handle, mode, 0);
    }
    ~FakeCamera() { KX_CC_DestroyHandle(handle); }
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;

    std::string lastError() const
    {
        char text[500] = {};
        uint32_t length = 0;
        KX_CC_GetLastErrorText(handle, text, sizeof text, &length);
        return text;
    }

    FakeDevice device;
    KX_HANDLE handle = nullptr;
    KX_Status openStatus = KX_OK;

private:
    FakePorts m_ports;
};

} // namespace tests
