// How the producer reaches one emulated camera: messages that are kept apart (GrabberLine.h).
#pragma once

#include "gencp/Gencp.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace producer
{

using gencp::Bytes;

// One caller at a time, but for isGone().
class GrabberSocket
{
public:
    GrabberSocket() = default;
    GrabberSocket(const GrabberSocket&) = delete;
    GrabberSocket& operator=(const GrabberSocket&) = delete;
    ~GrabberSocket() { close(); }

    // A local socket's path. On Windows, which has none that keep messages apart, a TCP port of this machine:
    // each message stands behind its length, four bytes, big-endian.
    bool connect(const std::string& place);
    void close();
    bool isGone() const;

    bool send(const Bytes& message);
    // False: nothing has come in that time, or the camera is gone.
    bool receive(Bytes& message, std::chrono::milliseconds patience);

private:
    static constexpr intptr_t kNone = -1;

    intptr_t m_socket = kNone;
};

} // namespace producer
