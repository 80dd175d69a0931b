// Writing features: what is refused before anything is sent, and the bytes that arrive.
#include "camera/EveryNodeKind.h"

#include <cmath>
#include <limits>

namespace
{

class NodeWrites : public tests::EveryNodeKind
{
};

TEST_F(NodeWrites, integersGoOutInTheirByteOrder)
{
    EXPECT_EQ(setInteger("Big4", 0x12345678), KX_OK);
    EXPECT_EQ(setInteger("Little4", 0x12345678), KX_OK);
    EXPECT_EQ(setInteger("Signed2", -2), KX_OK);
    EXPECT_EQ(setInteger("Unsigned8", std::numeric_limits<int64_t>::max()), KX_OK);
    EXPECT_EQ(device().get(0x100, 4), 0x12345678u);
    EXPECT_EQ(device().get(0x104, 4), 0x78563412u);
    EXPECT_EQ(device().get(0x108, 2), 0xFFFEu);
    EXPECT_EQ(device().get(0x110, 8), 0x7FFFFFFFFFFFFFFFu);
    EXPECT_EQ(takeRequests(),
              (std::vector<std::string>{"write 100 4", "write 104 4", "write 108 2", "write 110 8"}));
}

TEST_F(NodeWrites, aBitFieldKeepsItsNeighboursAsTheyStandInTheCamera)
{
    device().set32(0x404, 0xFFFFFFFF);
    EXPECT_EQ(value("BigBits"), 255);
    device().set32(0x404, 0x80000001); // behind our back, after the register was read
    EXPECT_EQ(setInteger("BigBits", 0xAF), KX_OK);
    EXPECT_EQ(device().get32(0x404), 0x80000AF1u);
    EXPECT_EQ(setInteger("LittleBit", 1), KX_OK);
    EXPECT_EQ(device().get(0x400, 4), 0x00000080u);
    EXPECT_EQ(setInteger("SignedBits", -1), KX_OK);
    EXPECT_EQ(device().get(0x408, 2), 0x0F00u);
    EXPECT_EQ(setInteger("EntryLow", 0xBEEF), KX_OK);
    EXPECT_EQ(device().get32(0x420), 0x0000BEEFu);
}

TEST_F(NodeWrites, aBitThatCannotBeReadIsWrittenAmongZeros)
{
    EXPECT_EQ(setInteger("BlindBit", 1), KX_OK);
    EXPECT_EQ(takeRequests(), (std::vector<std::string>{"write 418 4"}));
    EXPECT_EQ(device().get(0x418, 4), 0x01000000u);
}

TEST_F(NodeWrites, rangesAreCheckedAllAlongTheWay)
{
    EXPECT_EQ(setInteger("Width", 8), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("Width", 1032), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("Width", 20), KX_E_GC_ARGUMENT);
    EXPECT_EQ(camera.lastError(), "Width: the value is no multiple of the increment.");
    EXPECT_EQ(setInteger("Linked", 40000), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("LinkedTwice", 101), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("LinkedTwice", -32769), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("Doubled", 70000), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("BigBits", 256), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("Big4", -1), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("Copied", 0x100000000), KX_E_GC_RANGE);
    for (const std::string& request : takeRequests())
        EXPECT_EQ(request.find("write"), std::string::npos) << request;
    EXPECT_EQ(setInteger("Width", 1024), KX_OK);
    EXPECT_EQ(setInteger("Width", 24), KX_OK);
}

TEST_F(NodeWrites, anIncrementCountsFromTheMinimum)
{
    EXPECT_EQ(setInteger("MinusStep", 5), KX_OK);
    EXPECT_EQ(setInteger("MinusStep", 95), KX_OK);
    EXPECT_EQ(setInteger("MinusStep", 10), KX_E_GC_ARGUMENT);
    int64_t origin = 0;
    EXPECT_EQ(KX_CC_GetIntIncrementOrigin(camera.handle, "MinusStep", &origin), KX_OK);
    EXPECT_EQ(origin, -5);
    EXPECT_EQ(setInteger("IncZero", 7), KX_OK);
    EXPECT_EQ(value("IncZero"), 7);
}

// The register's lower end is no minimum to count from: nobody chose it.
TEST(IncrementOrigin, isTheMinimumThatTheDescriptionGives)
{
    const auto described = [](const std::string& bounds) {
        return R"(<RegisterDescription ModelName="M" VendorName="V" SchemaMajorVersion="1"
            SchemaMinorVersion="1" SchemaSubMinorVersion="0">
            <Integer Name="Outer"><pValue>Steps</pValue></Integer>
            <Integer Name="Steps"><pValue>Reg</pValue>)" +
               bounds + R"(<Inc>3</Inc></Integer>
            <IntReg Name="Reg"><Address>0x100</Address><Length>4</Length><AccessMode>RW</AccessMode>
                <pPort>Device</pPort><Sign>Signed</Sign><Endianess>BigEndian</Endianess></IntReg>
            <Port Name="Device"/></RegisterDescription>)";
    };
    const struct
    {
        const char* bounds;
        int64_t origin;
        int64_t taken;
        int64_t refused;
    } rows[] = {{"", 0, 6, 7}, {"<Min>1</Min>", 1, 7, 6}, {"<Max>100</Max>", 0, -6, -5}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bounds);
        tests::FakeCamera camera(described(row.bounds));
        for (const char* name : {"Steps", "Outer"}) {
            int64_t origin = -1;
            EXPECT_EQ(KX_CC_GetIntIncrementOrigin(camera.handle, name, &origin), KX_OK);
            EXPECT_EQ(origin, row.origin);
            EXPECT_EQ(KX_CC_SetIntValueEx(camera.handle, name, row.taken), KX_OK);
            EXPECT_EQ(KX_CC_SetIntValueEx(camera.handle, name, row.refused), KX_E_GC_ARGUMENT);
        }
        int64_t untouched = 77;
        EXPECT_EQ(KX_CC_GetIntIncrementOrigin(camera.handle, "Nobody", &untouched), KX_E_GC_PROPERTY);
        EXPECT_EQ(KX_CC_GetIntIncrementOrigin(camera.handle, "Steps", nullptr), KX_E_PARAMETER);
        EXPECT_EQ(untouched, 77);
    }
}

