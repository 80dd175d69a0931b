// Plain features from the reader's side: what of a file counts, which texts come back as they were, how many
// calls an import costs, and features that settle only when others have.
#include "ImportFixture.h"

#include <QTextCodec>

namespace
{

class ImportSimple : public ImportFixture
{
protected:
    // Camera-library reads of node values and memory behind the checks.
    int reads() const { return applied().filter(QRegularExpression("^(Get\\w+Value|ReadMemory)")).size(); }
    int readsOf(const QByteArray& name) const
    {
        return applied().filter(QRegularExpression("^Get\\w+Value\\w* " + name + "\\b")).size();
    }
    void changeAll(int value);
};

constexpr int kEach = 20;

QByteArray numbered(const char* prefix, int i)
{
    return prefix + QByteArray::number(i);
}

// kEach features of every type, and as many entries of a register block, worth `value` each.
QByteArray plainFeatures(int value)
{
    const QByteArray text = QByteArray::number(value);
    QByteArray file;
    for (int i = 0; i < kEach; ++i) {
        file += plainFeature(numbered("B", i), "Boolean", value > 1 ? "1" : "0");
        file += plainFeature(numbered("E", i), "Enumeration", text);
        file += plainFeature(numbered("I", i), "Integer", text);
        file += plainFeature(numbered("J", i), "IntReg", text);
        file += plainFeature(numbered("F", i), "Float", text + ".500000");
        file += plainFeature(numbered("S", i), "StringReg", "text " + text);
    }
    return file;
}

QByteArray allFeatures(int value)
{
    QByteArray entries;
    for (int i = 0; i < kEach; ++i)
        entries += registerEntry(QByteArray::number(0x1000 + 4 * i), QByteArray::number(value));
    return plainFeatures(value) + registerFeature("R", {}, "4", entries);
}

void ImportSimple::changeAll(int value)
{
    for (int i = 0; i < kEach; ++i) {
        camera->setBool(numbered("B", i), value > 1);
        camera->setEnumeration(numbered("E", i), quint32(value), {1, 2});
        camera->setInteger(numbered("I", i), value);
        camera->setInteger(numbered("J", i), value);
        camera->setFloat(numbered("F", i), float(value) + 0.5f);
        camera->setString(numbered("S", i), "text " + QByteArray::number(value));
        camera->setWord(0x1000 + 4 * i, quint32(value) << 24);
    }
}

} // namespace

TEST_F(ImportSimple, AnUnchangedFileCostsOneReadForEachFeatureAndEntryAndNoWrite)
{
    changeAll(1);
    importFeatures(allFeatures(1));
    EXPECT_EQ(applied().size(), 7 * kEach); // nothing but the reads
    EXPECT_EQ(reads(), 7 * kEach);
    EXPECT_EQ(writes(), QStringList());
    expectSilentEnd();
}

TEST_F(ImportSimple, AFileThatDiffersThroughoutCostsOneWriteForEachAndTwoCyclesReads)
{
    changeAll(1);
    importFeatures(allFeatures(2));
    EXPECT_EQ(reads(), 2 * 7 * kEach);
    EXPECT_EQ(writes().size(), 7 * kEach);
    EXPECT_EQ(applied().size(), 3 * 7 * kEach);
    importFeatures(allFeatures(2));
    EXPECT_EQ(writes(), QStringList());
}

TEST_F(ImportSimple, PlainFeaturesThatAllDifferCostOneCycle)
{
    changeAll(1);
    importFeatures(plainFeatures(2));
    EXPECT_EQ(reads(), 6 * kEach);
    EXPECT_EQ(writes().size(), 6 * kEach);
}

TEST_F(ImportSimple, TheRootsNameDoesNotMatter)
{
    camera->setInteger("F", 1);
    QByteArray file = fittingFile(plainFeature("F", "Integer", "2"));
    import(file.replace("FeaturesFile", "Anything"));
    EXPECT_EQ(writes(), QStringList({"SetIntValueEx F 2"}));
    expectSilentEnd();
}

TEST_F(ImportSimple, WhatAFeatureSaysOfStreamingDoesNotMatter)
{
    camera->setInteger("F", 1);
    importFeatures("<Feature><Name>F</Name><Type>Integer</Type><Value>2</Value><Streamable>No</Streamable>"
                   "</Feature>");
    EXPECT_EQ(writes(), QStringList({"SetIntValueEx F 2"}));
}

