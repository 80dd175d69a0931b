// A camera that speaks GenCP, whatever carries the packets.
//
// Who opens the link has the camera for itself: there is no control to take and no heartbeat, and a monitor
// shares it no more than others do. The connection is lost when the link says that the device is gone; where
// a link does not tell of that, when the camera is silent for too long (Silence.h).
#pragma once

#include "KXCameraControl/ports/ControlThread.h"
#include "KXCameraControl/ports/Port.h"
#include "KXCameraControl/ports/Silence.h"
#include "KXCameraControl/ports/gencp/GenCpLink.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace kx
{

class GenCpPort : public Port
{
public:
    // `serialNumber`: of the camera that is meant; empty: whichever is there.
    GenCpPort(std::unique_ptr<GenCpLink> link, std::string serialNumber);
    ~GenCpPort() override { GenCpPort::close(); }

    // KX_E_PARAMETER: unknown mode. KX_E_CALL_ORDER: open already. KX_E_NO_DEVICE: no such line, or another
    // camera at it. Else what the link says, or the first request. `switchOverKey` means nothing here.
    KX_Status open(uint32_t accessMode, uint16_t switchOverKey) override;
    void close() override;
    bool isOpen() const override { return m_link->isOpen(); }

    KX_Status readMemory(uint64_t address, void* data, size_t size) override;
    KX_Status writeMemory(uint64_t address, const void* data, size_t size) override;
    KX_Status readRegister(uint64_t address, uint32_t& value) override;
    KX_Status writeRegister(uint64_t address, uint32_t value) override;
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override;
    size_t registersPerRequest() const override { return 1; }
    // From the manifest table, as "Local:" texts, with "?SHA1=" where the camera gives the file's digest.
    KX_Status descriptionUrls(std::vector<std::string>& urls) override;
    // Known from descriptionUrls() on.
    CameraNames names() const override { return m_names; }

    void setTimeouts(const PortTimeouts& timeouts) override { m_timeouts = timeouts; }
    void setConnectionLostHandler(std::function<void(KX_Status)> handler) override;
    uint64_t requestCount() const override { return m_requestCount; }
    std::string lastError() const override { return m_error; }

    // A bootstrap register of 1 to 8 bytes in the link's byte order.
    KX_Status readNumber(uint64_t address, size_t size, uint64_t& number);
    KX_Status writeNumber(uint64_t address, size_t size, uint64_t number);
    // A bootstrap text, up to its zero.
    KX_Status readText(uint64_t address, std::string& text);

protected:
    // What a transport has to find out or to set before anything else, its link open.
    virtual KX_Status settle() { return KX_OK; }
    // How long the camera's packets may be (setLimits()), where it says that itself.
    virtual KX_Status readLimits() { return KX_OK; }

    GenCpLink& link() { return *m_link; }
    const GenCpLink& link() const { return *m_link; }
    const PortTimeouts& timeouts() const { return m_timeouts; }
    // Whole packets with their prefix, as the camera's limits count them.
    void setLimits(size_t command, size_t ack);
    // From any thread.
    void reportLoss(std::string reason);
    KX_Status fail(KX_Status status, std::string text);

private:
    struct Exchange
    {
        gencp::CommandPacket command;
        size_t ackSize; // expected, without prefix and header
        GenCpLink::Clock::time_point pendingEnd;
        bool sawMalformed = false;
        bool sawPending = false;
    };
    struct Answer
    {
        KX_Status status = KX_E_NO_ANSWER;
        gencp::Bytes scd;
        std::string text;
    };

    KX_Status openAs(uint32_t accessMode);
    KX_Status checkCamera();
    KX_Status readLongestResponse();
    size_t largestPiece(size_t limit, size_t head) const;
    KX_Status readNames();
    KX_Status readManifest(std::vector<std::string>& urls);
    KX_Status checkUsable();
    KX_Status request(uint16_t command, gencp::Bytes scd, size_t ackSize, gencp::Bytes& answer);
    Answer tryOnce(Exchange& exchange);
    bool isLostBySilence(GenCpLink::Clock::time_point begin);
    bool judge(Exchange& exchange, const gencp::Bytes& packet, GenCpLink::Clock::time_point& deadline,
               Answer& answer);
    KX_Status readPiece(uint64_t address, uint8_t* data, size_t size);
    KX_Status writePiece(uint64_t address, const uint8_t* data, size_t size);
    void tellLoss(KX_Status reason);

    const std::unique_ptr<GenCpLink> m_link;
    const std::string m_serialNumber;
    ControlThread m_watch;
    bool m_readOnly = false;
    bool m_isSettled = false; // what opening tries may go unanswered
    Silence m_silence;
    PortTimeouts m_timeouts;
    std::chrono::milliseconds m_longestResponse{0}; // the camera's own word
    CameraNames m_names;
    size_t m_maxCommand;
    size_t m_maxAck;
    uint16_t m_lastId = 0;
    std::atomic<uint64_t> m_requestCount{0};
    std::string m_error;

    std::mutex m_lossMutex;
    std::string m_lossText;
    std::mutex m_handlerMutex; // held while the handler runs
    std::function<void(KX_Status)> m_handler;
};

} // namespace kx
