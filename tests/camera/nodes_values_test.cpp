// What features are worth, over registers whose bytes the test sets.
#include "camera/EveryNodeKind.h"

#include <cfloat>
#include <cstring>
#include <limits>

namespace
{

constexpr int64_t lowest = std::numeric_limits<int64_t>::min();
constexpr int64_t highest = std::numeric_limits<int64_t>::max();

class NodeValues : public tests::EveryNodeKind
{
};

TEST_F(NodeValues, integerRegistersFollowTheirByteOrderLengthAndSign)
{
    device().set(0x100, {0x12, 0x34, 0x56, 0x78});
    device().set(0x104, {0x12, 0x34, 0x56, 0x78});
    device().set(0x108, {0xFF, 0xFE});
    device().set(0x110, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xF0});
    EXPECT_EQ(value("Big4"), 0x12345678);
    EXPECT_EQ(value("Little4"), 0x78563412);
    EXPECT_EQ(value("Signed2"), -2);
    EXPECT_EQ(value("Unsigned8"), -16); // beyond what an integer node can say: its 64 bits
    EXPECT_EQ(statusOf("Length9"), KX_E_GC_RUNTIME);
}

TEST_F(NodeValues, registersTellTheBoundsOfTheirType)
{
    const Integer big = integer("Big4");
    EXPECT_EQ(big.minimum, 0);
    EXPECT_EQ(big.maximum, 0xFFFFFFFF);
    EXPECT_EQ(big.increment, 1);
    EXPECT_EQ(integer("Signed2").minimum, -32768);
    EXPECT_EQ(integer("Signed2").maximum, 32767);
    EXPECT_EQ(integer("Unsigned8").maximum, highest);
    EXPECT_EQ(integer("Bits64").maximum, highest);
    EXPECT_EQ(integer("Bits64").minimum, 0);
    EXPECT_EQ(integer("BigBits").maximum, 255);
    EXPECT_EQ(integer("SignedBits").minimum, -8);
    EXPECT_EQ(integer("SignedBits").maximum, 7);
    EXPECT_EQ(integer("BigBit").maximum, 1);
}

TEST_F(NodeValues, bitsCountFromTheLowestOfALittleAndFromTheHighestOfABigEndianRegister)
{
    device().set(0x400, {0xF0, 0x0A, 0x00, 0x80}); // 0x80000AF0
    device().set(0x404, {0x00, 0x00, 0x0A, 0xF1});
    device().set(0x408, {0x09, 0x00});
    device().set(0x410, {0x80, 0, 0, 0, 0, 0, 0, 1});
    EXPECT_EQ(value("LittleBits"), 0xAF);
    EXPECT_EQ(value("LittleBit"), 1);
    EXPECT_EQ(value("BigBits"), 0xAF);
    EXPECT_EQ(value("BigBitsSwapped"), 0xAF);
    EXPECT_EQ(value("BigBit"), 1);
    EXPECT_EQ(value("SignedBits"), -7);
    EXPECT_EQ(value("Bits64"), lowest + 1);
}

TEST_F(NodeValues, aBitOutsideTheRegisterIsTakenWithinIt)
{
    device().set32(0x404, 1);
    EXPECT_EQ(value("BitOutside"), 1); // 63 is 31
}

TEST_F(NodeValues, structEntriesShareTheirRegisterAndMayDiffer)
{
    device().set32(0x420, 0xABCD1234);
    EXPECT_EQ(value("EntryLow"), 0x1234);
    EXPECT_EQ(value("EntryHigh"), 0xABCD);
    EXPECT_EQ(mode("EntryLow"), KX_AM_READ_WRITE);
    EXPECT_EQ(mode("EntryHigh"), KX_AM_READ_ONLY);
}

TEST_F(NodeValues, anAddressIsTheSumOfItsParts)
{
    device().set32(0x200 + 0x10 + 4 + 0x20 + 8, 11);
    device().set32(0x200 + 0x10 + 2 * (4 + 0x20 + 8), 22);
    device().set32(0x304, 33);
    EXPECT_EQ(value("Composed"), 11);
    EXPECT_EQ(value("Indexed"), 33);
    ASSERT_EQ(setInteger("Selector", 2), KX_OK);
    EXPECT_EQ(value("Composed"), 22);
}

