// What an emulated camera does wrong when it is told to.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/Responder.h"

#include <array>

using namespace gvcp;
using std::chrono::milliseconds;

namespace
{

// Long enough for an answer that should not come; one that should is waited for longer.
constexpr milliseconds kNoAnswer{60};

class EmulatorFaults : public EmulatorFixture
{
protected:
    Bytes aRead() { return encodeReadRegisters(host.nextId(), {RegVersion}); }
    Bytes aDiscovery() { return encodeDiscovery(host.nextId()); }

    bool answers(const Bytes& packet)
    {
        host.send(packet);
        return host.receive().has_value();
    }
    bool staysSilent(const Bytes& packet)
    {
        host.send(packet);
        return !host.receive(kNoAnswer).has_value();
    }
};

} // namespace

TEST_F(EmulatorFaults, everyNthRequestIsLost)
{
    emu::Faults faults;
    faults.loseRequests = 3;
    camera.setFaults(faults);
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(answers(aRead()));
        EXPECT_TRUE(answers(aRead()));
        EXPECT_TRUE(staysSilent(aRead()));
    }
    EXPECT_EQ(camera.counters().readReg, 4u) << "what is lost was never asked";
    EXPECT_EQ(camera.counters().lost, 2u);
    camera.setFaults({});
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(answers(aRead()));
}

TEST_F(EmulatorFaults, everyNthAnswerIsLostAfterTheWorkIsDone)
{
    ASSERT_TRUE(host.takeControl());
    emu::Faults faults;
    faults.loseAnswers = 2;
    camera.setFaults(faults);
    EXPECT_TRUE(answers(encodeWriteRegisters(host.nextId(), {{0x20000, 1}})));
    EXPECT_TRUE(staysSilent(encodeWriteRegisters(host.nextId(), {{0x20000, 2}})));
    EXPECT_EQ(camera.peekWord(0x20000), 2u);
    EXPECT_EQ(camera.counters().settingWrites, 2u);
}

TEST_F(EmulatorFaults, answersComeLater)
{
    emu::Faults faults;
    faults.delay = milliseconds(80);
    camera.setFaults(faults);
    const auto begin = std::chrono::steady_clock::now();
    // Both wait at the same time: the delay is the line's, not the camera's.
    host.send(encodeReadRegisters(21, {RegVersion}));
    host.send(encodeReadRegisters(22, {RegVersion}));
    EXPECT_FALSE(host.receive(milliseconds(20)));
    EXPECT_EQ(host.receive().value().id, 21);
    EXPECT_EQ(host.receive().value().id, 22);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(80));
}

TEST_F(EmulatorFaults, silenceForEver)
{
    emu::Faults faults;
    faults.silence = emu::Silence{2, std::nullopt};
    camera.setFaults(faults);
    EXPECT_TRUE(answers(aRead()));
    EXPECT_TRUE(answers(aDiscovery())) << "discovery does not count";
    EXPECT_TRUE(answers(aRead()));
    EXPECT_TRUE(staysSilent(aRead()));
    EXPECT_TRUE(staysSilent(aDiscovery()));
    camera.setFaults({});
    EXPECT_TRUE(answers(aRead()));
}

TEST_F(EmulatorFaults, silenceForATime)
{
    emu::Faults faults;
    faults.silence = emu::Silence{0, milliseconds(150)};
    camera.setFaults(faults);
    EXPECT_TRUE(staysSilent(aRead()));
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    bool back = false;
    while (!back && std::chrono::steady_clock::now() < end)
        back = !staysSilent(aRead());
    EXPECT_TRUE(back);
    EXPECT_TRUE(answers(aRead())) << "and stays back";
}

TEST_F(EmulatorFaults, discoveryOnly)
{
    emu::Faults faults;
    faults.discoveryOnly = true;
    camera.setFaults(faults);
    EXPECT_TRUE(answers(aDiscovery()));
    EXPECT_TRUE(staysSilent(aRead()));
    EXPECT_TRUE(staysSilent(encodeReadMemory(host.nextId(), 0, 4)));
    EXPECT_TRUE(answers(aDiscovery()));
}

TEST_F(EmulatorFaults, oneAddressIsRefused)
{
    ASSERT_TRUE(host.takeControl());
    emu::Faults faults;
    faults.refusals = {{0x20010, 8, InvalidAddress}, {0x20020, 4, Busy}};
    camera.setFaults(faults);
    EXPECT_EQ(host.read({0x2000C}).status, Success);
    EXPECT_EQ(host.read({0x20010}).status, InvalidAddress);
    EXPECT_EQ(host.read({0x20014}).status, InvalidAddress);
    EXPECT_EQ(host.read({0x20018}).status, Success);
    EXPECT_EQ(host.write({{0x20020, 1}}).status, Busy);
    EXPECT_EQ(host.readMemory(0x20000, 16).status, Success);
    EXPECT_EQ(host.readMemory(0x20000, 20).status, InvalidAddress);
    EXPECT_EQ(host.writeMemory(0x20014, Bytes(4)).status, InvalidAddress);
    EXPECT_EQ(camera.peekWord(0x20020), 0u);
}

