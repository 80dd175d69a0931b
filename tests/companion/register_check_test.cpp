// What an import would do and has done with register blocks, verdict by verdict.
#include "companion/CameraChecked.h"

using companion::CheckMode;
using ::testing::StartsWith;
using tests::block;
using tests::CameraChecked;
using tests::plain;

namespace
{

constexpr CheckMode kPlan = CheckMode::Plan;
constexpr CheckMode kVerify = CheckMode::Verify;

} // namespace

TEST_F(CameraChecked, PlansRegisters)
{
    device().setMemory(16, QByteArray::fromHex("0000000102000000"));
    device().setAccessMode("LutReg", KX_AM_READ_WRITE);
    EXPECT_EQ(told(block("len='4' reg='LutReg'", "<R address='16'>1</R><R address='0x10'>2</R>"), kPlan),
              "  would change: Lut (register 0x00000010): 0x00000001 -> 0x00000002\n  1 unchanged, 1 would "
              "change\n");
    // Only words of 4 bytes, and only on GigE, stand the other way round.
    EXPECT_EQ(told(block("len='8'", "<R address='16'>16777216,2</R><R address='16'>3,4</R>"), kPlan),
              "  would change: Lut (register 0x00000010): 0x01000000 0x00000002 -> 0x00000003 0x00000004\n  "
              "1 unchanged, 1 would change\n");
    EXPECT_EQ(told(block("len='4'", "<R address='16'>16777216</R>"), kPlan, KX_TRANSPORT_USB3),
              "  1 unchanged\n");
    EXPECT_EQ(told(block("len='5'", "<R address='16'>16777216,2</R>"), kPlan), "  1 unchanged\n");
    // Behind a converter the raw word counts.
    EXPECT_EQ(told(block("len='4'", "<R address='16' to='1' from='TO*2'>9.000000</R>"
                                    "<R address='16' to='5' from='TO*2'>10.000000</R>"),
                   kPlan),
              "  would change: Lut (register 0x00000010): 0x00000001 -> 0x00000005\n  1 unchanged, 1 would "
              "change\n");
}

TEST_F(CameraChecked, WarnsOfRegistersThatAreNotWrittenAsTheFileSays)
{
    device().setMemory(16, QByteArray::fromHex("0000000102000000"));
    const QString eight = "len='8'";
    EXPECT_EQ(told(block(eight, "<R address='18'>1,2</R>"), kPlan),
              "  skipped: Lut (register 0x00000012): imports pass over an address that is no multiple of 4\n"
              "  warning: Lut (register 0x00000012): address 0x00000012 is no multiple of 4\n  1 skipped\n");
    EXPECT_EQ(told(block(eight, "<R address='16'>1,2,3</R>"), kPlan),
              "  would change: Lut (register 0x00000010): 0x01000000 0x00000002 -> 0x00000001 0x00000002\n"
              "  warning: Lut (register 0x00000010): the file has 3 values for 2 words: the others are not "
              "written\n"
              "  1 would change\n");
    EXPECT_EQ(told(block(eight, "<R address='16'>x,4294967297</R>"), kPlan),
              "  would change: Lut (register 0x00000010): 0x01000000 0x00000002 -> 0x00000000 0x00000001\n"
              "  warning: Lut (register 0x00000010): \"x\" is written as 0: a word is a number of 32 bits\n"
              "  warning: Lut (register 0x00000010): \"4294967297\" is written as 1: a word is a number of "
              "32 bits\n"
              "  1 would change\n");
    EXPECT_EQ(told(block(eight, "<R address='16'>0x1000000</R>"), kPlan),
              "  warning: Lut (register 0x00000010): written again: the texts differ, the values do not\n  1 "
              "unchanged\n");
}

// What an export has put together from the words around.
TEST_F(CameraChecked, ComparesRegistersThatImportsPassOver)
{
    device().setMemory(16, QByteArray::fromHex("0000010203040000"));
    const QString same = "<R address='18'>16909060</R>"; // 0x01020304
    EXPECT_EQ(told(block("len='4'", same), kPlan), "  1 unchanged\n");
    EXPECT_EQ(told(block("len='4'", same), kVerify), "  1 unchanged\n");
    EXPECT_EQ(told(block("len='2'", "<R address='18'>33620995</R>"), kVerify),
              "  1 unchanged\n"); // 0x02010403
    EXPECT_EQ(told(block("len='4'", "<R address='18' to='16909060' from='TO'>1.000000</R>"), kVerify),
              "  1 unchanged\n");
    EXPECT_EQ(told(block("len='4'", "<R address='18'>7</R>"), kVerify),
              "  not applied: Lut (register 0x00000012): camera 0x01020304, file 0x00000007: imports pass "
              "over an address that is "
              "no multiple of 4\n  1 not applied\n");
    EXPECT_THAT(told(block("len='4'", same), kVerify, KX_TRANSPORT_USB3), StartsWith("  skipped: "));
    EXPECT_THAT(told(block("len='8'", same), kVerify), StartsWith("  skipped: "));
}