TEST_F(NodeValues, integersTellTheirOwnBoundsElseThoseOfWhatTheyLinkTo)
{
    device().set32(0x100, 64);
    const Integer width = integer("Width");
    EXPECT_EQ(width.status, KX_OK);
    EXPECT_EQ(width.current, 64);
    EXPECT_EQ(width.minimum, 16);
    EXPECT_EQ(width.maximum, 1024);
    EXPECT_EQ(width.increment, 8);
    // Width's maximum hangs on OffsetX and OffsetX's on Width: no circle, because values decide both.
    EXPECT_EQ(integer("OffsetX").maximum, 1024 - 64);
    EXPECT_EQ(integer("OffsetX").increment, 1);
    EXPECT_EQ(integer("Linked").minimum, -32768);
    EXPECT_EQ(integer("LinkedTwice").minimum, -32768);
    EXPECT_EQ(integer("LinkedTwice").maximum, 100);
    EXPECT_EQ(integer("Literal").minimum, lowest);
    EXPECT_EQ(integer("Literal").maximum, highest);
    EXPECT_EQ(integer("IncZero").increment, 1);
}

// 2^63 is the first number that no integer of 64 bits is.
TEST(IntegerBounds, thatLieBeyond64BitsAreTheLastOfThem)
{
    const auto real = [](const std::string& name, const std::string& value) {
        return "<Float Name=\"" + name + "\"><Value>" + value + "</Value></Float>";
    };
    const tests::FakeCamera camera(
        "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"><Port Name=\"Device\"/>"
        "<Integer Name=\"AtTheEnds\"><Value>1</Value><pMin>Low</pMin><pMax>High</pMax></Integer>"
        "<Integer Name=\"Beyond\"><Value>1</Value><pMin>Lower</pMin><pMax>Higher</pMax></Integer>" +
        real("Low", "-9223372036854775808") + real("High", "9223372036854775808") + real("Lower", "-1e30") +
        real("Higher", "1e30") + "</RegisterDescription>");
    for (const char* name : {"AtTheEnds", "Beyond"}) {
        KX_IntegerValue value{};
        EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, name, &value), KX_OK) << name;
        EXPECT_EQ(value.minimum, lowest) << name;
        EXPECT_EQ(value.maximum, highest) << name;
    }
}

TEST_F(NodeValues, anIndexChoosesWhereAnIntegerStands)
{
    device().set32(0x100, 5);
    EXPECT_EQ(value("ByIndex"), 5);
    ASSERT_EQ(setInteger("Selector", 0), KX_OK);
    EXPECT_EQ(value("ByIndex"), 100);
    ASSERT_EQ(setInteger("Selector", 3), KX_OK);
    EXPECT_EQ(value("ByIndex"), 42);
}

TEST_F(NodeValues, formulasAreEvaluatedInTheirArithmetic)
{
    device().set32(0x100, 10);
    device().set(0x104, {3, 0, 0, 0});
    device().set(0x108, {0, 2});
    EXPECT_EQ(value("Knife"), 24); // 5/2 is 2, and a variable named like a function is a variable
    EXPECT_FLOAT_EQ(real("Ratio").current, 2.5F);
    EXPECT_EQ(real("Ratio").maximum, FLT_MAX);
    EXPECT_FLOAT_EQ(real("Root2").current, 1.41421356F);
    EXPECT_EQ(value("Doubled"), 4);
    EXPECT_EQ(integer("Doubled").minimum, -65536);
    EXPECT_EQ(integer("Doubled").maximum, 65534);
    EXPECT_EQ(value("MaxOfWidth"), 1024 - 3);
    EXPECT_EQ(value("EntryOfMode"), 10);
}

TEST_F(NodeValues, anIntegerConverterTakesARealNumberAsTheNearestInteger)
{
    device().set(0x500, {0x42, 0xC6, 0xCC, 0xCD}); // 99.4
    EXPECT_EQ(value("HundredthOfReal"), 0);
    device().set(0x500, {0x42, 0xC7, 0x00, 0x00});                    // 99.5
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "", 0xF00, 1), KX_OK); // forget what was read
    EXPECT_EQ(value("HundredthOfReal"), 1);
    device().set(0x500, {0x43, 0x1B, 0x00, 0x00}); // 155
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "", 0xF00, 1), KX_OK);
    EXPECT_EQ(value("HundredthOfReal"), 1);
}

TEST_F(NodeValues, aBranchThatIsNotTakenCannotFail)
{
    EXPECT_EQ(value("Guarded"), 7);
    device().set32(0x100, 50);
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "", 0xF00, 1), KX_OK); // forget what was read
    EXPECT_EQ(value("Guarded"), 2);
}

