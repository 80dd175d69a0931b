// The line to a camera, against an emulated one.
#include "KXCameraControl/ports/gige/GvcpPort.h"
#include "camera/GvcpClient.h"
#include "camera_emulator/EmulatedCamera.h"
#include "support/LoopbackAddress.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

using namespace gvcp;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace
{

emu::CameraConfig freshConfig()
{
    emu::CameraConfig config;
    config.address = tests::freshLoopbackAddress();
    config.serial = "SN-1";
    return config;
}

KX_GigEDeviceInfo deviceAt(const std::string& address)
{
    KX_GigEDeviceInfo device{};
    device.ipAddress = *parseAddress(address);
    return device;
}

class GvcpPortOnEmulator : public testing::Test
{
protected:
    GvcpPortOnEmulator() : camera(freshConfig()), port(deviceAt(camera.config().address))
    {
        const auto started = camera.start();
        EXPECT_TRUE(started) << started.message;
        port.setConnectionLostHandler([this](KX_Status status) {
            ++losses;
            lost.set_value(status);
        });
    }

    // How the connection was lost; KX_OK when it was not within five seconds.
    KX_Status waitForLoss()
    {
        auto reason = lost.get_future();
        return reason.wait_for(std::chrono::seconds(5)) == std::future_status::ready ? reason.get() : KX_OK;
    }

    emu::EmulatedCamera camera;
    std::atomic<int> losses{0};
    std::promise<KX_Status> lost;
    kx::GvcpPort port; // goes first: its thread uses what stands above
};

} // namespace

TEST_F(GvcpPortOnEmulator, exclusiveControlIsTakenAndGivenBack)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port.lastError();
    EXPECT_EQ(camera.peekWord(RegControlPrivilege), kPrivilegeExclusive);
    EXPECT_EQ(GvcpClient(camera.config().address).read({RegVersion}).status, AccessDenied);
    port.close();
    EXPECT_FALSE(port.isOpen());
    EXPECT_EQ(camera.peekWord(RegControlPrivilege), 0u);
    port.close();
}

TEST_F(GvcpPortOnEmulator, controlLetsOthersRead)
{
    ASSERT_EQ(port.open(KX_ACCESS_CONTROL, 0), KX_OK) << port.lastError();
    EXPECT_EQ(camera.peekWord(RegControlPrivilege), kPrivilegeControl);
    EXPECT_EQ(GvcpClient(camera.config().address).read({RegVersion}).status, Success);
}

TEST_F(GvcpPortOnEmulator, monitorReadsBesideAnotherHostsControlAndWritesNothing)
{
    camera.stealControl();
    ASSERT_EQ(port.open(KX_ACCESS_MONITOR, 0), KX_OK) << port.lastError();
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(RegDeviceMode, value), KX_OK);
    EXPECT_EQ(value, 0x80000001u);
    const uint64_t requests = port.requestCount();
    const uint8_t bytes[4] = {};
    EXPECT_EQ(port.writeRegister(0x20000, 1), KX_E_GC_ACCESS);
    EXPECT_EQ(port.writeMemory(0x20000, bytes, 4), KX_E_GC_ACCESS);
    EXPECT_EQ(port.requestCount(), requests);
    port.close();
    EXPECT_TRUE(camera.isControlled()) << "the other host's control is not ours to give back";
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

TEST_F(GvcpPortOnEmulator, controlOfAnotherHostIsRefused)
{
    camera.stealControl();
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(port.open(KX_ACCESS_CONTROL, 0), KX_E_CONTROL_REFUSED);
    EXPECT_FALSE(port.isOpen());
    EXPECT_NE(port.lastError().find("access denied (0x8006)"), std::string::npos) << port.lastError();
    camera.stealControl(true);
    EXPECT_EQ(port.open(KX_ACCESS_MONITOR, 0), KX_E_CONTROL_REFUSED) << "exclusive control forbids reading";
    camera.releaseControl();
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
}

TEST_F(GvcpPortOnEmulator, nobodyThereIsNoDevice)
{
    camera.stop();
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_FALSE(port.isOpen());
}

TEST_F(GvcpPortOnEmulator, discoveryAloneIsNoAnswer)
{
    emu::Faults faults;
    faults.discoveryOnly = true;
    camera.setFaults(faults);
    port.setTimeouts({milliseconds(20), 2});
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_ANSWER);
    EXPECT_FALSE(port.isOpen());
}

