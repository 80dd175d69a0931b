// What the line to a camera sends, and what it makes of answers that a well-behaved camera never gives.
#include "KXCameraControl/ports/gige/GvcpPort.h"
#include "camera/ScriptedCamera.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>

using namespace gvcp;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace
{

constexpr uint32_t kAddress = 0x30000;

KX_GigEDeviceInfo deviceAt(const std::string& address)
{
    KX_GigEDeviceInfo device{};
    device.ipAddress = *parseAddress(address);
    return device;
}

Bytes word(uint32_t value)
{
    Bytes bytes(4);
    put32(bytes.data(), value);
    return bytes;
}

class GvcpPortOnWire : public testing::Test
{
protected:
    GvcpPortOnWire() : port(deviceAt(camera.address()))
    {
        port.setTimeouts({milliseconds(1000), 3}); // a busy machine must not make for more requests
        port.setConnectionLostHandler([this](KX_Status) { ++losses; });
    }

    // What a command to kAddress gets; everything else is answered plainly.
    void answerWith(std::function<ScriptedCamera::Replies(const CommandPacket&)> replies)
    {
        camera.setScript([replies](const CommandPacket& command) {
            return ScriptedCamera::isFor(command, kAddress) ? std::make_optional(replies(command))
                                                            : std::nullopt;
        });
    }
    std::vector<CommandPacket> requests() const { return camera.receivedFor(kAddress); }

    KX_Status openToRead()
    {
        const KX_Status status = port.open(KX_ACCESS_MONITOR, 0);
        EXPECT_EQ(status, KX_OK) << port.lastError();
        return status;
    }

    ScriptedCamera camera;
    std::atomic<int> losses{0};
    kx::GvcpPort port; // goes first: its thread uses what stands above
};

// Commands and payloads as "82 0A000001": the command's low byte and the words.
std::string asText(const std::vector<CommandPacket>& commands)
{
    std::string text;
    for (const CommandPacket& command : commands) {
        char part[16];
        std::snprintf(part, sizeof part, "%s%02X", text.empty() ? "" : ", ", command.command);
        text += part;
        for (size_t i = 0; i + 4 <= command.payload.size(); i += 4) {
            std::snprintf(part, sizeof part, " %X", get32(&command.payload[i]));
            text += part;
        }
    }
    return text;
}

} // namespace

TEST_F(GvcpPortOnWire, opensAndClosesWithTheseCommands)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    port.close();
    EXPECT_EQ(asText(camera.received()), "02, 82 A00 1, 80 934, 80 938, 82 A00 0");
    EXPECT_EQ(port.requestCount(), 5u);
    camera.forget();
    ASSERT_EQ(port.open(KX_ACCESS_CONTROL, 0x1234), KX_OK);
    port.close();
    EXPECT_EQ(asText(camera.received()), "02, 82 A00 12340002, 80 934, 80 938, 82 A00 0");
    camera.forget();
    ASSERT_EQ(port.open(KX_ACCESS_MONITOR, 0), KX_OK);
    port.close();
    EXPECT_EQ(asText(camera.received()), "02, 80 934");
}

TEST_F(GvcpPortOnWire, callsOutOfOrderSendNothing)
{
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_CALL_ORDER);
    EXPECT_EQ(port.writeRegister(kAddress, value), KX_E_CALL_ORDER);
    EXPECT_EQ(port.open(2, 0), KX_E_PARAMETER);
    EXPECT_EQ(port.requestCount(), 0u);
    openToRead();
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CALL_ORDER);
    EXPECT_TRUE(port.isOpen());
    EXPECT_EQ(port.requestCount(), 2u);
    EXPECT_EQ(kx::GvcpPort(KX_GigEDeviceInfo{}).open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
}