TEST_F(NodeWrites, aFloatBehindAConverterIsRoundedToTheNearestInteger)
{
    EXPECT_EQ(setReal("Scaled", 2.9F), KX_OK); // 9.67 steps
    EXPECT_EQ(device().get(0x108, 2), 10u);
    EXPECT_EQ(setReal("Exposure", 0.4F), KX_OK); // 1.33 steps
    EXPECT_EQ(device().get(0x108, 2), 1u);
    EXPECT_EQ(setReal("Falling", 2.5F), KX_OK); // halves go away from zero
    EXPECT_EQ(device().get(0x108, 2), 0xFFFDu);
    EXPECT_EQ(setReal("OnInteger", 6.5F), KX_OK);
    EXPECT_EQ(device().get32(0x100), 7u);
    EXPECT_EQ(setInteger("Doubled", -8), KX_OK);
    EXPECT_EQ(device().get(0x108, 2), 0xFFFCu);
    EXPECT_EQ(setReal("Reciprocal", 0.25F), KX_OK);
    EXPECT_EQ(device().get32(0x100), 4u);
    EXPECT_EQ(setReal("Reciprocal", 0), KX_E_GC_RUNTIME);
}

TEST_F(NodeWrites, aFloatIsSetToTheNearestStepOfTheIntegerBehindIt)
{
    // From 10 in steps of 20; of two that are equally near the lower one.
    const std::vector<std::pair<float, uint32_t>> expected = {
        {10, 10}, {19.9F, 10}, {20, 10},   {20.4F, 10},   {20.6F, 30},
        {40, 30}, {41, 50},    {990, 990}, {999.4F, 990}, {1000, 990}};
    for (const auto& [value, written] : expected) {
        EXPECT_EQ(setReal("OnStepped", value), KX_OK) << value;
        EXPECT_EQ(device().get32(0x100), written) << value;
    }
    EXPECT_EQ(setReal("OnStepped", 9), KX_E_GC_RANGE);
    EXPECT_EQ(setReal("OnStepped", 1001), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("Stepped", 20), KX_E_GC_ARGUMENT); // an integer is meant as it is
    EXPECT_EQ(device().get32(0x100), 990u);
}

TEST_F(NodeWrites, theNearestStepIsFoundThroughAConverterToo)
{
    EXPECT_EQ(setReal("SteppedExposure", 5), KX_OK); // 20
    EXPECT_EQ(device().get32(0x100), 10u);
    EXPECT_EQ(setReal("SteppedExposure", 5.3F), KX_OK); // 21.2
    EXPECT_EQ(device().get32(0x100), 30u);
    EXPECT_EQ(setReal("SteppedScale", 250), KX_OK); // 1000
    EXPECT_EQ(device().get32(0x100), 990u);
}