TEST_F(ImportSimple, OnlyAFeaturesOwnChildrenAreLookedAt)
{
    camera->setInteger("F", 1);
    importFeatures("<Group>" + plainFeature("F", "Integer", "2") + "</Group>");
    EXPECT_EQ(applied(), QStringList());
    importFeatures("<Feature Name=\"F\" Type=\"Integer\" Value=\"2\"/>");
    EXPECT_EQ(applied(), QStringList());
    importFeatures("<x:Feature><x:Name>F</x:Name><Type>Integer</Type><Value>2</Value></x:Feature>");
    EXPECT_EQ(applied(), QStringList());
    expectSilentEnd();
}

TEST_F(ImportSimple, TextsMayBeWrittenInAnyWayThatXmlHas)
{
    camera->setString("F", "a");
    importFeatures("<Feature><Name>F<!-- the name --></Name><Type><![CDATA[StringReg]]></Type>"
                   "<Value>a&lt;<![CDATA[&]]>&#66;</Value></Feature>");
    EXPECT_EQ(camera->node("F").text->current, std::string("a<&B"));
}

// An export inserts texts as they are.
TEST_F(ImportSimple, AFileWithAnUnescapedValueDoesNotLoad)
{
    for (const char* value : {"a<b", "a&b"}) {
        camera->setString("F", "a");
        importFeatures(plainFeature("F", "StringReg", value));
        EXPECT_EQ(inside(), QStringList({"log \"Load xml failed.\"",
                                         "info 7 failed Failed to import features.Failed to load xml."}))
            << value;
    }
    importFeatures(plainFeature("F", "StringReg", "a>b"));
    EXPECT_EQ(camera->node("F").text->current, std::string("a>b"));
}

// Files are written in the local encoding and read as UTF-8, whatever that is.
TEST_F(ImportSimple, FilesAreUtf8WhateverTheLocalEncoding)
{
    QTextCodec* const local = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    camera->setInteger("N\xE9", 1);
    importFeatures(plainFeature("N\xC3\xA9", "Integer", "2"));
    EXPECT_EQ(camera->node("N\xE9").integer->current, 2);
    importFeatures(plainFeature("N\xE9", "Integer", "3")); // as an export wrote it: no such feature
    QTextCodec::setCodecForLocale(local);
    EXPECT_EQ(camera->node("N\xE9").integer->current, 2);
    EXPECT_EQ(callNames().count("N?"), 22);
}

TEST_F(ImportSimple, StringsAreCutToTheRecordsLength)
{
    camera->setString("F", "a");
    importFeatures(plainFeature("F", "StringReg", QByteArray(300, 'x')));
    EXPECT_EQ(camera->node("F").text->current, std::string(255, 'x'));
    expectSilentEnd(); // the write counts as done: no cycle looks at what it left
    EXPECT_EQ(writes().size(), 1);
}

TEST_F(ImportSimple, FloatsAreComparedByTheirSixDigits)
{
    camera->setFloat("F", 0.1f);
    importFeatures(plainFeature("F", "Float", "0.100000"));
    EXPECT_EQ(writes(), QStringList());
    importFeatures(plainFeature("F", "Float", "0.1000000"));
    EXPECT_EQ(writes().size(), 1);
    camera->setFloat("F", 1.0f / 128.0f); // an exact half
    importFeatures(plainFeature("F", "Float", "0.007813"));
    EXPECT_EQ(writes(), QStringList());
    camera->setFloat("F", -0.0f);
    importFeatures(plainFeature("F", "Float", "0.000000"));
    EXPECT_EQ(writes(), QStringList());
}

TEST_F(ImportSimple, ANodeOfAnotherKindIsTriedInAllCycles)
{
    camera->setBool("F", true);
    importFeatures(plainFeature("F", "Integer", "1"));
    EXPECT_EQ(writes(), QStringList(QVector<QString>(11, "SetIntValueEx F 1 -> 80000105").toList()));
    expectSilentEnd();
}

TEST_F(ImportSimple, DuplicatesAreAppliedOneByOne)
{
    camera->setInteger("F", 1);
    importFeatures(plainFeature("F", "Integer", "2") + plainFeature("F", "Integer", "3") +
                   plainFeature("F", "Integer", "3"));
    EXPECT_EQ(applied(), QStringList({"GetIntValueEx F", "SetIntValueEx F 2", "GetIntValueEx F",
                                      "SetIntValueEx F 3", "GetIntValueEx F"}));
}

