// What is read from the wire and what from memory.
#include "KXCameraControl/nodes/ReadMemo.h"
#include "camera/EveryNodeKind.h"

namespace
{

using namespace std::chrono_literals;
using Requests = std::vector<std::string>;

using Life = kx::ReadMemo::Life;
using Reader = kx::ReadMemo::Reader;
const kx::ReadMemo::Clock::time_point start{};

TEST(ReadMemo, keepsForItsSpanWhatMayBeKept)
{
    kx::ReadMemo memo(300ms);
    memo.beginCall();
    memo.store({0x100, 2}, {{1, 2}, start, Life::Keep});
    memo.store({0x200, 2}, {{3, 4}, start, Life::Call});
    ASSERT_NE(memo.find({0x100, 2}, start), nullptr);
    EXPECT_EQ(*memo.find({0x100, 2}, start), (std::vector<uint8_t>{1, 2}));
    EXPECT_NE(memo.find({0x200, 2}, start), nullptr);
    EXPECT_EQ(memo.find({0x100, 1}, start), nullptr); // another length is another register
    memo.beginCall();
    EXPECT_NE(memo.find({0x100, 2}, start + 299ms), nullptr);
    EXPECT_EQ(memo.find({0x200, 2}, start + 299ms), nullptr);
    EXPECT_NE(memo.find({0x100, 2}, start + 300ms), nullptr) << "within one call it stays as it was";
    memo.beginCall();
    EXPECT_EQ(memo.find({0x100, 2}, start + 300ms), nullptr);
}

TEST(ReadMemo, servesNobodyAfterAWriteButStillKnows)
{
    kx::ReadMemo memo(300ms);
    memo.beginCall();
    memo.store({0x100, 4}, {{1, 2, 3, 4}, start, Life::Keep});
    memo.store({0x104, 4}, {{5, 6, 7, 8}, start, Life::Keep});
    memo.outdate();
    memo.forget(0x106, 1);
    EXPECT_EQ(memo.find({0x100, 4}, start), nullptr);
    EXPECT_FALSE(memo.isRecent({0x100, 4}, start));
    EXPECT_NE(memo.lastKnown({0x100, 4}), nullptr);
    EXPECT_EQ(memo.lastKnown({0x104, 4}), nullptr);
}

TEST(ReadMemo, whatWasReadAheadServesEachOnceWhoWantsToSeeWhatIsThereNow)
{
    kx::ReadMemo memo(300ms);
    memo.beginCall();
    memo.store({0x100, 1}, {{1}, start, Life::Keep, true});
    memo.store({0x200, 1}, {{1}, start, Life::Keep, false});
    const auto serves = [&](Reader reader, size_t number, uint64_t address) {
        memo.beginCall();
        return memo.findFor(reader, number, {address, 1}, start + 299ms) != nullptr;
    };
    EXPECT_FALSE(serves(Reader::Node, 0, 0x100)) << "nobody known";
    EXPECT_TRUE(serves(Reader::Node, 3, 0x100));
    EXPECT_FALSE(serves(Reader::Node, 3, 0x100)) << "again";
    EXPECT_FALSE(serves(Reader::Node, 2, 0x100)) << "late";
    EXPECT_TRUE(serves(Reader::Node, 4, 0x100));
    EXPECT_TRUE(serves(Reader::Address, 3, 0x100)) << "counted apart";
    EXPECT_FALSE(serves(Reader::Node, 5, 0x200)) << "somebody's own reading";
    memo.outdate();
    EXPECT_FALSE(serves(Reader::Node, 6, 0x100));
}

class Remembering : public tests::EveryNodeKind
{
};

TEST_F(Remembering, aRegisterIsReadOnceInABurst)
{
    statusOf("Kept");
    statusOf("Kept");
    statusOf("KeptBit");
    statusOf("PolledSeldom");
    statusOf("PolledSeldom");
    EXPECT_EQ(takeRequests(), (Requests{"read 800 4", "read 80c 4"}));
}

TEST_F(Remembering, whatChangesByItselfIsReadInEveryCallButOnceInEach)
{
    statusOf("NoCache");
    statusOf("NoCache");
    statusOf("PolledOften");
    statusOf("PolledOften");
    EXPECT_EQ(takeRequests(), (Requests{"read 804 4", "read 804 4", "read 808 4", "read 808 4"}));
    EXPECT_EQ(value("NoCacheTwice"), 0);
    EXPECT_EQ(takeRequests(), (Requests{"read 804 4"}));
}

TEST_F(Remembering, everyWriteForgetsEverything)
{
    const auto forgets = [&](const char* what, KX_Status status) {
        EXPECT_EQ(status, KX_OK) << what;
        takeRequests();
        statusOf("Kept");
        EXPECT_EQ(takeRequests(), (Requests{"read 800 4"})) << what;
    };
    statusOf("Kept");
    forgets("integer", setInteger("Big4", 1));
    forgets("float", setReal("Float4", 1));
    forgets("boolean", KX_CC_SetBoolValue(camera.handle, "Flag", true));
    forgets("enumeration", KX_CC_SetEnumValue(camera.handle, "Mode", 10));
    forgets("text", KX_CC_SetStringValue(camera.handle, "Text", "a"));
    forgets("command", KX_CC_ExecuteCommand(camera.handle, "Start"));
    forgets("memory", KX_CC_WriteMemory(camera.handle, "abcd", 0xF00, 4));
    device().failures = {{0x100, KX_E_GC_ACCESS}};
    EXPECT_EQ(setInteger("Big4", 1), KX_E_GC_ACCESS); // even one that failed: who knows what it did
    takeRequests();
    statusOf("Kept");
    EXPECT_EQ(takeRequests(), (Requests{"read 800 4"}));
}

TEST_F(Remembering, aFailureIsNotRemembered)
{
    device().failures = {{0x800, KX_E_GC_ACCESS}};
    EXPECT_EQ(statusOf("Kept"), KX_E_GC_ACCESS);
    device().failures.clear();
    EXPECT_EQ(statusOf("Kept"), KX_OK);
}

TEST_F(Remembering, theLineSaysForHowLong)
{
    device().keepTime = 0ms;
    KX_CC_CloseDevice(camera.handle);
    KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0);
    takeRequests();
    statusOf("Kept");
    statusOf("Kept");
    EXPECT_EQ(takeRequests(), (Requests{"read 800 4", "read 800 4"}));
}

