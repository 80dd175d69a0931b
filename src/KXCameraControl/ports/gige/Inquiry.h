// Asks many cameras the same kind of question at the same time.
#pragma once

#include "KXCameraControl/ports/gige/Socket.h"
#include "gvcp/Gvcp.h"

#include <functional>

namespace kx
{

struct Question
{
    size_t socket = 0;    // index of the socket that it goes out by
    uint32_t address = 0; // a camera's, or a broadcast address
    gvcp::Bytes packet;
    bool isAnswered = false;
};

struct Patience
{
    unsigned tries;
    std::chrono::milliseconds perTry;
};

// Takes the acknowledge of the camera at `address`; true when that settles the question to this address.
using AnswerHandler = std::function<bool(size_t socket, uint32_t address, const gvcp::AckPacket& ack)>;

// Sends every question that is not answered yet, once per try, and returns when all are or the last try is
// over. A question to a broadcast address never counts as answered.
void askAll(std::vector<UdpSocket>& sockets, std::vector<Question>& questions, Patience patience,
            const AnswerHandler& take);

} // namespace kx