TEST_F(GvcpPortOnWire, anotherCameraAtTheAddressIsNotOpened)
{
    camera.setText(RegSerialNumber, "SERIAL-OF-16-BYT");
    camera.setRegister(RegMacHigh, 0xAA);
    camera.setRegister(RegMacLow, 0xBB);
    KX_GigEDeviceInfo device = deviceAt(camera.address());
    device.macHigh = 0xAA;
    device.macLow = 0xBB;
    std::copy_n("SERIAL-OF-16-BY", 15, device.serialNumber);
    EXPECT_EQ(kx::GvcpPort(device).open(KX_ACCESS_MONITOR, 0), KX_OK) << "cut for the terminating zero";
    camera.forget();
    device.serialNumber[0] = 'X';
    EXPECT_EQ(kx::GvcpPort(device).open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    device.serialNumber[0] = 'S';
    device.macLow = 0xBC;
    EXPECT_EQ(kx::GvcpPort(device).open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(asText(camera.received()), "02, 02");
}

TEST_F(GvcpPortOnWire, aCameraWithoutTheOptionalRegistersOpens)
{
    camera.setScript([](const CommandPacket& command) -> std::optional<ScriptedCamera::Replies> {
        if (command.command != ReadRegCmd)
            return std::nullopt;
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, InvalidAddress)}};
    });
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port.lastError();
    EXPECT_EQ(port.registersPerRequest(), 1u);
}

TEST_F(GvcpPortOnWire, anOpeningThatFailsGivesControlBack)
{
    camera.setScript([](const CommandPacket& command) -> std::optional<ScriptedCamera::Replies> {
        if (!ScriptedCamera::isFor(command, RegCapabilities))
            return std::nullopt;
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, GenericError)}};
    });
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_DEVICE);
    EXPECT_EQ(asText(camera.received()), "02, 82 A00 1, 80 934, 82 A00 0");
    EXPECT_FALSE(port.isOpen());
    EXPECT_NE(port.lastError().find("0x8FFF"), std::string::npos) << "not what closing had to say";
}

TEST_F(GvcpPortOnWire, silenceIsAskedAsOftenAsSetWithOneId)
{
    openToRead();
    port.setTimeouts({milliseconds(40), 3});
    answerWith([](const CommandPacket&) { return ScriptedCamera::Replies{}; });
    const uint64_t before = port.requestCount();
    const auto start = steady_clock::now();
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_NO_ANSWER);
    EXPECT_GE(steady_clock::now() - start, milliseconds(120));
    EXPECT_EQ(port.requestCount() - before, 3u);
    ASSERT_EQ(requests().size(), 3u);
    EXPECT_EQ(requests()[0].id, requests()[1].id);
    EXPECT_EQ(requests()[0].id, requests()[2].id);
    EXPECT_EQ(requests()[0].flags, kFlagAckRequired);
    port.setTimeouts({milliseconds(20), 1});
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_NO_ANSWER);
    EXPECT_EQ(requests().size(), 4u);
}

TEST_F(GvcpPortOnWire, theDefaultIsThreeTriesOf200Milliseconds)
{
    kx::GvcpPort plain(deviceAt(camera.address()));
    camera.setScript([](const CommandPacket&) { return ScriptedCamera::Replies{}; });
    const auto start = steady_clock::now();
    EXPECT_EQ(plain.open(KX_ACCESS_MONITOR, 0), KX_E_NO_DEVICE);
    EXPECT_GE(steady_clock::now() - start, milliseconds(600));
    EXPECT_EQ(plain.requestCount(), 3u);
}

TEST_F(GvcpPortOnWire, aRefusedDatagramEndsItsTryAtOnce)
{
    openToRead();
    port.setTimeouts({milliseconds(10000), 3});
    camera.stop();
    const auto start = steady_clock::now();
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_NO_ANSWER);
    EXPECT_LT(steady_clock::now() - start, milliseconds(5000));
}

TEST_F(GvcpPortOnWire, aLateAnswerToAnEarlierTryCounts)
{
    openToRead();
    port.setTimeouts({milliseconds(40), 3});
    // The answer to the first try comes when the second one is waiting.
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, word(7)), milliseconds(60)}};
    });
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_OK);
    EXPECT_EQ(value, 7u);
}

