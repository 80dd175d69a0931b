// How register blocks are applied: what skips a block or ends the import, how entries are compared, filled
// and written, and which failures bring another cycle.
#include "ImportFixture.h"

#include "jobs/rules/JobMemory.h"

#include <SuiteTools/SuiteTools.h>

namespace
{

// As a camera that shows registers in network order holds them.
constexpr quint32 swapped(quint32 word)
{
    return word >> 24 | (word >> 8 & 0xFF00u) | (word << 8 & 0xFF0000u) | word << 24;
}

class ImportRegisters : public ImportFixture
{
protected:
    ~ImportRegisters() override { ie::setAllocateHook(nullptr); }

    // One block "R" without a register's name.
    void importBlock(const QByteArray& len, const QByteArray& entries)
    {
        importFeatures(registerFeature("R", {}, len, entries));
    }
    void importWithMode(KX_XML_AccessMode mode)
    {
        camera->setAccessMode("Reg", mode);
        importFeatures(registerFeature("R", "Reg", "4", registerEntry("0x1000", "5")));
    }
    void useUsb() { device = usbDevice("Cam", "S1", 7); }
    QByteArray written(int i = 0) const
    {
        return recorder.calls("WriteMemory").value(i).arguments.value(2).toByteArray();
    }
    int reads() const { return recorder.calls("ReadMemory").size(); }
};

const QByteArray kEntry5 = registerEntry("0x1000", "5");

} // namespace

TEST_F(ImportRegisters, ABlockThatDiffersIsReadWrittenAndReadAgain)
{
    camera->setWord(0x1000, swapped(4));
    importBlock("4", kEntry5);
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 1);
    EXPECT_EQ(applied().filter("ReadMemory 4096 4").size(), 2); // a written block brings another cycle
    EXPECT_EQ(applied().size(), 3);
    EXPECT_EQ(camera->word(0x1000), swapped(5));
    expectSilentEnd();
}

TEST_F(ImportRegisters, ABlockThatNeverTakesIsWrittenInElevenCycles)
{
    camera->afterWrite(0x1000, [](tests::ScriptedDevice& self) { self.setWord(0x1000, 0); });
    importBlock("4", kEntry5);
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 11);
    EXPECT_EQ(reads(), 11);
    EXPECT_TRUE(logs().isEmpty());
    expectSilentEnd();
}

TEST_F(ImportRegisters, OneWordIsSwappedOnGigEOnly)
{
    importBlock("4", registerEntry("0x1000", "16909060"));
    EXPECT_EQ(written(), QByteArray("\x01\x02\x03\x04"));
    camera->setWord(0x1000, 0);
    for (const StructDeviceInfo& record : {usbDevice("Cam", "S1", 7), cameraLinkDevice("Cam", "S1", 7)}) {
        device = record;
        camera->setWord(0x1000, 0);
        importBlock("4", registerEntry("0x1000", "16909060"));
        EXPECT_EQ(written(), QByteArray("\x04\x03\x02\x01"));
    }
}

TEST_F(ImportRegisters, OtherLengthsAreNeverSwapped)
{
    for (const int length : {1, 2, 3, 5, 8}) {
        camera->setMemory(0x1000, QByteArray(8, '\0'));
        importBlock(QByteArray::number(length), registerEntry("0x1000", "16909060,84281096"));
        EXPECT_EQ(written(), QByteArray("\x04\x03\x02\x01\x08\x07\x06\x05").left(length)) << length;
    }
}

// Words are compared as one text.
TEST_F(ImportRegisters, TheTextOfAllWordsDecides)
{
    camera->setMemory(0x1000, QByteArray("\x01\0\0\0\x02\0\0\0", 8));
    const auto writesFor = [this](const QByteArray& text) {
        camera->setMemory(0x1000, QByteArray("\x01\0\0\0\x02\0\0\0", 8));
        importBlock("8", registerEntry("0x1000", text));
        return recorder.calls("WriteMemory").size();
    };
    EXPECT_EQ(writesFor("1,2"), 0);
    for (const char* same : {"1, 2", "01,2", "0x1,2", "1,2,", " 1,2", "1"})
        EXPECT_EQ(writesFor(same), 11) << same; // what is written never has that text
    EXPECT_EQ(writesFor("1,3"), 1);
}

