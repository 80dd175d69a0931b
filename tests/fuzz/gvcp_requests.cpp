// Requests to an emulated GigE Vision camera: several packets, each behind its length, from two hosts.
#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/Responder.h"
#include "fuzz/Fuzz.h"

namespace
{

emu::Responder newCamera()
{
    emu::Responder camera;
    emu::CameraConfig config;
    config.mac = "02:00:00:00:00:01";
    emu::writeBootstrap(config, 0x7F000001, 0xFF000000, camera.memory);
    camera.readOnly.add(emu::readOnlyBootstrap());
    return camera;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const emu::Responder fresh = newCamera();
    emu::Responder camera = fresh;
    fuzz::Input input(data, size);
    emu::Clock::time_point now{};
    while (!input.isAtEnd()) {
        const uint8_t head = input.byte();
        const std::vector<uint8_t> packet = input.bytes(input.byte() * (head & 0x40 ? 4u : 1u));
        now += std::chrono::milliseconds(head & 0x3F) * 100;
        const emu::Peer peer{0x7F000002, static_cast<uint16_t>(head & 0x80 ? 1000 : 2000)};
        camera.expireControl(now);
        const auto replies = camera.handle(packet.data(), packet.size(), peer, now);
        for (const emu::Reply& reply : replies) {
            fuzz::promise(reply.bytes.size() <= gvcp::kMaxPacket, "an answer fits a packet");
            fuzz::promise(gvcp::decodeAck(reply.bytes.data(), reply.bytes.size()).has_value(),
                          "an answer is one");
        }
        fuzz::promise(replies.size() <= 2, "a request has one answer, and one PENDING_ACK before it");
    }
    return 0;
}