TEST_F(GvcpPortOnEmulator, memoryIsReadInPiecesAndCutForTheCaller)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    Bytes content(2 * kMaxReadMemory + 8);
    for (size_t i = 0; i < content.size(); ++i)
        content[i] = static_cast<uint8_t>(i * 31 + 7);
    camera.poke(0x30000, content);
    camera.resetCounters();
    Bytes data(2 * kMaxReadMemory + 5, 0xEE);
    EXPECT_EQ(port.readMemory(0x30000, data.data(), data.size() - 2), KX_OK);
    EXPECT_EQ(Bytes(data.begin(), data.end() - 2),
              Bytes(content.begin(), content.begin() + 2 * kMaxReadMemory + 3));
    EXPECT_EQ(data.back(), 0xEE) << "nothing is written behind the caller's bytes";
    EXPECT_EQ(camera.counters().readMem, 3u);
    EXPECT_EQ(camera.counters().bytesRead, 2 * kMaxReadMemory + 4) << "rounded up for the wire";
}

TEST_F(GvcpPortOnEmulator, oddLengthsDoNotOverwriteNeighbours)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    camera.poke(0x30000, Bytes(kMaxReadMemory + 8, 0x55));
    Bytes data(kMaxReadMemory + 2, 0xAA);
    camera.resetCounters();
    EXPECT_EQ(port.writeMemory(0x30000, data.data(), data.size()), KX_OK);
    data.insert(data.end(), 6, 0x55);
    EXPECT_EQ(camera.peek(0x30000, data.size()), data);
    EXPECT_EQ(camera.counters().writeMem, 2u);
    EXPECT_EQ(camera.counters().readMem, 1u);

    EXPECT_EQ(port.writeMemory(0x30000, "\x01", 1), KX_OK);
    EXPECT_EQ(camera.peek(0x30000, 4), (Bytes{1, 0xAA, 0xAA, 0xAA}));
    EXPECT_EQ(port.writeMemory(0x30000, "abcd", 4), KX_OK);
    EXPECT_EQ(camera.peek(0x30000, 5), (Bytes{'a', 'b', 'c', 'd', 0xAA}));
    EXPECT_EQ(camera.counters().readMem, 2u) << "whole words need no reading";
}

TEST_F(GvcpPortOnEmulator, whatTheProtocolCannotAddressIsNeverSent)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    const uint64_t requests = port.requestCount();
    uint8_t data[8] = {};
    uint32_t value = 0;
    std::vector<uint32_t> values;
    for (uint64_t address : {uint64_t(0x30001), uint64_t(0x30002), uint64_t(0x100000000),
                             uint64_t(0xFFFFFFFC), ~uint64_t(0), ~uint64_t(3)}) {
        EXPECT_EQ(port.readMemory(address, data, 8), KX_E_GC_ACCESS) << address;
        EXPECT_EQ(port.writeMemory(address, data, 8), KX_E_GC_ACCESS) << address;
    }
    EXPECT_EQ(port.readRegister(0x30002, value), KX_E_GC_ACCESS);
    EXPECT_EQ(port.readRegister(0x100000000, value), KX_E_GC_ACCESS);
    EXPECT_EQ(port.writeRegister(0x30002, 1), KX_E_GC_ACCESS);
    EXPECT_EQ(port.readRegisters({0x30000, 0x30003}, values), KX_E_GC_ACCESS);
    EXPECT_EQ(port.readMemory(0x30000, nullptr, 0), KX_OK);
    EXPECT_EQ(port.requestCount(), requests);
    EXPECT_EQ(port.readMemory(0xFFFFFFFC, data, 4), KX_OK) << "the last word is there";
}

TEST_F(GvcpPortOnEmulator, registersGoInHostOrder)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(port.writeRegister(0x30000, 0x01020304), KX_OK);
    EXPECT_EQ(camera.peek(0x30000, 4), (Bytes{1, 2, 3, 4}));
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(0x30000, value), KX_OK);
    EXPECT_EQ(value, 0x01020304u);
    EXPECT_EQ(camera.counters().readMem, 0u);
    EXPECT_EQ(camera.counters().writeMem, 0u);
}

TEST_F(GvcpPortOnEmulator, registersAreReadInBatches)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(port.registersPerRequest(), 133u);
    std::vector<uint32_t> addresses;
    std::vector<uint32_t> expected;
    for (uint32_t i = 0; i < 200; ++i) {
        addresses.push_back(0x30000 + 4 * i);
        expected.push_back(i * 1000003);
        camera.pokeWord(addresses.back(), expected.back());
    }
    std::vector<uint32_t> values;
    camera.resetCounters();
    EXPECT_EQ(port.readRegisters(addresses, values), KX_OK);
    EXPECT_EQ(values, expected);
    EXPECT_EQ(camera.counters().readReg, 2u);
}