// A register of 5 bytes has two words, the second with one byte.
TEST_F(ImportRegisters, ABrokenLastWordIsFilledUpWithZeros)
{
    camera->setMemory(0x1000, "\x01\x02\x03\x04\x05\x06\x07\x08");
    importBlock("5", registerEntry("0x1000", "67305985,5"));
    EXPECT_EQ(applied(), QStringList({"ReadMemory 4096 5"}));
    importBlock("5", registerEntry("0x1000", "67305985,1798"));
    EXPECT_EQ(camera->memory(0x1000, 8), QByteArray("\x01\x02\x03\x04\x06\x06\x07\x08"));
}

TEST_F(ImportRegisters, ProtectedAndSkippedFeaturesAreNotEvenAsked)
{
    importFeatures(registerFeature("DeviceUserID", "Reg", {}, kEntry5) +
                   registerFeature("GevSCDA", "Reg", {}, kEntry5));
    EXPECT_EQ(applied(), QStringList());
    expectSilentEnd();
}

TEST_F(ImportRegisters, TheRegisterHasToBeWritable)
{
    for (const auto mode : {KX_AM_NOT_IMPLEMENTED, KX_AM_NOT_AVAILABLE, KX_AM_READ_ONLY, KX_AM_UNDEFINED,
                            KX_AM_CYCLE_DETECTED}) {
        importWithMode(mode);
        EXPECT_EQ(applied(), QStringList({"GetNodeAccessMode Reg"})) << mode;
        expectSilentEnd();
    }
    for (const auto mode : {KX_AM_WRITE_ONLY, KX_AM_READ_WRITE}) {
        camera->setWord(0x1000, 0);
        importWithMode(mode);
        EXPECT_EQ(camera->word(0x1000), swapped(5)) << mode;
        EXPECT_EQ(count("GetNodeAccessMode Reg"), 2) << mode; // once a cycle
    }
}

TEST_F(ImportRegisters, ARegisterThatCannotBeAskedIsNotWritten)
{
    importFeatures(registerFeature("R", "Missing", "4", kEntry5));
    EXPECT_EQ(applied(),
              QStringList({"GetNodeAccessMode Missing -> 80000103", nodeFailure("Missing", "-7ffffefd")}));
    expectSilentEnd();
}

TEST_F(ImportRegisters, WithoutARegistersNameNothingIsAsked)
{
    for (const QByteArray& reg : {QByteArray(), QByteArray("")}) {
        camera->setWord(0x1000, 0);
        importFeatures(registerFeature("R", reg, "4", kEntry5));
        EXPECT_TRUE(recorder.calls("GetNodeAccessMode").isEmpty());
        EXPECT_EQ(camera->word(0x1000), swapped(5));
    }
}

TEST_F(ImportRegisters, AMissingLengthEndsTheImport)
{
    camera->setInteger("F", 1);
    for (const QByteArray& len : {QByteArray(), QByteArray("")}) {
        camera->setInteger("F", 1);
        camera->setWord(0x1000, 0);
        importFeatures(registerFeature("A", {}, "4", kEntry5) + registerFeature("B %1", {}, len, kEntry5) +
                       registerFeature("C", {}, "4", registerEntry("0x2000", "5")) +
                       plainFeature("F", "Integer", "2"));
        EXPECT_EQ(applied().mid(0, 3), // the passes before are over
                  QStringList({"GetIntValueEx F", "SetIntValueEx F 2", "ReadMemory 4096 4"}));
        EXPECT_EQ(applied().mid(4), QStringList({"log \"Import B %1 failed. no value len\""}));
        expectSilentEnd(0xE0000005);
    }
}

