// The producer's lines to emulated cameras.
#pragma once

#include "camera_emulator/GrabberLine.h"
#include "gencp/Gencp.h"
#include "gentl/GenTl.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace producer
{

using gencp::Bytes;

// One connection to the socket of a camera. One caller at a time, but for isGone().
class CameraLine
{
public:
    CameraLine() = default;
    CameraLine(const CameraLine&) = delete;
    CameraLine& operator=(const CameraLine&) = delete;
    ~CameraLine() { disconnect(); }

    bool connect(const std::string& path); // false: no camera is there
    void disconnect();
    bool isGone() const;

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

    int m_socket = -1;
    uint16_t m_lastId = 0;
};

} // namespace producer