TEST_F(Remembering, aReopenedCameraStartsAnew)
{
    statusOf("Kept");
    KX_CC_CloseDevice(camera.handle);
    KX_CC_OpenDevice(camera.handle, KX_ACCESS_EXCLUSIVE, 0);
    takeRequests();
    statusOf("Kept");
    EXPECT_EQ(takeRequests(), (Requests{"read 800 4"}));
}

// Before schema 1.1 a register of four bytes is asked for by a register command.
TEST(OldSchema, usesRegisterCommandsForFourBytes)
{
    const std::string registers = R"(<Port Name="Device"/>
        <IntReg Name="Four"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>
          <pPort>Device</pPort><Endianess>BigEndian</Endianess></IntReg>
        <MaskedIntReg Name="Bit"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>
          <pPort>Device</pPort><Bit>31</Bit><Endianess>BigEndian</Endianess></MaskedIntReg>
        <IntReg Name="Two"><Address>0x104</Address><Length>2</Length><AccessMode>RW</AccessMode>
          <pPort>Device</pPort><Endianess>BigEndian</Endianess></IntReg></RegisterDescription>)";
    for (const auto& [minor, expected] :
         {std::pair{"0",
                    Requests{"readreg 100", "read 104 2", "writereg 100", "readreg 100", "writereg 100"}},
          std::pair{"1", Requests{"read 100 4", "read 104 2", "write 100 4", "read 100 4", "write 100 4"}}}) {
        tests::FakeCamera camera(
            std::string("<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"") + minor +
            "\">" + registers);
        camera.device.requests.clear();
        camera.device.set32(0x100, 0x12345678);
        KX_IntegerValue value{};
        EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "Four", &value), KX_OK);
        EXPECT_EQ(value.current, 0x12345678);
        EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "Two", &value), KX_OK);
        EXPECT_EQ(KX_CC_SetIntValueEx(camera.handle, "Four", 0x11223344), KX_OK);
        EXPECT_EQ(camera.device.get32(0x100), 0x11223344u);
        EXPECT_EQ(KX_CC_SetIntValueEx(camera.handle, "Bit", 1), KX_OK);
        EXPECT_EQ(camera.device.get32(0x100), 0x11223345u);
        EXPECT_EQ(camera.device.requests, expected) << minor;
    }
}

} // namespace
