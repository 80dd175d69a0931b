// What an emulated camera does wrong when it is told to.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Bootstrap.h"

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