// The register is asked before the length is looked at.
TEST_F(ImportRegisters, ASkippedBlockNeedsNoLength)
{
    camera->setAccessMode("Reg", KX_AM_READ_ONLY);
    importFeatures(registerFeature("R", "Reg", {}, kEntry5));
    EXPECT_EQ(applied(), QStringList({"GetNodeAccessMode Reg"}));
    expectSilentEnd();
}

TEST_F(ImportRegisters, BlocksUpTo256BytesNeedNoMemory)
{
    static int allocated;
    allocated = 0;
    ie::setAllocateHook([](std::size_t bytes) -> void* {
        allocated = int(bytes);
        return nullptr;
    });
    importBlock("256", registerEntry("0x1000", "5"));
    EXPECT_EQ(allocated, 0);
    EXPECT_EQ(written().size(), 256);

    importBlock("257", registerEntry("0x1000", "5"));
    EXPECT_EQ(allocated, 260);
    EXPECT_EQ(applied(), QStringList({"log \"Import R failed.malloc 260 failed.\""}));
    expectSilentEnd(0xE0000005);
}

TEST_F(ImportRegisters, LongBlocksAreWrittenWhole)
{
    camera->setMemory(0x1000, QByteArray(258, '\x07'));
    importBlock("257", registerEntry("0x1000", "1,2"));
    EXPECT_EQ(written(), QByteArray("\x01\0\0\0\x02\0\0\0", 8) + QByteArray(249, '\x07'));
    EXPECT_EQ(camera->memory(0x1000 + 256, 2), QByteArray("\x07\x07"));
}

// The words are counted in single precision, which has no odd numbers up there.
TEST_F(ImportRegisters, AnAbsurdLengthIsAnAllocationThatFailed)
{
    const QList<QPair<QByteArray, QString>> lengths = {{"16777217", "16777216"},
                                                       {"0x7FFFFFFF", "2147483648"},
                                                       {"0xFFFFFFFFF", "68719476736"},
                                                       {"9223372036854775807", "9223372036854775808"}};
    for (const auto& [length, bytes] : lengths) {
        importBlock(length, kEntry5);
        EXPECT_EQ(applied(), QStringList({"log \"Import R failed.malloc " + bytes + " failed.\""}));
        expectSilentEnd(0xE0000005);
    }
}

TEST_F(ImportRegisters, AnEntryWithoutAddressOrTextEndsTheImport)
{
    for (const char* broken :
         {"<RegValue>5</RegValue>", "<RegValue address=\"\">5</RegValue>", "<RegValue address=\"0x1002\"/>",
          "<RegValue address=\"0x1000\" to=\"5\"></RegValue>", "<RegValue address=\"0x1000\">  </RegValue>",
          "<Anything/>"}) {
        for (const char* length : {"4", "400"}) {
            camera->setMemory(0x2000, QByteArray(400, '\0'));
            importFeatures(registerFeature("A", {}, length, registerEntry("0x2000", "5") + broken) +
                           registerFeature("B", {}, "4", kEntry5));
            EXPECT_EQ(reads(), 1) << broken;
            EXPECT_EQ(recorder.calls("WriteMemory").size(), 1) << broken; // the entry before
            EXPECT_TRUE(logs().isEmpty());
            expectSilentEnd(0xE0000005);
        }
    }
}

TEST_F(ImportRegisters, EntriesAtOddAddressesAreLeftOut)
{
    QByteArray entries;
    for (const char* address : {"0x1001", "0x1002", "4099", "0x100000003"})
        entries += registerEntry(address, "5");
    importBlock("4", entries);
    EXPECT_EQ(applied(), QStringList());
    expectSilentEnd();
}

TEST_F(ImportRegisters, EntriesMayHaveAnyTag)
{
    importBlock("4", "<Anything address=\"4096\">5</Anything>");
    EXPECT_EQ(camera->word(0x1000), swapped(5));
}

TEST_F(ImportRegisters, NumbersAreReadByTheCommonLibrary)
{
    importBlock("0x8", registerEntry("0x1000", "7,0xA", "variables=\"[F:3]\""));
    EXPECT_EQ(tests::suiteCalls("string2Int").mid(0, 4),
              QStringList({"string2Int(0x8)", "string2Int(0x1000)", "string2Int(7)", "string2Int(0xA)"}));
    EXPECT_EQ(camera->memory(0x1000, 8), QByteArray("\x07\0\0\0\x0A\0\0\0", 8));
}