TEST_F(NodeWrites, theNearestStepLiesWithinTheRange)
{
    EXPECT_EQ(setReal("OnSteppedShort", 1006), KX_OK); // 1010 would be nearer
    EXPECT_EQ(device().get32(0x100), 990u);
}

TEST_F(NodeWrites, stepsWithoutAMinimumCountFromZero)
{
    const std::vector<std::pair<float, uint64_t>> expected = {
        {14, 10},     {15, 10},      {16, 20},      {-4, 0},          {-5, 0xFFF6},
        {-6, 0xFFF6}, {-14, 0xFFF6}, {-15, 0xFFEC}, {-32768, 0x8008}, {32767, 0x7FF8}};
    for (const auto& [value, written] : expected) {
        EXPECT_EQ(setReal("OnSteppedFromZero", value), KX_OK) << value;
        EXPECT_EQ(device().get(0x108, 2), written) << value;
    }
}

TEST_F(NodeWrites, aFloatMeetsABoundThatOnly64BitsCanTellFromIt)
{
    EXPECT_GT(static_cast<double>(0.3F), 0.3);
    EXPECT_EQ(setReal("Gain", 0.3F), KX_OK);
    EXPECT_EQ(device().get(0x508, 8), 0x333333333333D33Fu); // 0.3, not 0.3F
    EXPECT_EQ(setReal("Gain", 0.1F), KX_OK);
    EXPECT_EQ(setReal("Gain", std::nextafter(0.3F, 1.0F)), KX_E_GC_RANGE);
    EXPECT_EQ(setReal("Gain", 0.05F), KX_E_GC_RANGE);
    EXPECT_EQ(setReal("Gain", std::numeric_limits<float>::infinity()), KX_E_GC_RANGE);
    EXPECT_EQ(setReal("Gain", std::numeric_limits<float>::quiet_NaN()), KX_E_GC_ARGUMENT);
}

TEST_F(NodeWrites, floatRegisters)
{
    EXPECT_EQ(setReal("Float4", -1.5F), KX_OK);
    EXPECT_EQ(device().get32(0x500), 0xBFC00000u);
    EXPECT_EQ(setReal("Float8", 1.5F), KX_OK);
    EXPECT_EQ(device().get(0x508, 8), 0x000000000000F83Fu);
    EXPECT_EQ(setReal("Float3", 1.5F), KX_E_GC_RUNTIME);
}

TEST_F(NodeWrites, booleansWriteTheirTwoValues)
{
    EXPECT_EQ(KX_CC_SetBoolValue(camera.handle, "OddFlag", true), KX_OK);
    EXPECT_EQ(device().get32(0x100), 7u);
    EXPECT_EQ(KX_CC_SetBoolValue(camera.handle, "OddFlag", false), KX_OK);
    EXPECT_EQ(device().get32(0x100), 9u);
    EXPECT_EQ(KX_CC_SetBoolValue(camera.handle, "Flag", true), KX_OK);
    EXPECT_EQ(device().get32(0x100), 1u);
    bool flag = true;
    EXPECT_EQ(KX_CC_SetBoolValue(camera.handle, "LiteralFlag", false), KX_OK);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "LiteralFlag", &flag), KX_OK);
    EXPECT_FALSE(flag);
}

TEST_F(NodeWrites, enumerationsTakeTheirUsableEntriesOnly)
{
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Mode", 30), KX_OK);
    EXPECT_EQ(device().get32(0x100), 30u);
    for (const unsigned refused : {0u, 11u, 20u, 21u, 22u, 23u, 24u})
        EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Mode", refused), KX_E_GC_ARGUMENT) << refused;
    EXPECT_EQ(device().get32(0x100), 30u);
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Width", 64), KX_E_GC_LOGICAL);
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Nobody", 64), KX_E_GC_PROPERTY);
}

