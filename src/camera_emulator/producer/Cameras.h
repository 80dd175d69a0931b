// The producer's lines to emulated cameras.
#pragma once

#include "camera_emulator/GrabberLine.h"
#include "camera_emulator/producer/GrabberSocket.h"
#include "gentl/GenTl.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace producer
{

// One connection to a camera. One caller at a time, but for isGone().
class CameraLine
{
public:
    bool connect(const std::string& place) { return m_socket.connect(place); } // false: no camera is there
    void disconnect() { m_socket.close(); }
    bool isGone() const { return m_socket.isGone(); }

    // GrabberFieldCount texts, or nothing.
    std::vector<std::string> who();
    gentl::Error open(bool control);
    // Control is given back when it comes back.
    void close();
    gentl::Error read(uint64_t address, void* data, size_t size);
    gentl::Error write(uint64_t address, const void* data, size_t size);

private:
    bool send(char letter, const Bytes& rest);
    std::optional<Bytes> receive(char letter, std::chrono::milliseconds patience);
    gentl::Error request(uint16_t command, const Bytes& scd, Bytes& answer);

    GrabberSocket m_socket;
    uint16_t m_lastId = 0;
};

} // namespace producer