TEST_F(ImportRegisters, AnUnreadableBlockIsWrittenAllTheSame)
{
    camera->makeUnreadable(0x1000, 4);
    importBlock("4", kEntry5);
    EXPECT_EQ(applied().mid(0, 2),
              QStringList({"ReadMemory 4096 4 -> 80000106", registerFailure("R", "4096")}));
    EXPECT_EQ(written(), QByteArray("\0\0\0\x05", 4));
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 11); // each time
    expectSilentEnd();
}

TEST_F(ImportRegisters, WordsThatTheFileDoesNotGiveKeepWhatTheCameraHas)
{
    camera->setMemory(0x1000, QByteArray(16, '\x01'));
    importBlock("16", registerEntry("0x1000", "2,,3"));
    EXPECT_EQ(written(), QByteArray("\x02\0\0\0\0\0\0\0\x03\0\0\0\x01\x01\x01\x01", 16)); // "" is 0
}

TEST_F(ImportRegisters, ValuesBeyondTheBufferAreIgnored)
{
    QByteArray values = "1";
    for (int i = 2; i <= 200; ++i)
        values += "," + QByteArray::number(i);
    for (const int length : {4, 8, 256, 257, 300}) {
        camera->setMemory(0x1000, QByteArray(800, '\0'));
        importBlock(QByteArray::number(length), registerEntry("0x1000", values));
        ASSERT_EQ(written().size(), length);
        const int last = (length - 1) / 4;
        EXPECT_EQ(quint8(written()[length == 4 ? 3 : last * 4]), quint8(last + 1)) << length;
        EXPECT_EQ(camera->memory(0x1000 + length, 16), QByteArray(16, '\0'));
    }
}

TEST_F(ImportRegisters, ValuesAreCutTo32Bits)
{
    useUsb();
    importBlock("8", registerEntry("0x1000", "0x1122334455,junk!"));
    EXPECT_EQ(camera->word(0x1000), 0x22334455u);
    EXPECT_EQ(camera->word(0x1004), 0u);
}

// One buffer serves all entries of a block; it is zeroed once.
TEST_F(ImportRegisters, AnUnreadableEntryGetsTheWordsOfTheEntryBefore)
{
    camera->setMemory(0x1000, QByteArray(8, '\x01'));
    camera->makeUnreadable(0x2000, 8);
    importBlock("8",
                registerEntry("0x2000", "9") + registerEntry("0x1000", "5,6") + registerEntry("0x2000", "7"));
    EXPECT_EQ(written(0), QByteArray("\x09\0\0\0\0\0\0\0", 8));
    EXPECT_EQ(written(1), QByteArray("\x05\0\0\0\x06\0\0\0", 8));
    EXPECT_EQ(written(2), QByteArray("\x07\0\0\0\x06\0\0\0", 8));
}

TEST_F(ImportRegisters, EachBlockBeginsWithZeros)
{
    camera->setMemory(0x1000, QByteArray(8, '\x01'));
    camera->makeUnreadable(0x2000, 8);
    importFeatures(registerFeature("R", {}, "8", registerEntry("0x1000", "5,6")) +
                   registerFeature("Q", {}, "8", registerEntry("0x2000", "7")));
    EXPECT_EQ(written(1), QByteArray("\x07\0\0\0\0\0\0\0", 8));
}

TEST_F(ImportRegisters, TheRawWordOfAConverterDecides)
{
    camera->setWord(0x1000, swapped(7));
    importBlock("4", registerEntry("0x1000", "99.000000", "to=\"7\" from=\"TO+1\""));
    EXPECT_EQ(applied(), QStringList({"ReadMemory 4096 4"}));
    EXPECT_TRUE(tests::suiteCalls("Compute").isEmpty());
}

