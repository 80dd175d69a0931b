#include "iefeatures/console/Text.h"

#include "companion/CompanionFixture.h"

using namespace companion;

TEST(Text, TakesAwayWhatATerminalWouldActOn)
{
    EXPECT_EQ(printable("a\033[31mb\nc\td"), QString::fromUtf8("a\uFFFD[31mb\uFFFDc\uFFFDd"));
    EXPECT_EQ(printable(QString::fromUtf8("x\u202Ey")), QString::fromUtf8("x\uFFFDy"));
    EXPECT_EQ(printable(QString::fromUtf8("门 3 ä")), QString::fromUtf8("门 3 ä"));
}

TEST(Text, MeasuresInTerminalColumns)
{
    EXPECT_EQ(displayWidth("abc"), 3);
    EXPECT_EQ(displayWidth(QString::fromUtf8("相机")), 4);
    EXPECT_EQ(displayWidth(QString::fromUtf8("e\u0301")), 1);
    EXPECT_EQ(displayWidth(QString::fromUtf8("😀")), 2);
}

TEST(Text, FitsByColumnsAndNeverSplitsACharacter)
{
    EXPECT_EQ(fitted("abc", 5), "abc  ");
    EXPECT_EQ(fitted("abcdef", 3), "abc");
    EXPECT_EQ(fitted(QString::fromUtf8("相机"), 3), QString::fromUtf8("相 "));
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
