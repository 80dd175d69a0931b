// One camera that a handle stands for: the port and the node map over it.
#pragma once

#include "KXCameraControl/camera/OwnControl.h"
#include "KXCameraControl/description/Description.h"
#include "KXCameraControl/nodes/NodeMap.h"
#include "KXCameraControl/nodes/RegisterLine.h"
#include "KXCameraControl/ports/Port.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace kx
{

struct Observer
{
    KX_CallObserver function = nullptr;
    void* user = nullptr;
};

class Camera : private RegisterLine
{
public:
    Camera(const KX_DeviceInfo& device, std::unique_ptr<Port> port);
    ~Camera() override;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    // Held by the caller around everything below up to the next remark.
    std::mutex& mutex() { return m_mutex; }

    KX_Status open(uint32_t accessMode, uint16_t switchOverKey);
    void close();
    bool isOpen() const { return m_nodes != nullptr; }
    // Why further calls are vain: KX_OK, or KX_E_CONNECTION_LOST.
    KX_Status lineStatus() const { return m_lost ? KX_E_CONNECTION_LOST : KX_OK; }
    // Of a connection that is lost.
    std::string lossText();

    void setTimeouts(const PortTimeouts& timeouts) { m_port->setTimeouts(timeouts); }
    uint64_t requestCount() const { return m_port->requestCount(); }

    // Only while open.
    NodeMap& nodesForCall() { return *m_nodes; }
    KX_Status readMemory(uint64_t address, void* data, size_t size)
    {
        return m_nodes->readMemory(address, data, size);
    }
    KX_Status writeMemory(uint64_t address, const void* data, size_t size)
    {
        return m_nodes->writeMemory(address, data, size);
    }
    // Empty when none could be fetched.
    const std::string& description() const;
    // Why there is no description, or no node.
    const std::string& descriptionProblem() const { return m_descriptionProblem; }
    std::string portError() const { return m_port->lastError(); }

    Observer observer;

    // From here on without the lock, from any thread.
    const KX_DeviceInfo& device() const { return m_device; }
    void setConnectionLostHandler(KX_ConnectionLostHandler handler, void* user);
    void setErrorText(std::string text);
    std::string errorText() const;

private:
    KX_Status readBlock(uint64_t address, void* data, size_t size) override;
    KX_Status writeBlock(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    std::string lineError() const override { return m_port->lastError(); }
    size_t registersPerRequest() const override { return m_port->registersPerRequest(); }
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override;
    std::chrono::milliseconds keepTime() const override { return m_port->keepTime(); }
    bool registersAreMemory() const override { return m_port->registersAreMemory(); }

    void connectionLost(KX_Status status);
    KX_Status loadNodes(bool readOnly);

    const KX_DeviceInfo m_device;
    OwnControl m_control;
    std::mutex m_mutex;
    std::unique_ptr<Port> m_port;
    std::unique_ptr<NodeMap> m_nodes;
    SharedDescription m_description; // null: none
    std::string m_descriptionProblem;
    bool m_readOnly = false;
    std::atomic<bool> m_lost{false};

    mutable std::mutex m_sideMutex; // the members below; never held while calling out
    KX_ConnectionLostHandler m_lostHandler = nullptr;
    void* m_lostUser = nullptr;
    std::string m_errorText;
};

} // namespace kx
