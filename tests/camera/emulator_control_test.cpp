// Who controls an emulated camera, and for how long.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Bootstrap.h"
#include "camera_emulator/Responder.h"

#include <random>

using namespace gvcp;
using std::chrono::milliseconds;

using EmulatorControl = EmulatorFixture;

TEST_F(EmulatorControl, writingNeedsControl)
{
    EXPECT_EQ(host.write({{0x20000, 1}}).status, AccessDenied);
    EXPECT_EQ(host.writeMemory(0x20000, {0, 0, 0, 1}).status, AccessDenied);
    EXPECT_EQ(host.write({{RegControlPrivilege, kPrivilegeControl}}).status, Success);
    EXPECT_EQ(host.write({{0x20000, 1}}).status, Success);
    EXPECT_EQ(camera.peekWord(0x20000), 1u);
}

TEST_F(EmulatorControl, theHolderIsNamed)
{
    ASSERT_TRUE(host.takeControl());
    EXPECT_TRUE(camera.isControlled());
    EXPECT_EQ(readWord(RegControlPrivilege), kPrivilegeControl);
    EXPECT_EQ(readWord(RegPrimaryPort), host.port());
    EXPECT_EQ(formatAddress(readWord(RegPrimaryAddress)).substr(0, 4), "127.");
    EXPECT_EQ(host.write({{RegControlPrivilege, 0}}).status, Success);
    EXPECT_FALSE(camera.isControlled());
    EXPECT_EQ(readWord(RegPrimaryPort), 0u);
    EXPECT_EQ(readWord(RegPrimaryAddress), 0u);
}

TEST_F(EmulatorControl, underControlOthersReadAndDoNotWrite)
{
    ASSERT_TRUE(host.takeControl());
    EXPECT_EQ(other.read({RegControlPrivilege}).payload, (Bytes{0, 0, 0, 2}));
    EXPECT_EQ(other.readMemory(RegModel, 32).status, Success);
    EXPECT_EQ(other.write({{0x20000, 1}}).status, AccessDenied);
    EXPECT_EQ(other.write({{RegControlPrivilege, kPrivilegeControl}}).status, AccessDenied);
    EXPECT_EQ(other.write({{RegControlPrivilege, 0}}).status, AccessDenied);
    EXPECT_EQ(host.write({{0x20000, 1}}).status, Success) << "the holder still writes";
}

TEST_F(EmulatorControl, exclusiveAccessKeepsOthersFromReading)
{
    ASSERT_TRUE(host.takeControl(kPrivilegeExclusive));
    EXPECT_EQ(other.read({RegControlPrivilege}).status, AccessDenied);
    EXPECT_EQ(other.readMemory(RegModel, 32).status, AccessDenied);
    EXPECT_EQ(other.write({{RegControlPrivilege, kPrivilegeExclusive}}).status, AccessDenied);
    EXPECT_EQ(other.ask(encodeDiscovery(1)).status, Success);
    EXPECT_EQ(readWord(RegControlPrivilege), kPrivilegeExclusive);
    EXPECT_EQ(host.write({{RegControlPrivilege, kPrivilegeControl}}).status, Success)
        << "the holder steps down";
    EXPECT_EQ(other.readMemory(RegModel, 32).status, Success);
}

TEST_F(EmulatorControl, controlPassesOnAfterItIsGivenBack)
{
    ASSERT_TRUE(host.takeControl(kPrivilegeExclusive));
    EXPECT_FALSE(other.takeControl());
    EXPECT_EQ(host.write({{RegControlPrivilege, 0}}).status, Success);
    EXPECT_TRUE(other.takeControl());
    EXPECT_EQ(host.write({{0x20000, 1}}).status, AccessDenied);
}

TEST_F(EmulatorControl, aSilentHolderLosesControl)
{
    ASSERT_EQ(host.write({{RegControlPrivilege, kPrivilegeExclusive}}).status, Success);
    ASSERT_EQ(host.write({{RegHeartbeatTimeout, 30}}).status, Success);
    EXPECT_TRUE(
        camera.waitFor([](const emu::Counters& counters) { return counters.heartbeatsExpired == 1; }));
    EXPECT_FALSE(camera.isControlled());
    EXPECT_EQ(host.write({{0x20000, 1}}).status, AccessDenied);
    EXPECT_TRUE(other.takeControl());
}

TEST_F(EmulatorControl, stolenControlStaysStolen)
{
    ASSERT_TRUE(host.takeControl());
    camera.stealControl();
    EXPECT_EQ(host.write({{0x20000, 1}}).status, AccessDenied);
    EXPECT_EQ(host.write({{RegControlPrivilege, kPrivilegeControl}}).status, AccessDenied);
    EXPECT_EQ(readWord(RegControlPrivilege), kPrivilegeControl);
    EXPECT_NE(readWord(RegPrimaryPort), host.port());
    camera.stealControl(true);
    EXPECT_EQ(host.read({RegControlPrivilege}).status, AccessDenied);
    camera.releaseControl();
    EXPECT_TRUE(host.takeControl());
}