TEST_F(NodeValues, aFormulaThatFailsIsAnErrorAndNeverZero)
{
    EXPECT_EQ(statusOf("Unguarded"), KX_E_GC_RUNTIME);
    EXPECT_EQ(camera.lastError(), "Unguarded: a division by zero.");
    for (const char* name : {"Broken", "UnknownName", "OnBroken", "AtBroken", "BrokenMax", "BrokenLock"})
        EXPECT_EQ(statusOf(name), KX_E_GC_RUNTIME) << name;
    statusOf("AtBroken");
    EXPECT_EQ(camera.lastError(), "Broken: its formula cannot be used: an operand is missing.");
    statusOf("UnknownName");
    EXPECT_EQ(camera.lastError(), "UnknownName: its formula cannot be used: \"NOBODY\" is unknown.");
    device().set(0x108, {0xFF, 0xFF});
    EXPECT_EQ(real("Root2").status, KX_E_GC_RUNTIME); // the root of -1
    EXPECT_TRUE(std::none_of(device().requests.begin(), device().requests.end(),
                             [](const std::string& request) { return request == "read 0 4"; }));
}

TEST_F(NodeValues, converterBoundsAreConvertedInOrder)
{
    EXPECT_FLOAT_EQ(real("Scaled").minimum, -32768 * 0.3F);
    EXPECT_FLOAT_EQ(real("Scaled").maximum, 32767 * 0.3F);
    EXPECT_FLOAT_EQ(real("Falling").minimum, -32767);
    EXPECT_FLOAT_EQ(real("Falling").maximum, 32768);
    device().set32(0x100, 4);
    const Float reciprocal = real("Reciprocal");
    EXPECT_FLOAT_EQ(reciprocal.current, 0.25F);
    EXPECT_EQ(reciprocal.maximum, FLT_MAX); // 1/0 is no bound
}

TEST_F(NodeValues, aSlopeSaysWhichEndIsTheLowerOne)
{
    EXPECT_EQ(real("SlopeIncreasing").minimum, -65536);
    EXPECT_EQ(real("SlopeIncreasing").maximum, 65534);
    EXPECT_EQ(real("SlopeDecreasing").minimum, -32767);
    EXPECT_EQ(real("SlopeDecreasing").maximum, 32768);
    EXPECT_EQ(integer("SlopeAutomatic").minimum, -32767);
    EXPECT_EQ(integer("SlopeAutomatic").maximum, 32768);
    EXPECT_EQ(real("SlopeWrong").minimum, 32768); // as the description says
    EXPECT_EQ(real("SlopeWrong").maximum, -32767);
    EXPECT_EQ(real("SlopeWrongToo").minimum, 65534);
    EXPECT_EQ(real("SlopeWrongToo").maximum, -65536);
}

TEST_F(NodeValues, aSlopeThatVariesLeavesTheLimitsOfTheType)
{
    EXPECT_EQ(real("SlopeVarying").minimum, -FLT_MAX);
    EXPECT_EQ(real("SlopeVarying").maximum, FLT_MAX);
    EXPECT_EQ(integer("SlopeVaryingInteger").minimum, lowest);
    EXPECT_EQ(integer("SlopeVaryingInteger").maximum, highest);
    EXPECT_EQ(setReal("SlopeVarying", -32767), KX_OK);
    EXPECT_EQ(setReal("SlopeVarying", -32768), KX_E_GC_RANGE); // the register has its range all the same
}

TEST_F(NodeValues, floatsAreHandedOutIn32Bits)
{
    device().set(0x500, {0x3F, 0xC0, 0x00, 0x00});
    device().set(0x508, {0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xC9, 0x3F}); // 0.2
    EXPECT_EQ(real("Float4").current, 1.5F);
    EXPECT_EQ(real("Float4").maximum, FLT_MAX);
    EXPECT_EQ(real("Float4").minimum, -FLT_MAX);
    EXPECT_EQ(real("Float8").current, 0.2F);
    EXPECT_EQ(real("Float8").maximum, FLT_MAX);
    EXPECT_EQ(real("Float3").status, KX_E_GC_RUNTIME);
    EXPECT_EQ(real("Gain").current, 0.2F);
    EXPECT_EQ(real("Gain").minimum, 0.1F);
    EXPECT_EQ(real("Gain").maximum, 0.3F);
    EXPECT_EQ(real("Free").current, 1.5F);
    EXPECT_EQ(real("OnInteger").maximum, static_cast<float>(0xFFFFFFFF));
}

TEST_F(NodeValues, booleansCompareWithTheirOnValue)
{
    bool flag = false;
    device().set32(0x100, 1);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "Flag", &flag), KX_OK);
    EXPECT_TRUE(flag);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "OddFlag", &flag), KX_OK);
    EXPECT_FALSE(flag);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "LiteralFlag", &flag), KX_OK);
    EXPECT_TRUE(flag);
    ASSERT_EQ(setInteger("Big4", 7), KX_OK);
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "OddFlag", &flag), KX_OK);
    EXPECT_TRUE(flag);
}