TEST_F(NodeWrites, anEntryThatTheRecordCannotTellIsRefusedAndNeverAnother)
{
    device().set32(0x114, 7);
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Wide", 0), KX_E_GC_RANGE); // High, cut to 32 bits
    EXPECT_EQ(camera.lastError(), "Wide: 0 does not tell its entries apart: they need more bits.");
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Wide", 5), KX_E_GC_RANGE); // Low or Twin
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Wide", 6), KX_E_GC_ARGUMENT);
    EXPECT_EQ(device().get(0x110, 8), 7u);
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Wide", 7), KX_OK);
    EXPECT_EQ(KX_CC_SetEnumValue(camera.handle, "Mode", 0xFFFFFFFF),
              KX_E_GC_RANGE); // -1 in a register from 0 on
}

TEST_F(NodeWrites, textsFillTheirRegisterWithZeros)
{
    device().set(0x600, std::vector<uint8_t>(17, 'x'));
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "LinkedText", "abc"), KX_OK);
    EXPECT_EQ(takeRequests(), (std::vector<std::string>{"write 600 16"}));
    EXPECT_EQ(device().get(0x600, 4), 0x61626300u);
    EXPECT_EQ(device().get(0x60D, 4), 0x00000078u); // and no byte more
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "Text", "0123456789abcdef"), KX_OK);
    EXPECT_EQ(text("Text"), "0123456789abcdef");
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "Text", "0123456789abcdef0"), KX_E_GC_ARGUMENT);
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "EmptyText", ""), KX_OK);
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "EmptyText", "a"), KX_E_GC_ARGUMENT);
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "LiteralText", "new"), KX_OK);
    EXPECT_EQ(text("LiteralText"), "new");
    EXPECT_EQ(KX_CC_SetStringValue(camera.handle, "Width", "64"), KX_E_GC_LOGICAL);
}

TEST_F(NodeWrites, commandsWriteTheirValue)
{
    EXPECT_EQ(KX_CC_ExecuteCommand(camera.handle, "Start"), KX_OK);
    EXPECT_EQ(device().get32(0x118), 5u);
    EXPECT_EQ(KX_CC_ExecuteCommand(camera.handle, "StartLinked"), KX_OK);
    EXPECT_EQ(device().get32(0x118), 42u);
    EXPECT_EQ(KX_CC_ExecuteCommand(camera.handle, "Mute"), KX_E_GC_RUNTIME);
}

TEST_F(NodeWrites, copiesAndTheValueAreWrittenInTheDescriptionsOrder)
{
    EXPECT_EQ(setInteger("CopiedFirst", 3), KX_OK);
    EXPECT_EQ(takeRequests(), (std::vector<std::string>{"write 108 2", "write 100 4", "write 104 4"}));
}

TEST_F(NodeWrites, aCopyNarrowsTheRange)
{
    EXPECT_EQ(integer("CopiedFirst").minimum, 0);
    EXPECT_EQ(integer("CopiedFirst").maximum, 32767);
    EXPECT_EQ(integer("CopiedWide").maximum, 100000); // its own word
    EXPECT_EQ(setInteger("CopiedFirst", 32768), KX_E_GC_RANGE);
    EXPECT_EQ(setInteger("CopiedFirst", -1), KX_E_GC_RANGE);
}

TEST_F(NodeWrites, whatOneCopyRefusesIsWrittenNowhere)
{
    takeRequests();
    EXPECT_EQ(setInteger("CopiedWide", 32768), KX_E_GC_RANGE);
    EXPECT_TRUE(takeRequests().empty());
    EXPECT_EQ(setInteger("CopiedWide", 32767), KX_OK);
    EXPECT_EQ(takeRequests(), (std::vector<std::string>{"write 100 4", "write 108 2"}));
}

TEST_F(NodeWrites, aCopyThatCannotBeWrittenMakesTheNodeReadOnly)
{
    EXPECT_EQ(mode("CopiedReadOnly"), KX_AM_READ_ONLY);
    EXPECT_EQ(mode("CopiedBlind"), KX_AM_READ_WRITE); // nobody reads a copy
    EXPECT_EQ(setInteger("CopiedBlind", 4), KX_OK);
    EXPECT_EQ(device().get32(0x118), 4u);
    EXPECT_EQ(setInteger("CopiedLiteral", 5), KX_OK);
    EXPECT_EQ(value("Literal"), 5);
}

TEST_F(NodeWrites, copiesGetTheValueToo)
{
    EXPECT_EQ(setInteger("Copied", 3), KX_OK);
    EXPECT_EQ(device().get32(0x100), 3u);
    EXPECT_EQ(device().get(0x104, 4), 0x03000000u);
}

} // namespace