TEST_F(GvcpPortOnWire, answersUnderAnotherIdAreDropped)
{
    openToRead();
    int calls = 0;
    answerWith([&calls](const CommandPacket& command) {
        CommandPacket other = command;
        --other.id;
        const uint32_t value = 100 + static_cast<uint32_t>(++calls);
        // A stranger's first, ours, and ours a second time, into the next request's waiting.
        return ScriptedCamera::Replies{{ScriptedCamera::answer(other, word(1))},
                                       {ScriptedCamera::answer(other, {}, AccessDenied)},
                                       {ScriptedCamera::answer(command, word(value))},
                                       {ScriptedCamera::answer(command, word(value))}};
    });
    for (uint32_t i = 1; i <= 5; ++i) {
        uint32_t value = 0;
        ASSERT_EQ(port.readRegister(kAddress, value), KX_OK);
        EXPECT_EQ(value, 100 + i);
    }
    std::set<uint16_t> ids;
    for (const CommandPacket& command : camera.received())
        ids.insert(command.id);
    EXPECT_EQ(ids.size(), camera.received().size()) << "every command has an id of its own";
    EXPECT_EQ(ids.count(0), 0u);
}

TEST_F(GvcpPortOnWire, nobodyElseAnswersForTheCamera)
{
    openToRead();
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, word(666)), milliseconds(0), true},
                                       {ScriptedCamera::answer(command, word(4))}};
    });
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_OK);
    EXPECT_EQ(value, 4u);
}

TEST_F(GvcpPortOnWire, pendingExtendsTheWaitUnderTheSameId)
{
    openToRead();
    port.setTimeouts({milliseconds(150), 3});
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::pending(command, 300)},
                                       {ScriptedCamera::pending(command, 300), milliseconds(250)},
                                       {ScriptedCamera::answer(command, word(9)), milliseconds(250)}};
    });
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_OK);
    EXPECT_EQ(value, 9u);
    EXPECT_EQ(requests().size(), 1u) << "not asked again meanwhile";
}

TEST_F(GvcpPortOnWire, pendingForEverHasAnEnd)
{
    openToRead();
    port.setTimeouts({milliseconds(20), 2, milliseconds(150)});
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::pending(command, 60000)}};
    });
    const auto start = steady_clock::now();
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_NO_ANSWER);
    EXPECT_GE(steady_clock::now() - start, milliseconds(150));
    EXPECT_LT(steady_clock::now() - start, milliseconds(5000));
    EXPECT_EQ(requests().size(), 2u);

    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_CONNECTION_LOST) << "each call would take as long";
    EXPECT_EQ(requests().size(), 2u);
    port.close();
    openToRead();
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_NO_ANSWER) << "asked again";
}

TEST_F(GvcpPortOnWire, aCameraThatRefusesBehindPendingIsNotLost)
{
    openToRead();
    port.setTimeouts({milliseconds(20), 2, milliseconds(50)});
    for (const auto& [refusal, status] :
         {std::pair{Busy, KX_E_BUSY}, std::pair{InvalidAddress, KX_E_GC_ACCESS}}) {
        answerWith([calls = 0, code = refusal](const CommandPacket& command) mutable {
            return ScriptedCamera::Replies{{++calls < 2 ? ScriptedCamera::pending(command, 60000)
                                                        : ScriptedCamera::answer(command, {}, code)}};
        });
        uint32_t value = 0;
        EXPECT_EQ(port.readRegister(kAddress, value), status);
        answerWith([](const CommandPacket& command) {
            return ScriptedCamera::Replies{{ScriptedCamera::answer(command, word(5))}};
        });
        EXPECT_EQ(port.readRegister(kAddress, value), KX_OK) << port.lastError();
    }
}

TEST_F(GvcpPortOnWire, busyIsAskedAgainAsANewCommand)
{
    openToRead();
    answerWith([calls = 0](const CommandPacket& command) mutable {
        return ++calls < 3 ? ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, Busy)}}
                           : ScriptedCamera::Replies{{ScriptedCamera::answer(command, word(5))}};
    });
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_OK);
    EXPECT_EQ(value, 5u);
    ASSERT_EQ(requests().size(), 3u);
    EXPECT_NE(requests()[0].id, requests()[1].id) << "a repeated id would get the old answer";
    EXPECT_NE(requests()[1].id, requests()[2].id);
}