// The computed value equals the file's, and the raw word is written all the same.
TEST_F(ImportRegisters, TheConvertedValueIsComputedAndNotAsked)
{
    camera->setWord(0x1000, swapped(3));
    importBlock("4", registerEntry("0x1000", "6.000000", "to=\"7\" from=\"TO&lt;&lt;TO-2\""));
    EXPECT_EQ(tests::suiteCalls("Compute"), QStringList({"Compute(3<<3-2)"}));
    bool ok = false;
    EXPECT_EQ(VELAInterface::Compute("3<<3-2", ok), 6);
    EXPECT_EQ(written(), QByteArray("\0\0\0\x07", 4));
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 1);
    expectSilentEnd();
}

TEST_F(ImportRegisters, AConverterGivesTheFirstWordOnly)
{
    useUsb();
    camera->setMemory(0x1000, QByteArray(8, '\x01'));
    importBlock("8", registerEntry("0x1000", "5,6,7", "to=\"0x22\" from=\"TO\""));
    EXPECT_EQ(written(), QByteArray("\x22\0\0\0\x01\x01\x01\x01", 8));
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 11); // two words never have the text of one
    EXPECT_EQ(tests::suiteCalls("Compute").value(0), "Compute(16843009,16843009)");
}

TEST_F(ImportRegisters, AnEmptyRawWordIsNone)
{
    camera->setWord(0x1000, swapped(5));
    importBlock("4", registerEntry("0x1000", "5", "to=\"\" from=\"TO\""));
    EXPECT_EQ(applied(), QStringList({"ReadMemory 4096 4"}));
}

TEST_F(ImportRegisters, AFailedWriteIsLoggedAndTriedInEachCycle)
{
    camera->makeUnwritable(0x1000, 4);
    importBlock("4", kEntry5);
    EXPECT_EQ(count(registerFailure("R", "4096")), 11);
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 11);
    // From the second cycle on the block is read back, then the feature is asked: its name, not the register.
    EXPECT_EQ(reads(), 11 + 10);
    EXPECT_EQ(count("GetNodeAccessMode R -> 80000103"), 10);
    expectSilentEnd();
}

TEST_F(ImportRegisters, TheReadBackIsForOneWordOnly)
{
    camera->makeUnwritable(0x1000, 8);
    camera->setAccessMode("R", KX_AM_READ_WRITE);
    importBlock("8", registerEntry("0x1000", "5,6"));
    EXPECT_EQ(reads(), 11);
    EXPECT_EQ(count("GetNodeAccessMode R"), 10);
}

// The write has come through although its answer says otherwise: nothing more is asked.
TEST_F(ImportRegisters, AReadBackThatAgreesExcusesTheFailure)
{
    camera->addRule({"WriteMemory", KX_E_NO_ANSWER, std::nullopt, 0x1000});
    int read = 0;
    tests::setCallHook([&](const QByteArray&, const tests::TraceEntry& call) {
        if (call.operation == "ReadMemory" && ++read == 3) // cycle 2: read, write, read back
            camera->setWord(0x1000, swapped(5));
    });
    importBlock("4", kEntry5);
    EXPECT_TRUE(recorder.calls("GetNodeAccessMode").isEmpty());
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 2);
    EXPECT_EQ(reads(), 4); // the third cycle finds nothing to do
    expectSilentEnd();
}

TEST_F(ImportRegisters, BlocksDoNotEndTheirCycleWhenOneFails)
{
    camera->makeUnwritable(0x1000, 4);
    importBlock("4", kEntry5 + registerEntry("0x2000", "6"));
    EXPECT_EQ(camera->word(0x2000), swapped(6));
    EXPECT_EQ(applied().filter("ReadMemory 8192 4").size(), 11);
}

TEST_F(ImportRegisters, AddressesBeyond32BitsAreDecimalInTheLog)
{
    camera->makeUnreadable(0x100000000, 4);
    importBlock("4", registerEntry("0x100000000", "5"));
    EXPECT_EQ(logs().value(0), registerFailure("R", "4294967296"));
    EXPECT_EQ(recorder.logs().value(0).level, QtCriticalMsg);
}
