// Answers of a camera that speaks GenCP to the host's port: opening, names, where its description lies,
// reading and writing. The line hands out the input, packet by packet; half of them get the id that is waited
// for.
#include "KXCameraControl/ports/gencp/GenCpPort.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

namespace
{

class Line : public kx::GenCpLink
{
public:
    Line(fuzz::Input& input, gencp::ByteOrder order) : m_input(input), m_order(order) {}

    KX_Status open() override
    {
        m_isOpen = true;
        return KX_OK;
    }
    void close() override { m_isOpen = false; }
    bool isOpen() const override { return m_isOpen; }
    gencp::ByteOrder byteOrder() const override { return m_order; }
    size_t prefixSize() const override { return 4; }
    Outcome send(const gencp::Bytes& packet, Clock::time_point) override
    {
        fuzz::promise(gencp::decodeCommand(packet.data(), packet.size(), m_order).has_value(),
                      "a command is one");
        m_command = packet;
        return Outcome::Done;
    }
    Outcome receive(gencp::Bytes& packet, Clock::time_point) override
    {
        if (m_input.isAtEnd())
            return Outcome::Gone;
        const uint8_t head = m_input.byte();
        if (head < 8)
            return static_cast<Outcome>(head % 4 == 3 ? 1 : head % 4);
        packet = head & 0x80 ? answer(m_input.byte()) : m_input.bytes(m_input.byte());
        return Outcome::Done;
    }
    std::string name() const override { return "the camera"; }
    std::string errorText() const override { return "no line"; }

private:
    // One that looks right: of the command in hand, with a content of `size`.
    gencp::Bytes answer(size_t size)
    {
        const auto command = gencp::decodeCommand(m_command.data(), m_command.size(), m_order);
        gencp::AckPacket ack;
        ack.command = static_cast<uint16_t>(command->command + 1);
        ack.id = command->id;
        if (const auto range = gencp::parseReadMemory(command->scd, m_order); range && size % 8 != 0)
            size = range->count;
        ack.scd = m_input.bytes(size);
        ack.scd.resize(size);
        return gencp::encodeAck(ack, m_order);
    }

    fuzz::Input& m_input;
    const gencp::ByteOrder m_order;
    gencp::Bytes m_command;
    bool m_isOpen = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Input input(data, size);
    const auto order = input.byte() % 2 ? gencp::ByteOrder::Big : gencp::ByteOrder::Little;
    kx::GenCpPort port(std::make_unique<Line>(input, order), input.byte() % 4 ? "" : "S1");
    port.setTimeouts({std::chrono::milliseconds(0), 2, std::chrono::milliseconds(1)});
    if (port.open(KX_ACCESS_EXCLUSIVE, 0) != KX_OK) {
        fuzz::promise(!port.lastError().empty(), "a failure says why");
        return 0;
    }
    std::vector<std::string> urls;
    port.descriptionUrls(urls);
    fuzz::promise(urls.size() <= 64, "a manifest is bounded");
    uint8_t bytes[300];
    port.readMemory(0x1000, bytes, sizeof bytes);
    port.writeMemory(0x1000, bytes, sizeof bytes);
    port.close();
    return 0;
}