TEST_F(GvcpPortOnWire, busyForEverIsBusy)
{
    openToRead();
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, Busy)}};
    });
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_BUSY);
    EXPECT_EQ(requests().size(), 3u);
}

TEST_F(GvcpPortOnWire, refusalsBecomeStatuses)
{
    openToRead();
    const std::pair<uint16_t, KX_Status> rows[] = {
        {NotImplemented, KX_E_GC_ACCESS}, {InvalidParameter, KX_E_GC_ACCESS},
        {InvalidAddress, KX_E_GC_ACCESS}, {WriteProtect, KX_E_GC_ACCESS},
        {BadAlignment, KX_E_GC_ACCESS},   {AccessDenied, KX_E_GC_ACCESS},
        {MessageTimeout, KX_E_DEVICE},    {InvalidHeader, KX_E_DEVICE},
        {GenericError, KX_E_DEVICE},      {0x8ABC, KX_E_DEVICE}};
    for (const auto& [refusal, status] : rows) {
        answerWith([refusal = refusal](const CommandPacket& command) {
            return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, refusal)}};
        });
        uint32_t value = 0;
        uint8_t data[4];
        std::vector<uint32_t> values;
        EXPECT_EQ(port.readRegister(kAddress, value), status) << refusal;
        EXPECT_EQ(port.readMemory(kAddress, data, 4), status) << refusal;
        EXPECT_EQ(port.readRegisters({kAddress}, values), status) << refusal;
    }
    EXPECT_EQ(requests().size(), 30u) << "a refusal is an answer";
}

TEST_F(GvcpPortOnWire, aRefusalNamesWhatWasRefused)
{
    openToRead();
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, InvalidAddress)}};
    });
    uint32_t value = 0;
    port.readRegister(kAddress, value);
    EXPECT_EQ(port.lastError(),
              "reading register 0x00030000 of " + camera.address() + ": invalid address (0x8003)");
}

TEST_F(GvcpPortOnWire, malformedAnswersToReads)
{
    openToRead();
    port.setTimeouts({milliseconds(15), 2});
    const std::function<Bytes(const CommandPacket&)> rows[] = {
        [](const CommandPacket&) { return Bytes{}; },
        [](const CommandPacket&) {
            return Bytes{0, 0, 0};
        },
        [](const CommandPacket& c) { return ScriptedCamera::answer(c, {}); },
        [](const CommandPacket& c) {
            return ScriptedCamera::answer(c, {1, 2, 3});
        },
        [](const CommandPacket& c) {
            return ScriptedCamera::answer(c, {1, 2, 3, 4, 5});
        },
        [](const CommandPacket& c) { return ScriptedCamera::answer(c, Bytes(12)); },
        [](const CommandPacket& c) {
            Bytes cut = ScriptedCamera::answer(c, {1, 2, 3, 4});
            cut.pop_back();
            return cut;
        },
        [](const CommandPacket& c) {
            return encodeAck({Success, WriteRegAck, c.id, {0, 0, 0, 1}});
        },
        [](const CommandPacket& c) {
            return encodeAck({Success, PendingAck, c.id, {0}});
        },
        // READMEM: the bytes of another address.
        [](const CommandPacket& c) {
            return ScriptedCamera::answer(c, {0, 3, 0, 4, 1, 2, 3, 4});
        }};
    for (size_t row = 0; row < std::size(rows); ++row) {
        answerWith(
            [&](const CommandPacket& command) { return ScriptedCamera::Replies{{rows[row](command)}}; });
        camera.forget();
        uint8_t data[4] = {9, 9, 9, 9};
        EXPECT_EQ(port.readMemory(kAddress, data, 4), KX_E_MALFORMED_ANSWER) << row;
        EXPECT_EQ(data[0], 9) << row;
        EXPECT_EQ(requests().size(), 2u) << row << ": a good answer may follow";
    }
    // READREG: nothing of the above is good for it either, but for four bytes, which none has.
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, Bytes(8))}};
    });
    uint32_t value = 9;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_E_MALFORMED_ANSWER);
    EXPECT_EQ(value, 9u);
}

