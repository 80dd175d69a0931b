// Answers of a GigE Vision camera to the host: to each command, and to those who look for cameras.
#include "KXCameraControl/ports/gige/DiscoveryAnswers.h"
#include "KXCameraControl/ports/gige/GvcpAnswer.h"
#include "fuzz/Fuzz.h"

namespace
{

using Kind = kx::GvcpVerdict::Kind;

void judgeCommand(const gvcp::Bytes& command, const kx::PayloadCheck& isWellFormed, size_t size,
                  const gvcp::Bytes& datagram)
{
    const kx::GvcpVerdict verdict = kx::judgeAnswer(command, isWellFormed, datagram);
    if (verdict.kind == Kind::Answer)
        fuzz::promise(verdict.answer.status == KX_OK
                          ? verdict.answer.payload.size() == size
                          : verdict.answer.refusal != 0 && !verdict.answer.text.empty(),
                      "an answer is of the size that was asked for, or a refusal that says why");
    if (verdict.kind == Kind::Pending)
        fuzz::promise(verdict.time <= std::chrono::milliseconds(65535), "a camera asks for bounded time");
}

void judgeSearch(const gvcp::Bytes& datagram)
{
    const auto ack = gvcp::decodeAck(datagram.data(), datagram.size());
    if (!ack)
        return;
    fuzz::promise(ack->payload.size() <= datagram.size(), "a payload lies in its packet");
    kx::availabilityFrom(*ack);
    kx::shownValue(*ack, ack->id);
    const auto entry =
        kx::entryFrom(*ack, ack->id, 0x7F000001, {std::string(300, 'e'), 0x7F000002, 0xFF000000});
    if (!entry)
        return;
    fuzz::promise(std::memchr(entry->interfaceName, 0, sizeof entry->interfaceName), "a place's name ends");
    fuzz::promise(entry->info.special.gige.modelName[31] == 0, "names keep their zero");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const gvcp::Bytes datagram(data, data + size);
    const uint16_t id = 0x4142;
    const uint8_t bytes[8] = {};
    judgeCommand(gvcp::encodeReadRegisters(id, {0x100, 0x104}), kx::holdsBytes(8), 8, datagram);
    judgeCommand(gvcp::encodeReadMemory(id, 0x200, 16), kx::holdsMemory(0x200, 16), 20, datagram);
    judgeCommand(gvcp::encodeWriteMemory(id, 0x200, bytes, sizeof bytes), kx::holdsBytes(4), 4, datagram);
    judgeCommand(gvcp::encodeWriteRegisters(id, {{0x100, 1}}), kx::holdsBytes(4), 4, datagram);
    judgeSearch(datagram);
    return 0;
}
