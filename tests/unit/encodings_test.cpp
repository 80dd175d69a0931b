// Text of devices to QString and back.
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <string>

using namespace VELAInterface;

namespace
{

const std::string kUtf8 = "\xE7\x9B\xB8\xE6\x9C\xBA"; // two characters, U+76F8 U+673A
const std::string kGb18030 = "\xCF\xE0\xBB\xFA";      // the same two
const QString kText = QString::fromUtf8("\xE7\x9B\xB8\xE6\x9C\xBA");

QString decode(const std::string& bytes, int length = -1)
{
    const QString text =
        GetEncodeQStringFromUnChar(reinterpret_cast<const unsigned char*>(bytes.c_str()), length);
    EXPECT_EQ(char2QStringLocale(bytes.c_str(), length), text);
    return text;
}

// What lies in a buffer of '#' after writing.
std::string encode(const QString& text, int capacity)
{
    std::string buffer(32, '#');
    CovertEncodeCharFromQString(text, &buffer[0], capacity);
    return buffer.substr(0, buffer.find_last_not_of('#') + 1);
}

QString latin1(const char* text)
{
    return QString::fromLatin1(text);
}

class Encodings : public testing::Test
{
protected:
    void TearDown() override { SetEncodingType(ENCODING_AUTOMATIC); }
};

} // namespace

TEST_F(Encodings, automaticTakesUtf8WhenTheBytesAreValid)
{
    EXPECT_EQ(decode(kUtf8), kText);
    EXPECT_EQ(decode("plain"), QStringLiteral("plain"));
    EXPECT_EQ(decode(""), QString());
}

TEST_F(Encodings, automaticTakesGb18030Otherwise)
{
    EXPECT_EQ(decode(kGb18030), kText);
    EXPECT_EQ(decode("A" + kGb18030 + "B"), "A" + kText + "B");
    EXPECT_EQ(decode("\xE4\xBD"), QString(QChar(0x6D63))); // begins like UTF-8, but ends too early
}

TEST_F(Encodings, aChosenEncodingIsTakenAsItIs)
{
    SetEncodingType(ENCODING_UTF8);
    EXPECT_EQ(decode(kUtf8), kText);
    EXPECT_TRUE(decode(kGb18030).contains(QChar::ReplacementCharacter));
    SetEncodingType(ENCODING_GB18030);
    EXPECT_EQ(decode(kGb18030), kText);
    EXPECT_NE(decode(kUtf8), kText);
    SetEncodingType(ENCODING_LATIN1);
    EXPECT_EQ(decode("\xE9t\xE9"), latin1("\xE9t\xE9"));
    EXPECT_EQ(decode(kUtf8), latin1(kUtf8.c_str()));
}

TEST_F(Encodings, theValuesAreTheStoredOnes)
{
    SetEncodingType(static_cast<_ENCODING_TYPE_>(1));
    EXPECT_TRUE(decode(kGb18030).contains(QChar::ReplacementCharacter));
    SetEncodingType(static_cast<_ENCODING_TYPE_>(2));
    EXPECT_NE(decode(kUtf8), kText);
    SetEncodingType(static_cast<_ENCODING_TYPE_>(3));
    EXPECT_EQ(decode("\xE9"), latin1("\xE9"));
    for (const int unknown : {-1, 4, 99, 0}) {
        SetEncodingType(static_cast<_ENCODING_TYPE_>(unknown));
        EXPECT_EQ(decode(kUtf8), kText);
        EXPECT_EQ(decode(kGb18030), kText);
    }
}

TEST_F(Encodings, aZeroEndsTheText)
{
    EXPECT_EQ(decode(std::string("ab\0cd", 5)), QStringLiteral("ab"));
    EXPECT_EQ(decode(std::string("ab\0cd", 5), 5), QStringLiteral("ab"));
    EXPECT_EQ(decode(std::string("\0ab", 3), 3), QString());
    EXPECT_EQ(decode(std::string("ab\0\xFF\xFF", 5), 5), QStringLiteral("ab"));
    EXPECT_EQ(decode(kUtf8 + std::string("\0\xFF", 2), 8), kText);
}