TEST_F(EmulatorFaults, busyForAFewCommands)
{
    emu::Faults faults;
    faults.busy = 2;
    camera.setFaults(faults);
    EXPECT_EQ(host.ask(encodeDiscovery(1)).status, Success);
    EXPECT_EQ(host.read({RegVersion}).status, Busy);
    EXPECT_EQ(camera.faults().busy, 1u);
    const auto ack = host.readMemory(0, 4);
    EXPECT_EQ(ack.status, Busy);
    EXPECT_EQ(ack.command, ReadMemAck);
    EXPECT_EQ(host.read({RegVersion}).status, Success);
}

TEST_F(EmulatorFaults, busyForEver)
{
    emu::Faults faults;
    faults.busy = emu::kAlways;
    camera.setFaults(faults);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(host.read({RegVersion}).status, Busy);
}

TEST_F(EmulatorFaults, pendingAcknowledgeComesBeforeTheAnswer)
{
    emu::Faults faults;
    faults.pending = 1;
    faults.pendingTime = milliseconds(70);
    camera.setFaults(faults);
    const auto begin = std::chrono::steady_clock::now();
    host.send(encodeReadRegisters(31, {RegVersion}));
    const auto pending = host.receive();
    ASSERT_TRUE(pending);
    EXPECT_EQ(pending->command, PendingAck);
    EXPECT_EQ(pending->status, Success);
    EXPECT_EQ(pending->id, 31);
    EXPECT_EQ(parsePendingAck(pending->payload), 70);
    const auto answer = host.receive();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->command, ReadRegAck);
    EXPECT_EQ(answer->id, 31);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(70));
    EXPECT_EQ(host.read({RegVersion}).command, ReadRegAck) << "once only";
    EXPECT_EQ(camera.counters().pending, 1u);
}

TEST_F(EmulatorFaults, controlIsStolenAfterSomeCommands)
{
    ASSERT_TRUE(host.takeControl());
    emu::Faults faults;
    faults.stealControlAfter = 2;
    camera.setFaults(faults);
    EXPECT_EQ(host.write({{0x20000, 1}}).status, Success);
    EXPECT_EQ(host.write({{0x20000, 2}}).status, Success);
    EXPECT_EQ(host.write({{0x20000, 3}}).status, AccessDenied);
    EXPECT_EQ(camera.peekWord(0x20000), 2u);
    EXPECT_EQ(host.read({0x20000}).status, Success);
}

TEST_F(EmulatorFaults, severalRegistersPerPacketAreRefusedThoughAnnounced)
{
    ASSERT_TRUE(host.takeControl());
    emu::Faults faults;
    faults.refuseConcatenation = true;
    camera.setFaults(faults);
    EXPECT_EQ(readWord(RegCapabilities) & kCapabilityConcatenation, kCapabilityConcatenation);
    EXPECT_EQ(host.read({0, 4}).status, InvalidParameter);
    EXPECT_EQ(host.write({{0x20000, 1}, {0x20004, 1}}).status, InvalidParameter);
    EXPECT_EQ(host.write({{0x20000, 1}}).status, Success);
}

TEST(EmulatorConfiguration, aCameraWithoutConcatenationSaysSo)
{
    emu::CameraConfig config = freshConfig();
    config.concatenation = false;
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    GvcpClient host(config.address);
    EXPECT_EQ(get32(host.read({RegCapabilities}).payload.data()) & kCapabilityConcatenation, 0u);
    EXPECT_EQ(host.read({0, 4}).status, InvalidParameter);
}

TEST(EmulatorConfiguration, theDescriptionCanEndEarly)
{
    emu::CameraConfig config = freshConfig();
    config.descriptionLimit = 1000;
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    GvcpClient host(config.address);
    const Bytes url = host.fetch(RegFirstUrl, 512);
    EXPECT_STREQ(reinterpret_cast<const char*>(url.data()),
                 "Local:camera_emulator.xml;C8000000;3E8?SchemaVersion=1.1.0");
    const Bytes served = host.fetch(emu::kDescriptionAddress, 1004);
    EXPECT_EQ(std::string(served.begin(), served.end()),
              camera.description().substr(0, 1000) + std::string(4, '\0'));
}

TEST(EmulatorConfiguration, everyAnswerTakesTheTransportsLatency)
{
    emu::CameraConfig config = freshConfig();
    config.latency = milliseconds(40);
    emu::EmulatedCamera camera(config);
    ASSERT_TRUE(camera.start());
    GvcpClient host(config.address);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(host.read({RegVersion}).status, Success);
    EXPECT_EQ(host.read({RegVersion}).status, Success);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(80));
}