// Who asked for the batch finds out what stands in its way.
TEST_F(GvcpPortOnEmulator, aRefusedBatchIsOneRequestAndRefused)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    emu::Faults faults;
    faults.refuseConcatenation = true;
    camera.setFaults(faults);
    std::vector<uint32_t> values{1};
    camera.resetCounters();
    EXPECT_EQ(port.readRegisters({0x30000, 0x30004, 0x30008}, values), KX_E_GC_ACCESS);
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(camera.counters().readReg, 1u);
    EXPECT_EQ(port.readRegisters({0x30000}, values), KX_OK);
}

TEST_F(GvcpPortOnEmulator, aBatchWithOtherValuesThanAskedForIsNoAnswer)
{
    port.setTimeouts({std::chrono::milliseconds(20), 1});
    ASSERT_EQ(port.open(KX_ACCESS_MONITOR, 0), KX_OK);
    emu::Faults faults;
    for (const auto answer :
         {emu::BatchAnswer::TooFew, emu::BatchAnswer::TooMany, emu::BatchAnswer::Reversed}) {
        faults.batchAnswer = answer;
        camera.setFaults(faults);
        std::vector<uint32_t> values{1};
        EXPECT_EQ(port.readRegisters({0x30000, 0x30004}, values), KX_E_MALFORMED_ANSWER);
        EXPECT_TRUE(values.empty());
    }
}

TEST_F(GvcpPortOnEmulator, oneRefusedRegisterFailsItsBatchButNotTheNextOnes)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    emu::Faults faults;
    faults.refusals = {{0x30004, 4, InvalidAddress}};
    camera.setFaults(faults);
    std::vector<uint32_t> values{1, 2, 3};
    EXPECT_EQ(port.readRegisters({0x30000, 0x30004}, values), KX_E_GC_ACCESS);
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(port.registersPerRequest(), 133u) << "the camera does know batches";
    EXPECT_EQ(port.readRegisters({0x30000, 0x30008}, values), KX_OK);
}

TEST_F(GvcpPortOnEmulator, descriptionUrlsComeInOrder)
{
    ASSERT_EQ(port.open(KX_ACCESS_MONITOR, 0), KX_OK);
    std::vector<std::string> urls;
    ASSERT_EQ(port.descriptionUrls(urls), KX_OK);
    ASSERT_EQ(urls.size(), 2u);
    EXPECT_EQ(urls[0].substr(0, 26), "Local:camera_emulator.xml;");
    EXPECT_EQ(urls[1].substr(0, 26), "Local:camera_emulator.zip;");

    camera.poke(RegSecondUrl, Bytes(512));
    ASSERT_EQ(port.descriptionUrls(urls), KX_OK);
    EXPECT_EQ(urls.size(), 1u);
    camera.poke(RegFirstUrl, Bytes(512, 'x'));
    ASSERT_EQ(port.descriptionUrls(urls), KX_OK);
    EXPECT_EQ(urls[0], std::string(512, 'x')) << "a text without its terminating zero ends with the register";
}

TEST_F(GvcpPortOnEmulator, lostPacketsAreSentAgain)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    port.setTimeouts({milliseconds(30), 5});
    emu::Faults faults;
    faults.loseRequests = 3;
    faults.loseAnswers = 4;
    camera.setFaults(faults);
    camera.resetCounters();
    const uint64_t before = port.requestCount();
    for (uint32_t i = 0; i < 30; ++i) {
        uint32_t value = 0;
        ASSERT_EQ(port.writeRegister(0x30000, i), KX_OK) << port.lastError();
        ASSERT_EQ(port.readRegister(0x30000, value), KX_OK) << port.lastError();
        ASSERT_EQ(value, i);
    }
    EXPECT_GT(port.requestCount() - before, 60u) << "repetitions count";
}

TEST_F(GvcpPortOnEmulator, heartbeatKeepsControlOfACameraThatNobodyCalls)
{
    camera.pokeWord(RegHeartbeatTimeout, 600);
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    camera.resetCounters();
    const uint64_t before = port.requestCount();
    const auto start = steady_clock::now();
    ASSERT_TRUE(camera.waitFor([](const emu::Counters& counters) { return counters.writeReg >= 5; }));
    EXPECT_GT(steady_clock::now() - start, milliseconds(900)) << "five beats, 200 ms apart";
    EXPECT_EQ(camera.counters().heartbeatsExpired, 0u);
    EXPECT_EQ(camera.peekWord(RegControlPrivilege), kPrivilegeExclusive);
    EXPECT_GE(port.requestCount() - before, 10u) << "beats count: a read and a write each";
}

