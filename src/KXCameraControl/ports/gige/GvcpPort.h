// A GigE Vision camera's control channel.
//
// With control (exclusive or not) a heartbeat asks for the control register and writes it again, three times
// within the camera's heartbeat time and at least every second. The connection is lost when the camera
// answers none of its tries (the handler gets KX_E_NO_ANSWER, or KX_E_NETWORK when this host cannot send) or
// when control is not ours any more (KX_E_CONNECTION_LOST). A monitor has no heartbeat: its calls fail one by
// one. To both, a camera that has had all the time that it may ask for by PENDING_ACK, and has not answered,
// is lost.
#pragma once

#include "KXCameraControl/ports/ControlThread.h"
#include "KXCameraControl/ports/Port.h"
#include "KXCameraControl/ports/gige/GvcpChannel.h"

namespace kx
{

class GvcpPort final : public Port
{
public:
    explicit GvcpPort(const KX_GigEDeviceInfo& device) : m_device(device) {}
    ~GvcpPort() override { close(); }

    // KX_E_PARAMETER: unknown mode. KX_E_CALL_ORDER: open already. KX_E_NO_DEVICE: nobody answers at the
    // address, or a camera with another MAC address or serial number does. KX_E_NO_ANSWER: the camera is
    // there and answers discovery, but nothing else. KX_E_CONTROL_REFUSED: another host has control; to a
    // monitor: exclusively. `switchOverKey` 0: none.
    KX_Status open(uint32_t accessMode, uint16_t switchOverKey) override;
    void close() override;
    bool isOpen() const override { return m_channel.isOpen(); } // a lost connection stays open until close()

    KX_Status readMemory(uint64_t address, void* data, size_t size) override;
    KX_Status writeMemory(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override;
    size_t registersPerRequest() const override { return m_registersPerRequest; }
    bool registersAreMemory() const override { return m_isBigEndian; }
    KX_Status descriptionUrls(std::vector<std::string>& urls) override;
    CameraNames names() const override { return m_names; }

    void setTimeouts(const PortTimeouts& timeouts) override;
    // Waits for a handler that is running: what the old one used may be freed afterwards.
    void setConnectionLostHandler(std::function<void(KX_Status)> handler) override;
    uint64_t requestCount() const override { return m_channel.requestCount(); }
    std::string lastError() const override;

private:
    // Opening
    KX_Status connectAndTake(uint32_t accessMode, uint16_t switchOverKey);
    KX_Status findCamera();
    KX_Status takeControl(uint32_t privilege, uint16_t switchOverKey);
    KX_Status readAbilities(std::chrono::milliseconds& heartbeatInterval);
    KX_Status readAbility(uint32_t address, uint32_t fallback, uint32_t& value);

    // Requests
    KX_Status perform(const gvcp::Bytes& command, const PayloadCheck& isWellFormed, gvcp::Bytes& payload);
    KX_Status readBatch(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values);
    KX_Status readFramed(std::vector<uint32_t> addresses, std::vector<uint32_t>& values);
    KX_Status readPiece(uint32_t address, uint8_t* data, size_t size);
    KX_Status checkUsable();
    KX_Status checkWritable();
    KX_Status checkAddress(uint64_t address, size_t size);

    // Control
    GvcpAnswer readControl();
    GvcpAnswer writeControl(uint32_t value, const PortTimeouts& timeouts);
    GvcpAnswer checkControl();
    KX_Status judgeAccessDenied(const GvcpAnswer& denied);
    void loseConnection(const GvcpAnswer& reason);
    void beat();
    void tellLoss(KX_Status reason);

    KX_Status fail(KX_Status status, std::string text);
    KX_Status failLost();
    PortTimeouts timeouts() const;

    const KX_GigEDeviceInfo m_device;
    GvcpChannel m_channel;
    ControlThread m_control;
    CameraNames m_names;      // as discovery answered when it was opened
    uint32_t m_privilege = 0; // what we hold of the control register; constant while the heartbeat runs
    size_t m_registersPerRequest = 1;
    bool m_isBigEndian = true;
    // What the camera said of itself: registers whose values are known.
    uint32_t m_version = 0;
    uint32_t m_macLow = 0;

    mutable std::mutex m_mutex; // guards the three below
    PortTimeouts m_timeouts;
    std::string m_lastError; // of the caller's last failed call
    std::string m_lossText;
    std::mutex m_handlerMutex; // held while the handler runs
    std::function<void(KX_Status)> m_handler;
};

} // namespace kx