// The width fits only where the offset is 0; the file has them in the other order.
TEST_F(ImportSimple, AWidthThatNeedsTheOffsetAtZeroComesInTheSecondCycle)
{
    camera->setInteger("Width", 10, 1, 15);
    camera->setInteger("OffsetX", 5, 0, 10);
    camera->afterSet("OffsetX", [](tests::ScriptedDevice& self) {
        const KX_IntegerValue width = *self.node("Width").integer;
        self.setInteger("Width", width.current, 1, 20 - self.node("OffsetX").integer->current);
    });
    importFeatures(plainFeature("Width", "Integer", "20") + plainFeature("OffsetX", "Integer", "0"));
    EXPECT_EQ(writes(), QStringList({"SetIntValueEx Width 20 -> 80000102", "SetIntValueEx OffsetX 0",
                                     "SetIntValueEx Width 20"}));
    EXPECT_EQ(readsOf("Width"), 2);
    EXPECT_EQ(camera->node("Width").integer->current, 20);
    expectSilentEnd();
}

// Modes are enumerations and so come before numbers: one cycle does.
TEST_F(ImportSimple, AValueThatItsModeMakesWritableComesInTheFirstCycle)
{
    camera->setInteger("Gain", 1);
    camera->setAccessMode("Gain", KX_AM_READ_ONLY);
    camera->setEnumeration("GainAuto", 1, {0, 1});
    camera->afterSet("GainAuto",
                     [](tests::ScriptedDevice& self) { self.setAccessMode("Gain", KX_AM_READ_WRITE); });
    importFeatures(plainFeature("Gain", "Integer", "4") + plainFeature("GainAuto", "Enumeration", "0"));
    EXPECT_EQ(writes(), QStringList({"SetEnumValue GainAuto 0", "SetIntValueEx Gain 4"}));
    EXPECT_EQ(readsOf("Gain"), 1);
}

// Register blocks come last, so what one of them unlocks waits, and a mode behind that waits once more.
TEST_F(ImportSimple, AChainBackwardsThroughThePassesSettlesInTheThirdCycle)
{
    camera->setBool("Enable", false);
    camera->setAccessMode("Enable", KX_AM_READ_ONLY);
    camera->setEnumeration("Mode", 1, {0, 1});
    camera->setAccessMode("Mode", KX_AM_NOT_AVAILABLE);
    camera->afterWrite(0x1000,
                       [](tests::ScriptedDevice& self) { self.setAccessMode("Mode", KX_AM_READ_WRITE); });
    camera->afterSet("Mode",
                     [](tests::ScriptedDevice& self) { self.setAccessMode("Enable", KX_AM_READ_WRITE); });
    importFeatures(registerFeature("Unlock", {}, "4", registerEntry("0x1000", "1")) +
                   plainFeature("Enable", "Boolean", "1") + plainFeature("Mode", "Enumeration", "0"));
    EXPECT_EQ(count("SetBoolValue Enable true -> 80000106"), 2);
    EXPECT_EQ(count("SetBoolValue Enable true"), 1);
    EXPECT_EQ(count("SetEnumValue Mode 0 -> 80000106"), 1);
    EXPECT_EQ(count("SetEnumValue Mode 0"), 1);
    EXPECT_EQ(count("ReadMemory 4096 4"), 3);
    EXPECT_EQ(recorder.calls("WriteMemory").size(), 1);
    EXPECT_TRUE(*camera->node("Enable").boolean);
    expectSilentEnd();
}

TEST_F(ImportSimple, TwoThatExcludeEachOtherTakeElevenCyclesAndEndWell)
{
    for (const char* name : {"A", "B"})
        camera->setInteger(name, 0);
    camera->afterSet("A", [](tests::ScriptedDevice& self) { self.setInteger("B", 0, 0, 0); });
    importFeatures(plainFeature("A", "Integer", "1") + plainFeature("B", "Integer", "1"));
    EXPECT_EQ(readsOf("B"), 11);
    EXPECT_EQ(count("SetIntValueEx B 1 -> 80000102"), 11);
    EXPECT_EQ(count("SetIntValueEx A 1"), 1);
    expectSilentEnd(0);
}
