// Commands to one camera and its acknowledges (GigE Vision, chapter "GVCP"): request ids, repetitions,
// PENDING_ACK and BUSY. Knows nothing of what the registers mean.
#pragma once

#include "KXCameraControl/ports/Port.h"
#include "KXCameraControl/ports/gige/GvcpAnswer.h"
#include "KXCameraControl/ports/gige/Socket.h"
#include "gvcp/Gvcp.h"

#include <atomic>
#include <mutex>

namespace kx
{

// Thread-safe between open() and close(); one command is under way at a time, as the protocol wants it.
class GvcpChannel
{
public:
    // Sends nothing. `localAddress`: the interface to use, 0 for the system's choice.
    KX_Status open(uint32_t address, uint32_t localAddress, std::string& error);
    void close();
    bool isOpen() const { return m_socket.isOpen(); }

    // Sends `command` (under an id of its own) until it is answered or the tries are used up. An answer that
    // fails `isWellFormed` counts as none; the request fails as malformed when no good one follows.
    // KX_E_ABORTED: the channel was interrupted.
    GvcpAnswer request(gvcp::Bytes command, const PayloadCheck& isWellFormed, const PortTimeouts& timeouts);

    // Ends the request that is under way and every later one, until resume().
    void interrupt() { m_interrupt.raise(); }
    void resume() { m_interrupt.clear(); }

    uint64_t requestCount() const { return m_requestCount; }

private:
    struct Exchange
    {
        gvcp::Bytes command;
        const PayloadCheck& isWellFormed;
        std::chrono::milliseconds perTry;
        Clock::time_point pendingEnd; // a camera that asks for more time gets it until then
        bool sawMalformed = false;
        bool sawPending = false;
    };
    GvcpAnswer tryOnce(Exchange& exchange);
    static std::optional<GvcpAnswer> take(Exchange& exchange, const gvcp::Bytes& datagram,
                                          Clock::time_point& deadline);
    void giveNextId(gvcp::Bytes& command);

    std::mutex m_mutex;
    UdpSocket m_socket;
    WakeSignal m_interrupt;
    std::string m_peer;
    uint16_t m_lastId = 0;
    std::atomic<uint64_t> m_requestCount{0};
};

} // namespace kx