TEST(EmulatorDiscovery, answersEverybodyWhereTheAskerIsOfAnotherNetworkAndLikesIt)
{
    emu::Responder responder;
    emu::writeBootstrap({}, 0x7F000001, 0xFF000000, responder.memory);
    const auto isForEverybody = [&](const Bytes& packet, uint32_t asker) {
        const auto replies = responder.handle(packet.data(), packet.size(), {asker, 1}, {});
        EXPECT_EQ(replies.size(), 1u);
        return replies.at(0).isForEverybody;
    };
    EXPECT_TRUE(isForEverybody(encodeDiscovery(1, true), 0x0A000001));
    EXPECT_FALSE(isForEverybody(encodeDiscovery(1, true), 0x7F010101));
    EXPECT_FALSE(isForEverybody(encodeDiscovery(1), 0x0A000001));
    EXPECT_FALSE(isForEverybody(encodeReadRegisters(1, {0}), 0x0A000001));
    responder.answersEverybody = false;
    EXPECT_FALSE(isForEverybody(encodeDiscovery(1, true), 0x0A000001));
}

// Well-headed packets of random commands and contents: every answer has the shape of one, and the read-only
// registers stay as they were.
TEST(EmulatorNoise, leavesTheCameraWhole)
{
    emu::Responder responder;
    responder.readOnly = emu::readOnlyBootstrap();
    emu::writeBootstrap({}, 0x7F000001, 0xFF000000, responder.memory);
    const Bytes before = responder.memory.read(RegManufacturer, RegUserName - RegManufacturer);
    std::mt19937 random(20240607);
    const emu::Clock::time_point now;
    size_t answered = 0;
    for (int i = 0; i < 20000; ++i) {
        Bytes packet(kHeaderSize + random() % 40);
        for (uint8_t& byte : packet)
            byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0);
        packet[0] = kKey;
        packet[1] = kFlagAckRequired;
        put16(&packet[2], static_cast<uint16_t>(ReadRegCmd + random() % 8));
        put16(&packet[4], static_cast<uint16_t>(packet.size() - kHeaderSize));
        put16(&packet[6], 1);
        for (const emu::Reply& reply : responder.handle(packet.data(), packet.size(), {1, 1}, now)) {
            const auto ack = decodeAck(reply.bytes.data(), reply.bytes.size());
            ASSERT_TRUE(ack);
            EXPECT_EQ(ack->payload.size() + kHeaderSize, reply.bytes.size());
            EXPECT_EQ(ack->id, 1);
            ++answered;
        }
    }
    EXPECT_EQ(answered, 20000u);
    EXPECT_EQ(responder.memory.read(RegManufacturer, RegUserName - RegManufacturer), before);
}

// The same rules against a clock that the test turns.
class Heartbeat : public testing::Test
{
protected:
    Heartbeat() { emu::writeBootstrap({}, 0x7F000001, 0xFF000000, responder.memory); }

    uint16_t send(const Bytes& packet, emu::Peer peer = {1, 1})
    {
        const auto replies = responder.handle(packet.data(), packet.size(), peer, now);
        return replies.empty() ? uint16_t(0xFFFF)
                               : decodeAck(replies.back().bytes.data(), replies.back().bytes.size())->status;
    }
    uint32_t privilege() { return responder.memory.readWord(RegControlPrivilege); }

    const Bytes take = encodeWriteRegisters(1, {{RegControlPrivilege, kPrivilegeControl}});
    const Bytes read = encodeReadRegisters(2, {RegVersion});
    emu::Responder responder;
    emu::Clock::time_point now;
};

TEST_F(Heartbeat, anyCommandOfTheHolderRenewsIt)
{
    ASSERT_EQ(send(take), Success);
    for (const Bytes& sign : {read, encodeReadMemory(3, 0, 4), take, encodeReadRegisters(4, {1})}) {
        now += milliseconds(3000);
        send(sign);
        EXPECT_EQ(privilege(), kPrivilegeControl);
    }
    now += milliseconds(3001);
    send(read);
    EXPECT_EQ(privilege(), 0u);
    EXPECT_EQ(responder.counters.heartbeatsExpired, 1u);
}

TEST_F(Heartbeat, commandsOfOthersDoNotRenewIt)
{
    ASSERT_EQ(send(take), Success);
    now += milliseconds(2000);
    EXPECT_EQ(send(read, {1, 2}), Success);
    now += milliseconds(1001);
    EXPECT_EQ(send(take, {1, 2}), Success) << "the first holder's time is over";
}

TEST_F(Heartbeat, canBeSwitchedOff)
{
    ASSERT_EQ(send(take), Success);
    ASSERT_EQ(send(encodeWriteRegisters(2, {{RegGvcpConfiguration, kConfigurationHeartbeatDisable}})),
              Success);
    now += std::chrono::hours(1);
    EXPECT_EQ(send(take, {1, 2}), AccessDenied);
}

TEST_F(Heartbeat, anotherPortOfTheSameHostIsAnotherHost)
{
    ASSERT_EQ(send(take, {1, 1}), Success);
    EXPECT_EQ(send(take, {1, 2}), AccessDenied);
    EXPECT_EQ(send(take, {2, 1}), AccessDenied);
}