TEST_F(CameraChecked, TellsOfRegistersThatCannotBeWritten)
{
    device().setWord(16, 0x01000000);
    device().setAccessMode("LutReg", KX_AM_READ_ONLY);
    device().makeUnreadable(32, 4);
    const QString four = "len='4' reg='LutReg'";
    const QString registers = "<R address='16'>1</R><R address='16'>2</R>";
    EXPECT_EQ(told(block(four, registers), kPlan), "  not writable: Lut (register 0x00000010): camera "
                                                   "0x00000001, file 0x00000002: LutReg: read-only now\n"
                                                   "  1 unchanged, 1 not writable\n");
    EXPECT_EQ(told(block(four, registers), kVerify), "  not applied: Lut (register 0x00000010): camera "
                                                     "0x00000001, file 0x00000002: LutReg: read-only now\n"
                                                     "  1 unchanged, 1 not applied\n");
    EXPECT_EQ(told(block("len='4' reg='Gone'", registers), kPlan),
              "  absent: Lut: its register Gone: A scripted failure.\n  1 absent\n");
    EXPECT_THAT(told(block("len='4'", "<R address='32'>2</R>"), kPlan),
                StartsWith("  not writable: Lut (register 0x00000020): file 0x00000002: "));
    EXPECT_THAT(told(block("len='0'", registers), kPlan),
                StartsWith("  not writable: Lut (register 0x00000010): file 0x00000001: "));
}

// Files go by addresses, and exports read what lies there whether its register is implemented now or not.
TEST_F(CameraChecked, ARegisterThatIsNotImplementedMayHoldTheFilesValue)
{
    device().setWord(16, 0x01000000);
    device().setAccessMode("LutReg", KX_AM_NOT_IMPLEMENTED);
    const QString four = "len='4' reg='LutReg'";
    for (const CheckMode mode : {kPlan, kVerify}) {
        EXPECT_EQ(told(block(four, "<R address='16'>1</R>"), mode), "  1 unchanged\n");
        EXPECT_EQ(told(block(four, "<R address='16'>1</R><R address='16'>2</R>"), mode),
                  "  absent: Lut: its register LutReg: not implemented\n  1 absent\n");
        // One that the camera does not know at all holds nothing.
        EXPECT_EQ(told(block("len='4' reg='Gone'", "<R address='16'>1</R>"), mode),
                  "  absent: Lut: its register Gone: A scripted failure.\n  1 absent\n");
    }
}

TEST_F(CameraChecked, TellsWhereABrokenBlockEndsTheImport)
{
    device().setInteger("Width", 640);
    const QString sound = block("len='4'", "<R address='16'>0</R>").replace("Lut", "Later");
    const QString later = "  broken: Later: imports end before it, at Lut\n";
    EXPECT_EQ(
        told(block("", "<R address='16'>0</R>") + sound + plain("Width", "Integer", "640"), kPlan),
        ("  broken: Lut: the block has no length\n" + later + "  1 unchanged, 2 broken\n").toStdString());
    EXPECT_EQ(
        told(block("len='4'", "<R address='16'>0</R><R>0</R><R address='16'>0</R>") + sound, kPlan),
        ("  broken: Lut: the register has no address\n" + later + "  1 unchanged, 2 broken\n").toStdString());
    EXPECT_EQ(told(block("len='4'", "<R address='16'/>") + sound, kPlan),
              ("  broken: Lut (register 0x00000010): the register has no value\n" + later + "  2 broken\n")
                  .toStdString());
    EXPECT_EQ(told(block("len='99999999'", "<R address='16'>0</R>") + sound, kPlan),
              ("  broken: Lut: the block is too large\n" + later + "  2 broken\n").toStdString());
    // A block whose register is not writable is left before its length is looked at.
    device().setAccessMode("LutReg", KX_AM_READ_ONLY);
    EXPECT_EQ(told(block("reg='LutReg'", "<R address='16'>0</R>") + sound, kPlan),
              "  broken: Lut: the block has no length\n  1 unchanged, 1 broken\n");
    EXPECT_EQ(told(block("", "<R address='16'>0</R>") + sound, kVerify),
              "  broken: Lut: the block has no length\n  1 unchanged, 1 broken\n");
}

TEST_F(CameraChecked, VerifiesRegisters)
{
    device().setMemory(16, QByteArray::fromHex("0000000102000000"));
    EXPECT_EQ(
        told(block("len='8'", "<R address='16'>16777216,2</R><R address='16'>0x1000000,2</R>"
                              "<R address='16'>16777216,3</R><R address='16'>16777216,2,3</R>"
                              "<R address='17'>1,1</R>"),
             kVerify),
        "  not applied: Lut (register 0x00000010): camera 0x01000000 0x00000002, file 0x01000000 0x00000003\n"
        "  not applied: Lut (register 0x00000010): camera 0x01000000 0x00000002, file 0x01000000 0x00000002 "
        "0x00000003: the file has 3 values "
        "for 2 words: the others are not written\n"
        "  skipped: Lut (register 0x00000011): imports pass over an address that is no multiple of 4\n"
        "  warning: Lut (register 0x00000011): address 0x00000011 is no multiple of 4\n"
        "  2 unchanged, 2 not applied, 1 skipped\n");
}