TEST_F(NodeValues, enumerationsListTheirUsableEntriesInOrder)
{
    device().set32(0x100, 10);
    KX_EnumValue value{};
    ASSERT_EQ(KX_CC_GetEnumValue(camera.handle, "Mode", &value), KX_OK);
    EXPECT_EQ(value.current, 10u);
    std::vector<uint32_t> supported(value.supported, value.supported + value.supportedCount);
    EXPECT_EQ(supported, (std::vector<uint32_t>{30, 10, 0xFFFFFFFF}));
    ASSERT_EQ(setInteger("Little4", 1), KX_OK);
    ASSERT_EQ(KX_CC_GetEnumValue(camera.handle, "Mode", &value), KX_OK);
    supported.assign(value.supported, value.supported + value.supportedCount);
    EXPECT_EQ(supported, (std::vector<uint32_t>{30, 10, 22, 0xFFFFFFFF}));
}

TEST_F(NodeValues, anEnumerationBeyond32BitsIsRefusedAndNeverAnother)
{
    KX_EnumValue value{};
    device().set32(0x110, 2); // High, whose lower half is 0
    EXPECT_EQ(KX_CC_GetEnumValue(camera.handle, "Wide", &value), KX_E_GC_RANGE);
    EXPECT_EQ(camera.lastError(), "Wide: its value does not fit 32 bits.");
    device().set32(0x110, 0);
    device().set32(0x114, 7);
    EXPECT_EQ(KX_CC_WriteMemory(camera.handle, "", 0xF00, 1), KX_OK); // forget what was read
    ASSERT_EQ(KX_CC_GetEnumValue(camera.handle, "Wide", &value), KX_OK);
    EXPECT_EQ(value.current, 7u);
    const std::vector<uint32_t> supported(value.supported, value.supported + value.supportedCount);
    EXPECT_EQ(supported, std::vector<uint32_t>{7}); // not what looks like another, nor what does not fit
    char name[10];
    uint32_t length = 0;
    EXPECT_EQ(KX_CC_GetEnumEntryName(camera.handle, "Wide", 0, name, sizeof name, &length), KX_E_GC_ARGUMENT);
    EXPECT_EQ(KX_CC_GetEnumEntryName(camera.handle, "Wide", 5, name, sizeof name, &length), KX_OK);
    EXPECT_STREQ(name, "Low");
}

TEST_F(NodeValues, anEnumerationOfMoreEntriesThanItsRecordHoldsIsCountedWhole)
{
    std::string xml = "<RegisterDescription><Enumeration Name=\"Many\">";
    for (int i = 0; i < 70; ++i)
        xml += "<EnumEntry Name=\"E" + std::to_string(i) + "\"><Value>" + std::to_string(1000 + i) +
               "</Value></EnumEntry>";
    tests::FakeCamera many(xml + "<Value>1069</Value></Enumeration></RegisterDescription>");
    KX_EnumValue value{};
    ASSERT_EQ(KX_CC_GetEnumValue(many.handle, "Many", &value), KX_OK);
    EXPECT_EQ(value.current, 1069u);
    EXPECT_EQ(value.supportedCount, 70u);
    EXPECT_EQ(value.supported[KX_ENUM_CAPACITY - 1], 1063u);
    EXPECT_EQ(value.reserved[0], 0u); // what stands behind the list
    char text[8] = {};
    uint32_t length = 0;
    EXPECT_EQ(KX_CC_GetEnumEntryName(many.handle, "Many", 1069, text, sizeof text, &length), KX_OK);
    EXPECT_STREQ(text, "E69");
    EXPECT_EQ(KX_CC_SetEnumValue(many.handle, "Many", 1065), KX_OK);
}

TEST_F(NodeValues, entriesHaveNamesWhetherTheyAreUsableOrNot)
{
    const auto nameOf = [&](uint32_t value) -> std::string {
        char text[16] = {};
        uint32_t length = 0;
        const KX_Status status =
            KX_CC_GetEnumEntryName(camera.handle, "Mode", value, text, sizeof text, &length);
        EXPECT_EQ(length, std::strlen(text));
        return status == KX_OK ? text : "status " + std::to_string(status - KX_E_GC_GENERIC);
    };
    EXPECT_EQ(nameOf(30), "Slow");
    EXPECT_EQ(nameOf(20), "Missing");
    EXPECT_EQ(nameOf(23), "Lost");
    EXPECT_EQ(nameOf(0xFFFFFFFF), "Negative");
    EXPECT_EQ(nameOf(31), "status 1");
    EXPECT_TRUE(takeRequests().empty());
}

