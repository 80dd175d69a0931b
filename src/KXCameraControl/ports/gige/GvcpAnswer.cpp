#include "KXCameraControl/ports/gige/GvcpAnswer.h"

#include "KXCameraControl/ports/Refusal.h"

namespace kx
{

using namespace gvcp;

PayloadCheck holdsBytes(size_t size)
{
    return [size](const Bytes& payload) { return payload.size() == size; };
}

PayloadCheck holdsMemory(uint32_t address, size_t size)
{
    return
        [=](const Bytes& payload) { return payload.size() == 4 + size && get32(payload.data()) == address; };
}

GvcpVerdict judgeAnswer(const Bytes& command, const PayloadCheck& isWellFormed, const Bytes& datagram)
{
    using Kind = GvcpVerdict::Kind;
    auto ack = decodeAck(datagram.data(), datagram.size());
    if (!ack)
        return {Kind::Malformed};
    if (ack->id != get16(&command[6]))
        return {Kind::Stray};
    if (ack->command == PendingAck) {
        if (const auto time = parsePendingAck(ack->payload))
            return {Kind::Pending, {}, std::chrono::milliseconds(*time)};
    } else if (ack->status != Success) {
        return {Kind::Answer, {statusOfRefusal(ack->status), ack->status, {}, refusalText(ack->status)}};
    } else if (ack->command == get16(&command[2]) + 1 && isWellFormed(ack->payload)) {
        return {Kind::Answer, {KX_OK, Success, std::move(ack->payload), {}}};
    }
    return {Kind::Malformed};
}

} // namespace kx