TEST_F(Encodings, theLengthEndsTheTextWithoutAZero)
{
    EXPECT_EQ(decode("abcdef", 3), QStringLiteral("abc"));
    EXPECT_EQ(decode("abcdef", 0), QString());
    EXPECT_EQ(decode("abcdef", 100), QStringLiteral("abcdef")); // the zero comes first
}

TEST_F(Encodings, aCharacterThatTheLengthCutsIsLeftOut)
{
    EXPECT_EQ(decode(kUtf8, 5), kText.left(1));
    EXPECT_EQ(decode(kUtf8, 4), kText.left(1));
    EXPECT_EQ(decode(kUtf8, 3), kText.left(1));
    EXPECT_EQ(decode(kGb18030, 3), kText.left(1));
    SetEncodingType(ENCODING_UTF8);
    EXPECT_EQ(decode(kUtf8, 5), kText.left(1));
    SetEncodingType(ENCODING_GB18030);
    EXPECT_EQ(decode(kGb18030, 3), kText.left(1));
}

TEST_F(Encodings, nullPointersAreEmptyTexts)
{
    EXPECT_EQ(GetEncodeQStringFromUnChar(nullptr, -1), QString());
    EXPECT_EQ(GetEncodeQStringFromUnChar(nullptr, 16), QString());
    EXPECT_EQ(char2QStringLocale(nullptr, -1), QString());
    CovertEncodeCharFromQString(kText, nullptr, 255);
}

TEST_F(Encodings, theWayBackFollowsTheEncoding)
{
    EXPECT_EQ(encode(kText, 32), kUtf8);
    SetEncodingType(ENCODING_UTF8);
    EXPECT_EQ(encode(kText, 32), kUtf8);
    SetEncodingType(ENCODING_GB18030);
    EXPECT_EQ(encode(kText, 32), kGb18030);
    SetEncodingType(ENCODING_LATIN1);
    EXPECT_EQ(encode(latin1("\xE9t\xE9"), 32), "\xE9t\xE9");
    EXPECT_EQ(encode(kText, 32), "??");
}

TEST_F(Encodings, theWayBackWritesWholeCharactersOnly)
{
    EXPECT_EQ(encode(kText, 6), kUtf8);
    EXPECT_EQ(encode(kText, 5), kUtf8.substr(0, 3));
    EXPECT_EQ(encode(kText, 2), "");
    EXPECT_EQ(encode(kText, 0), "");
    EXPECT_EQ(encode(kText, -1), "");
    EXPECT_EQ(encode(QStringLiteral("a") + kText + QStringLiteral("b"), 3),
              "a"); // what follows does not slip in
    EXPECT_EQ(encode(QString::fromUtf8("\xF0\x9F\x93\xB7"), 3), "");
    EXPECT_EQ(encode(QString::fromUtf8("\xF0\x9F\x93\xB7"), 4), "\xF0\x9F\x93\xB7");
    SetEncodingType(ENCODING_GB18030);
    EXPECT_EQ(encode(kText, 3), kGb18030.substr(0, 2));
    EXPECT_EQ(encode(QString::fromUtf8("\xF0\x9F\x93\xB7"), 4).size(), 4u);
    EXPECT_EQ(encode(QString::fromUtf8("\xF0\x9F\x93\xB7"), 3), "");
}

TEST_F(Encodings, theWayBackWritesNoZero)
{
    EXPECT_EQ(encode(QStringLiteral("abc"), 10), "abc"); // the '#' behind it stand
    std::string zeroed(256, '\0');
    CovertEncodeCharFromQString(QString(300, QLatin1Char('x')), &zeroed[0], 255);
    EXPECT_EQ(zeroed, std::string(255, 'x') + '\0');
}

TEST_F(Encodings, halfOfASurrogatePairIsNoCharacter)
{
    EXPECT_EQ(encode(QString(QChar(0xD83D)), 8), "?");
    EXPECT_EQ(encode(QString(QChar(0xD83D)) + QStringLiteral("ab"), 8), "?ab");
    EXPECT_EQ(encode(QString(QChar(0xDCF7)) + kText, 8), "?" + kUtf8);
}
