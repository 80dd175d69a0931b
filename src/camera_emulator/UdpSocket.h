// A UDP socket bound to one address, for the emulator's own thread.
#pragma once

#include "camera_emulator/Responder.h"

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

} // namespace emu