TEST_F(GvcpPortOnEmulator, controlTakenByAnotherHostIsNoticed)
{
    camera.pokeWord(RegHeartbeatTimeout, 500);
    ASSERT_EQ(port.open(KX_ACCESS_CONTROL, 0), KX_OK);
    camera.stealControl();
    EXPECT_EQ(waitForLoss(), KX_E_CONNECTION_LOST);
    const uint64_t requests = port.requestCount();
    uint32_t value = 0;
    std::vector<uint32_t> values;
    std::vector<std::string> urls;
    uint8_t byte = 0;
    EXPECT_EQ(port.readRegister(0x30000, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port.writeRegister(0x30000, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port.readMemory(0x30000, &byte, 1), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port.writeMemory(0x30000, &byte, 1), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port.readRegisters({0x30000}, values), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port.descriptionUrls(urls), KX_E_CONNECTION_LOST);
    EXPECT_NE(port.lastError().find("another host has taken control"), std::string::npos) << port.lastError();
    port.close();
    EXPECT_EQ(port.requestCount(), requests) << "nothing is sent any more";
    EXPECT_TRUE(camera.isControlled());
    EXPECT_EQ(losses, 1);
}

TEST_F(GvcpPortOnEmulator, controlThatRanOutIsNotSilentlyTakenBack)
{
    camera.pokeWord(RegHeartbeatTimeout, 500);
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    camera.releaseControl();
    EXPECT_EQ(waitForLoss(), KX_E_CONNECTION_LOST);
    EXPECT_FALSE(camera.isControlled());
    port.close();
    EXPECT_NE(port.open(KX_ACCESS_MONITOR, 0), KX_E_CONNECTION_LOST) << "a new connection is a new one";
}

TEST_F(GvcpPortOnEmulator, aWriteNoticesLostControlBeforeTheHeartbeat)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    camera.stealControl();
    EXPECT_EQ(port.writeRegister(0x30000, 1), KX_E_CONNECTION_LOST);
    const uint64_t requests = port.requestCount();
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(0x30000, value), KX_E_CONNECTION_LOST) << "though the camera would answer";
    EXPECT_EQ(port.requestCount(), requests);
    EXPECT_EQ(waitForLoss(), KX_E_CONNECTION_LOST) << "told on the port's own thread";
    EXPECT_EQ(losses, 1);
}

TEST_F(GvcpPortOnEmulator, aDeniedRegisterIsNoLostControl)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    emu::Faults faults;
    faults.refusals = {{0x30000, 4, AccessDenied}};
    camera.setFaults(faults);
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(0x30000, value), KX_E_GC_ACCESS);
    EXPECT_EQ(port.writeRegister(0x30000, 1), KX_E_GC_ACCESS);
    EXPECT_EQ(port.readRegister(0x30004, value), KX_OK) << "still connected";
    EXPECT_EQ(losses, 0);
}

TEST_F(GvcpPortOnEmulator, aVanishedCameraIsNoticedAndClosedQuickly)
{
    camera.pokeWord(RegHeartbeatTimeout, 500);
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    port.setTimeouts({milliseconds(50), 3});
    emu::Faults faults;
    faults.silence = emu::Silence{};
    camera.setFaults(faults);
    EXPECT_EQ(waitForLoss(), KX_E_NO_ANSWER);
    const uint64_t requests = port.requestCount();
    port.close();
    EXPECT_EQ(port.requestCount(), requests) << "nobody is asked any more";
}

// Or whoever opens it next is refused until the heartbeat time is over.
TEST_F(GvcpPortOnEmulator, aPacketThatIsLostWhenItIsClosedCostsNoControl)
{
    for (const auto mishap : {emu::Mishap::RequestLost, emu::Mishap::AnswerLost}) {
        ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port.lastError();
        emu::Faults faults;
        faults.accident = emu::Accident{mishap, 1, milliseconds(0)};
        camera.setFaults(faults);
        port.close();
        EXPECT_FALSE(camera.isControlled());
    }
}

TEST_F(GvcpPortOnEmulator, closingDoesNotWaitForAHeartbeatThatNobodyAnswers)
{
    camera.pokeWord(RegHeartbeatTimeout, 500);
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    port.setTimeouts({milliseconds(1000), 20});
    emu::Faults faults;
    faults.silence = emu::Silence{};
    camera.setFaults(faults);
    camera.resetCounters();
    ASSERT_TRUE(camera.waitFor([](const emu::Counters& counters) { return counters.lost >= 1; })) << "a beat";
    const auto start = steady_clock::now();
    port.close();
    EXPECT_LT(steady_clock::now() - start, milliseconds(1500)) << "one try of 1000 ms";
    EXPECT_EQ(losses, 0);
}
