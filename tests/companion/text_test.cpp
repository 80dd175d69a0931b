#include "iefeatures/console/Text.h"

#include "companion/CompanionFixture.h"

using namespace companion;

TEST(Text, TakesAwayWhatATerminalWouldActOn)
{
    EXPECT_EQ(printable("a\033[31mb\nc\td"), QString::fromUtf8("a\uFFFD[31mb\uFFFDc\uFFFDd"));
    EXPECT_EQ(printable(QString::fromUtf8("x\u202Ey")), QString::fromUtf8("x\uFFFDy"));
    EXPECT_EQ(printable(QString::fromUtf8("门 3 ä")), QString::fromUtf8("门 3 ä"));
}

TEST(Text, EscapesSoThatDifferentTextsStayDifferent)
{
    EXPECT_EQ(escapedText(QString::fromUtf8("a\033\n\u202E\U000E0001\\u001b 门")),
              QString::fromUtf8("a\\u001b\\u000a\\u202e\\U000e0001\\\\u001b 门"));
}

TEST(Text, MeasuresInTerminalColumns)
{
    const struct
    {
        const char* text;
        int columns;
    } cases[] = {
        {"", 0},
        {"abc", 3},
        {"ä", 1},
        {"相机", 4},            // ideographs
        {"カメラ", 6},          // katakana,
        {"ｶﾒﾗ", 3},             // and its half-width form
        {"카메라", 6},          // hangul
        {"Ａ１", 4},            // full-width forms
        {"\u3000", 2},          // the ideographic blank
        {"\U00020000", 2},      // beyond the first plane
        {"e\u0301", 1},         // an accent on its letter,
        {"a\u20DD", 1},         // a circle around it
        {"\u0928\u0941", 1},    // a vowel below it
        {"😀", 2},               // emoji
        {"⌚", 2},               // the older ones are wide as well,
        {"❤", 1},               // those that were signs before are not
        {"👨\u200D👩\u200D👧", 6}, // a joined family: its members
        {"│", 1},               // ambiguous: narrow
        {"\uFFFD", 1},          // what printable() puts in
    };
    for (const auto& row : cases)
        EXPECT_EQ(displayWidth(QString::fromUtf8(row.text)), row.columns) << row.text;
}

TEST(Text, FitsByColumnsAndNeverSplitsACharacter)
{
    EXPECT_EQ(fitted("abc", 5), "abc  ");
    EXPECT_EQ(fitted("abcdef", 3), "abc");
    EXPECT_EQ(fitted(QString::fromUtf8("相机"), 3), QString::fromUtf8("相 "));
    EXPECT_EQ(fitted(QString::fromUtf8("😀😀"), 3), QString::fromUtf8("😀 "));
    EXPECT_EQ(fitted(QString::fromUtf8("abe\u0301f"), 3), QString::fromUtf8("abe\u0301"))
        << "with its accent";
}

TEST(Text, AlignsColumnsAndLeavesNothingBehindTheLast)
{
    const QString rows =
        alignedRows({Align::Left, Align::Right, Align::Left},
                    {{"NAME", "N", "PATH"}, {QString::fromUtf8("门"), "1234", "/x"}, {"abcdefg", "5", ""}});
    EXPECT_EQ(rows, QString::fromUtf8("NAME        N  PATH\n"
                                      "门       1234  /x\n"
                                      "abcdefg     5  \n"));
}

TEST(Text, CutsValuesInTheMiddle)
{
    EXPECT_EQ(shortened("abcdefghij", 10), "abcdefghij");
    EXPECT_EQ(shortened("abcdefghijk", 10), "abcd...ijk");
    EXPECT_EQ(shortened("abcdefghijk", 4), "abjk");
    EXPECT_EQ(shortened(QString::fromUtf8("相机相机相机"), 9), QString::fromUtf8("相...机"));
    for (int columns = 0; columns < 12; ++columns)
        EXPECT_LE(displayWidth(shortened(QString::fromUtf8("a相b机cdefe\u0301"), columns)), columns);
}

TEST(Text, BreaksLinesAtBlanks)
{
    EXPECT_EQ(wrapped("one two three", 7), (QStringList{"one two", "three"}));
    EXPECT_EQ(wrapped("incomprehensible one", 5), (QStringList{"incomprehensible", "one"}));
    EXPECT_EQ(wrapped("one two", 0), QStringList{"one two"});
    EXPECT_EQ(wrapped("  one", 9), QStringList{"  one"});
}
