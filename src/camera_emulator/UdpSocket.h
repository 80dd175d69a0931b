// A UDP socket bound to one address, for a camera's own thread, and how that thread waits.
#pragma once

#include "camera_emulator/Responder.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace emu
{

class UdpSocket
{
public:
    UdpSocket() = default;
    ~UdpSocket();
    UdpSocket(UdpSocket&& other) noexcept;
    UdpSocket& operator=(UdpSocket&& other) noexcept;

    // Gives the system's reason on failure. `shared`: other sockets may take the same address and port.
    std::optional<std::string> bind(uint32_t address, uint16_t port, bool shared);
    void close();

    int descriptor() const { return m_descriptor; }
    // One waiting packet, or nothing. Does not block.
    std::optional<Bytes> receive(Peer& from);
    void send(const Bytes& packet, Peer to);

private:
    int m_descriptor = -1;
};

// Tells a camera's thread that it shall end; from any thread.
class EndSignal
{
public:
    EndSignal() = default;
    ~EndSignal() { close(); }
    EndSignal(const EndSignal&) = delete;
    EndSignal& operator=(const EndSignal&) = delete;

    // Not raised afterwards. Gives the system's reason on failure.
    std::optional<std::string> open();
    void raise();
    bool isRaised() const { return m_isRaised; }
    void close();

private:
    friend void waitForTraffic(const UdpSocket&, const UdpSocket&, const EndSignal&,
                               std::optional<Clock::time_point>);
    std::atomic<bool> m_isRaised{false};
    int m_readEnd = -1;
    int m_writeEnd = -1;
};

// Blocks until one of the sockets (those that are open) has something, `end` is raised or `due` has come.
void waitForTraffic(const UdpSocket& unicast, const UdpSocket& broadcast, const EndSignal& end,
                    std::optional<Clock::time_point> due);

} // namespace emu