TEST_F(GvcpPortOnWire, malformedAnswersToWrites)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    port.setTimeouts({milliseconds(15), 2});
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {})}};
    });
    EXPECT_EQ(port.writeRegister(kAddress, 1), KX_E_MALFORMED_ANSWER);
    EXPECT_EQ(port.writeMemory(kAddress, "abcd", 4), KX_E_MALFORMED_ANSWER);
}

TEST_F(GvcpPortOnWire, aGoodAnswerBehindAMalformedOneIsTaken)
{
    openToRead();
    answerWith([](const CommandPacket& command) {
        return ScriptedCamera::Replies{{{0, 1, 2}},
                                       {ScriptedCamera::answer(command, Bytes(3))},
                                       {ScriptedCamera::answer(command, word(3))}};
    });
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_OK);
    EXPECT_EQ(value, 3u);
    EXPECT_EQ(requests().size(), 1u);
}

TEST_F(GvcpPortOnWire, aFailedReadOfTheLastWordWritesNothing)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    camera.setScript([](const CommandPacket& command) -> std::optional<ScriptedCamera::Replies> {
        if (command.command != ReadMemCmd)
            return std::nullopt;
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, InvalidAddress)}};
    });
    EXPECT_EQ(port.writeMemory(kAddress, "abcdef", 6), KX_E_GC_ACCESS);
    EXPECT_EQ(asText(camera.receivedFor(kAddress + 4)), "84 30004 4");
    EXPECT_TRUE(requests().empty());
}

TEST_F(GvcpPortOnWire, aBusyHeartbeatIsNoLoss)
{
    camera.setRegister(RegHeartbeatTimeout, 60);
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    camera.setScript([](const CommandPacket& command) -> std::optional<ScriptedCamera::Replies> {
        if (!ScriptedCamera::isFor(command, RegControlPrivilege))
            return std::nullopt;
        return ScriptedCamera::Replies{{ScriptedCamera::answer(command, {}, Busy)}};
    });
    camera.forget();
    ASSERT_TRUE(camera.waitFor(7, RegControlPrivilege)) << "more than two beats";
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kAddress, value), KX_OK);
    EXPECT_EQ(losses, 0);
}

TEST_F(GvcpPortOnWire, heartbeatWritesWhatItHolds)
{
    camera.setRegister(RegHeartbeatTimeout, 60);
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0x77), KX_OK);
    camera.forget();
    ASSERT_TRUE(camera.waitFor(4, RegControlPrivilege));
    auto beats = camera.receivedFor(RegControlPrivilege);
    beats.resize(4);
    EXPECT_EQ(asText(beats), "80 A00, 82 A00 1, 80 A00, 82 A00 1");
}

TEST_F(GvcpPortOnWire, closingACameraThatFellSilentTakesTheTimeOfOneTry)
{
    ASSERT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    port.setTimeouts({milliseconds(100), 20});
    camera.setScript([](const CommandPacket& command) -> std::optional<ScriptedCamera::Replies> {
        return ScriptedCamera::Replies{{ScriptedCamera::pending(command, 60000)}};
    });
    camera.forget();
    const auto start = steady_clock::now();
    port.close();
    EXPECT_LT(steady_clock::now() - start, milliseconds(1000));
    EXPECT_EQ(asText(camera.received()), "82 A00 0, 82 A00 0, 82 A00 0");
}

TEST_F(GvcpPortOnWire, callsAndHeartbeatShareTheLine)
{
    camera.setRegister(RegHeartbeatTimeout, 60);
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(port.open(KX_ACCESS_CONTROL, 0), KX_OK) << port.lastError();
        camera.forget();
        for (uint32_t i = 1; camera.receivedFor(RegControlPrivilege).size() < 4; ++i) {
            uint32_t value = 0;
            ASSERT_EQ(port.writeRegister(kAddress, i), KX_OK) << port.lastError();
            ASSERT_EQ(port.readRegister(kAddress, value), KX_OK) << port.lastError();
            ASSERT_EQ(value, i);
            port.setTimeouts({milliseconds(1000), 3});
            port.setConnectionLostHandler([this](KX_Status) { ++losses; });
        }
        port.close();
    }
    EXPECT_EQ(losses, 0);
}