namespace
{

// Three writes by a host that has control, of which something befalls the second.
class Accident : public testing::Test
{
protected:
    using Replies = std::vector<emu::Reply>;

    Accident() { handle(encodeWriteRegisters(1, {{RegControlPrivilege, kPrivilegeControl}})); }

    void write(emu::Mishap mishap)
    {
        emu::Faults faults;
        faults.accident = emu::Accident{mishap, 2, milliseconds(300)};
        responder.gate.set(faults);
        for (uint16_t i = 0; i < 3; ++i)
            replies[i] =
                handle(encodeWriteRegisters(static_cast<uint16_t>(10 + i), {{0x20000u + 4u * i, 7}}));
    }

    Replies handle(const Bytes& packet)
    {
        return responder.handle(packet.data(), packet.size(), {0x7F000001, 5000}, now);
    }
    bool isWritten(uint32_t which) const { return responder.memory.readWord(0x20000 + 4 * which) == 7; }
    // The answer to the write, when there is the one.
    std::optional<AckPacket> ackOf(uint16_t which) const
    {
        const Replies& all = replies[which];
        return all.size() == 1 ? decodeAck(all[0].bytes.data(), all[0].bytes.size()) : std::nullopt;
    }
    void expectGood(uint16_t which) const
    {
        const auto ack = ackOf(which);
        ASSERT_TRUE(ack);
        EXPECT_EQ(ack->status, Success);
        EXPECT_EQ(ack->id, 10 + which);
        EXPECT_TRUE(isWritten(which));
    }

    const emu::Clock::time_point now = emu::Clock::now();
    emu::Responder responder;
    std::array<Replies, 3> replies;
};

} // namespace

TEST_F(Accident, BefallsOneRequestOnly)
{
    for (const emu::Mishap mishap : emu::kMishaps) {
        if (mishap == emu::Mishap::PendingForEver || mishap == emu::Mishap::DeafFromThenOn)
            continue;
        SCOPED_TRACE(int(mishap));
        for (uint32_t i = 0; i < 3; ++i)
            responder.memory.writeWord(0x20000 + 4 * i, 0);
        write(mishap);
        expectGood(0);
        expectGood(2);
        const bool isDone = mishap != emu::Mishap::RequestLost && mishap != emu::Mishap::Refused &&
                            mishap != emu::Mishap::Busy;
        EXPECT_EQ(isWritten(1), isDone);
    }
}

TEST_F(Accident, LosesTheRequestOrTheAnswer)
{
    for (const emu::Mishap mishap : {emu::Mishap::RequestLost, emu::Mishap::AnswerLost}) {
        write(mishap);
        EXPECT_TRUE(replies[1].empty());
    }
}

TEST_F(Accident, RepeatsOrDelaysTheAnswer)
{
    write(emu::Mishap::AnswerTwice);
    ASSERT_EQ(replies[1].size(), 2u);
    EXPECT_EQ(replies[1][0].bytes, replies[1][1].bytes);
    write(emu::Mishap::AnswerLate);
    ASSERT_TRUE(ackOf(1));
    EXPECT_EQ(replies[1][0].due, now + milliseconds(300));
}

TEST_F(Accident, SpoilsTheAnswer)
{
    write(emu::Mishap::AnswerWithOtherId);
    ASSERT_TRUE(ackOf(1));
    EXPECT_NE(ackOf(1)->id, 11);
    write(emu::Mishap::AnswerShort);
    ASSERT_TRUE(ackOf(1));
    EXPECT_EQ(ackOf(1)->payload.size(), 0u);
    write(emu::Mishap::AnswerLong);
    ASSERT_TRUE(ackOf(1));
    EXPECT_EQ(ackOf(1)->payload.size(), 8u);
    write(emu::Mishap::AnswerGarbage);
    ASSERT_EQ(replies[1].size(), 1u);
    EXPECT_FALSE(ackOf(1) && ackOf(1)->id == 11);
}

TEST_F(Accident, RefusesTheRequest)
{
    write(emu::Mishap::Refused);
    ASSERT_TRUE(ackOf(1));
    EXPECT_EQ(ackOf(1)->status, GenericError);
    write(emu::Mishap::Busy);
    ASSERT_TRUE(ackOf(1));
    EXPECT_EQ(ackOf(1)->status, Busy);
}

TEST_F(Accident, KeepsPendingFromThenOn)
{
    write(emu::Mishap::PendingForEver);
    expectGood(0);
    for (const uint16_t which : {1, 2}) {
        ASSERT_TRUE(ackOf(which));
        EXPECT_EQ(ackOf(which)->command, PendingAck);
    }
}

TEST_F(Accident, KeepsDoingAndSaysNothingFromThenOn)
{
    write(emu::Mishap::DeafFromThenOn);
    expectGood(0);
    for (const uint16_t which : {1, 2}) {
        EXPECT_TRUE(replies[which].empty());
        EXPECT_TRUE(isWritten(which));
    }
}
