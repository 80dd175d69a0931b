// Requests to an emulated camera that speaks GenCP, in both byte orders, and bytes on its serial line.
#include "camera_emulator/GenCpResponder.h"
#include "fuzz/Fuzz.h"
#include "gencp/SerialFrame.h"

namespace
{

void handleAll(gencp::ByteOrder order, fuzz::Input input)
{
    emu::GenCpResponder camera(order);
    emu::CameraConfig config;
    emu::writeGenCpBootstrap(config, "<RegisterDescription/>", camera);
    while (!input.isAtEnd()) {
        const std::vector<uint8_t> packet = input.bytes(input.byte());
        const auto replies = camera.handle(packet, {});
        for (const emu::Reply& reply : replies)
            fuzz::promise(gencp::decodeAck(reply.bytes.data(), reply.bytes.size(), order).has_value(),
                          "an answer is one");
        fuzz::promise(replies.size() <= 2, "a request has one answer, and one PENDING_ACK before it");
    }
}

void readFrames(fuzz::Input input)
{
    gencp::SerialFrames frames(256);
    while (!input.isAtEnd()) {
        const std::vector<uint8_t> piece = input.bytes(1 + input.byte() % 64u);
        frames.add(piece.data(), piece.size());
        while (const auto frame = frames.next())
            fuzz::promise(frame->packet.size() <= 256, "a packet is no longer than it may be");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const fuzz::Input input(data, size);
    handleAll(gencp::ByteOrder::Big, input);
    handleAll(gencp::ByteOrder::Little, input);
    readFrames(input);
    return 0;
}
