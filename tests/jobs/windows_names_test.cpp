// Names that a camera may have and Windows does not take for a file's.
#include "jobs/file/WholeFile.h"
#include "jobs/file/WindowsNames.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

namespace
{

using ie::isWindowsFileName;

TEST(WindowsFileName, IsAnythingThatStandsForAFile)
{
    for (const char* name : {"M_1.fpk", "with blank_1.fpk", ".hidden", "a.b.c", "CONSOLE_1.fpk", "COM_1.fpk",
                             "COM10", "\xE7\x9B\xB8\xE6\x9C\xBA_1.fpk", "{1}&'~#%.fpk"})
        EXPECT_TRUE(isWindowsFileName(QString::fromUtf8(name))) << name;
}

TEST(WindowsFileName, IsNoDevice)
{
    for (const char* name : {"CON", "con.fpk", "Nul.tar.gz", "aux", "PRN.txt", "COM1", "com0.fpk", "LPT9.a",
                             "CON .fpk", "COM\xC2\xB2.fpk", "conin$", "CONOUT$.x"})
        EXPECT_FALSE(isWindowsFileName(QString::fromUtf8(name))) << name;
}

TEST(WindowsFileName, HasNoSignThatStandsForSomethingElse)
{
    for (const char* name : {"a:b", "a\\b", "a/b", "a*", "a?", "a<b", "a>b", "a|b", "a\"b", "a\tb", ""})
        EXPECT_FALSE(isWindowsFileName(QString::fromUtf8(name))) << name;
}

TEST(WindowsFileName, KeepsItsEnd)
{
    for (const char* name : {"M_1.fpk ", "M_1.", "M_1..", " ", ".", "..", "a\n"})
        EXPECT_FALSE(isWindowsFileName(QString::fromUtf8(name))) << name;
}

#if defined(_WIN32)
TEST(FileOfACamera, IsRefusedWhereTheSystemTakesItsNameForSomethingElse)
{
    EXPECT_FALSE(ie::liesInFolder("NUL.fpk"));
    EXPECT_TRUE(ie::liesInFolder("M_1.fpk"));
}
#else
TEST(FileOfACamera, MayHaveAnyNameElsewhere)
{
    EXPECT_TRUE(ie::liesInFolder("NUL.fpk"));
    EXPECT_TRUE(ie::liesInFolder("a:b.fpk"));
}
#endif

} // namespace
