// What a datagram says to the command that waits for its answer (GigE Vision, chapter "GVCP"). Bytes in, a
// verdict out: no sockets and no clock.
#pragma once

#include "gvcp/Gvcp.h"

#include <KXCameraControl/KXCameraControl.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace kx
{

struct GvcpAnswer
{
    KX_Status status = KX_E_NO_ANSWER;
    uint16_t refusal = gvcp::Success; // the camera's own status where it refused
    gvcp::Bytes payload;              // where `status` is KX_OK
    std::string text;                 // what went wrong, in English
    bool isOverdue = false;           // it has had all the time that a camera may ask for by PENDING_ACK
};

// Says whether a payload is what the command asks for.
using PayloadCheck = std::function<bool(const gvcp::Bytes&)>;
PayloadCheck holdsBytes(size_t size);
// Of READMEM: the address, and `size` bytes behind it.
PayloadCheck holdsMemory(uint32_t address, size_t size);

struct GvcpVerdict
{
    enum class Kind
    {
        Answer,  // see `answer`
        Pending, // the camera asks for `time`
        Stray,   // a late answer to an earlier command
        Malformed
    };
    Kind kind = Kind::Malformed;
    GvcpAnswer answer = {};
    std::chrono::milliseconds time{0};
};

// `command` as it was sent, its id in it.
GvcpVerdict judgeAnswer(const gvcp::Bytes& command, const PayloadCheck& isWellFormed,
                        const gvcp::Bytes& datagram);

} // namespace kx