TEST_F(NodeValues, namesOfEntriesNeedRoomAndAnEnumeration)
{
    char text[5] = {'?'};
    uint32_t length = 0;
    const auto ask = [&](const char* name, char* into, uint32_t capacity, uint32_t* size) {
        return KX_CC_GetEnumEntryName(camera.handle, name, 30, into, capacity, size);
    };
    EXPECT_EQ(ask("Mode", text, 4, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(text[0], '?');
    EXPECT_EQ(ask("Mode", nullptr, 0, &length), KX_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(ask("Mode", text, 5, &length), KX_OK);
    EXPECT_STREQ(text, "Slow");
    EXPECT_EQ(ask("Mode", nullptr, 5, &length), KX_E_PARAMETER);
    EXPECT_EQ(ask("Mode", text, 5, nullptr), KX_E_PARAMETER);
    EXPECT_EQ(ask("Width", text, 5, &length), KX_E_GC_LOGICAL);
    EXPECT_EQ(ask("Nobody", text, 5, &length), KX_E_GC_PROPERTY);
}

TEST_F(NodeValues, textsEndAtTheirFirstZeroAndAreCutTo255Bytes)
{
    device().set(0x600, {'a', 'b', 0, 'c'});
    EXPECT_EQ(text("Text"), "ab");
    EXPECT_EQ(text("LinkedText"), "ab");
    EXPECT_EQ(text("LiteralText"), "two words & one more");
    device().set(0x640, std::vector<uint8_t>(400, 'x'));
    EXPECT_EQ(text("LongText"), std::string(255, 'x'));
    KX_StringValue value{};
    ASSERT_EQ(KX_CC_GetStringValue(camera.handle, "LongText", &value), KX_OK);
    EXPECT_EQ(value.maximumLength, 400);
}

TEST_F(NodeValues, aTextRegisterOfNoLengthIsAnEmptyText)
{
    device().set(0x600, {'a'});
    KX_StringValue value{};
    value.current[0] = '?';
    EXPECT_EQ(KX_CC_GetStringValue(camera.handle, "EmptyText", &value), KX_OK);
    EXPECT_STREQ(value.current, "");
    EXPECT_EQ(value.maximumLength, 0);
    EXPECT_TRUE(takeRequests().empty());
    EXPECT_EQ(text("HugeText"), "a"); // however long it claims to be
}

TEST_F(NodeValues, aNodeOfAnotherTypeIsALogicalError)
{
    bool flag = false;
    KX_EnumValue entry;
    KX_FloatValue number;
    KX_StringValue words;
    EXPECT_EQ(KX_CC_GetBoolValue(camera.handle, "Width", &flag), KX_E_GC_LOGICAL);
    EXPECT_EQ(KX_CC_GetEnumValue(camera.handle, "Width", &entry), KX_E_GC_LOGICAL);
    EXPECT_EQ(KX_CC_GetFloatValue(camera.handle, "Width", &number), KX_E_GC_LOGICAL);
    EXPECT_EQ(KX_CC_GetStringValue(camera.handle, "Raw", &words), KX_E_GC_LOGICAL);
    for (const char* name : {"Mode", "Flag", "Gain", "Text", "Raw", "Start", "Root", "Device"})
        EXPECT_EQ(statusOf(name), KX_E_GC_LOGICAL) << name;
    EXPECT_EQ(KX_CC_ExecuteCommand(camera.handle, "Width"), KX_E_GC_LOGICAL);
    EXPECT_TRUE(takeRequests().empty());
}

TEST_F(NodeValues, namesCountWhereTheSchemaPutsThem)
{
    EXPECT_EQ(statusOf("Nobody"), KX_E_GC_PROPERTY);
    EXPECT_EQ(statusOf("InExtension"), KX_E_GC_PROPERTY);
    EXPECT_EQ(value("WithExtension"), 7);
    EXPECT_EQ(value("Twice"), 2); // the later one counts
}

TEST_F(NodeValues, aFailedGetterLeavesTheRecordUntouched)
{
    KX_IntegerValue record{};
    record.current = 77;
    record.maximum = 78;
    EXPECT_EQ(KX_CC_GetIntValueEx(camera.handle, "BrokenMax", &record), KX_E_GC_RUNTIME);
    EXPECT_EQ(record.current, 77);
    EXPECT_EQ(record.maximum, 78);
}

} // namespace
