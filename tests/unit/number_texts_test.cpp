// string2Int and int2StringMacAddress.
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <limits>

using namespace VELAInterface;

namespace
{

qint64 parse(const char* text)
{
    return string2Int(QString::fromUtf8(text));
}

constexpr qint64 kLowest = std::numeric_limits<qint64>::min();
constexpr qint64 kHighest = std::numeric_limits<qint64>::max();

} // namespace

TEST(String2Int, readsDecimalAndPrefixedHexadecimal)
{
    EXPECT_EQ(parse("0"), 0);
    EXPECT_EQ(parse("10"), 10);
    EXPECT_EQ(parse("007"), 7);
    EXPECT_EQ(parse("0x10"), 16);
    EXPECT_EQ(parse("0xff"), 255);
    EXPECT_EQ(parse("0xAbCdEf"), 0xABCDEF);
    EXPECT_EQ(parse("0xFFFFFFFF"), 4294967295);
    EXPECT_EQ(parse("4294967296"), 4294967296);
}

TEST(String2Int, unprefixedLettersAreHexadecimal)
{
    EXPECT_EQ(parse("FF"), 255);
    EXPECT_EQ(parse("1a"), 26);
    EXPECT_EQ(parse("BEEF"), 0xBEEF);
    EXPECT_EQ(parse("1e3"), 0x1E3);
}

TEST(String2Int, everythingElseIsZero)
{
    for (const char* text : {"", "0x", "-5", "-0x5", "+5", " 5", "5 ", "5\n", "0X10", "1.5", "1,5", "0xG",
                             "12G", "0x0x1", "x10", "5h", "\xEF\xBC\x95", "\xD9\xA5"})
        EXPECT_EQ(parse(text), 0) << text;
    EXPECT_EQ(string2Int(QString()), 0);
    EXPECT_EQ(string2Int(QString(QChar(0x0135))), 0); // not the digit of its low byte
}

TEST(String2Int, sixtyFourBitsFitAndNoMore)
{
    EXPECT_EQ(parse("9223372036854775807"), kHighest);
    EXPECT_EQ(parse("0x7FFFFFFFFFFFFFFF"), kHighest);
    EXPECT_EQ(parse("0x8000000000000000"), kLowest);
    EXPECT_EQ(parse("9223372036854775808"), kLowest);
    EXPECT_EQ(parse("0xFFFFFFFFFFFFFFFF"), -1);
    EXPECT_EQ(parse("18446744073709551615"), -1);
    EXPECT_EQ(parse("18446744073709551616"), 0);
    EXPECT_EQ(parse("0x10000000000000000"), 0);
    EXPECT_EQ(parse("99999999999999999999999"), 0);
    EXPECT_EQ(parse("0x0000000000000000000000FF"), 255);
    EXPECT_EQ(parse("00000000000000000000000255"), 255);
}

TEST(MacAddress, highHalfFirst)
{
    EXPECT_EQ(int2StringMacAddress(0xAABB, 0xCCDDEEFF), QStringLiteral("AA:BB:CC:DD:EE:FF"));
    EXPECT_EQ(int2StringMacAddress(0x0001, 0x02030405), QStringLiteral("00:01:02:03:04:05"));
    EXPECT_EQ(int2StringMacAddress(0, 0), QStringLiteral("00:00:00:00:00:00"));
    EXPECT_EQ(int2StringMacAddress(0xFFFF0001, 2), QStringLiteral("00:01:00:00:00:02"));
}
