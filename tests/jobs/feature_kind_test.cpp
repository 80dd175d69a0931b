// The six kinds of plain features: words, passes, reading, writing, printing, comparing.
#include "HandleFixture.h"

#include "jobs/nodes/FeatureKind.h"
#include "jobs/rules/ImportRules.h"

using namespace ie;

namespace
{

class FeatureKinds : public HandleFixture
{
protected:
    NodeAccess access{handle};
    NodeAccess silent{handle, NodeAccess::FailureLog::Silent};
};

QString written(FeatureKind kind, const QString& text)
{
    const ImportedText imported = importedText(kind, text);
    return imported.text + (imported.isFaithful ? "" : " unfaithful");
}

} // namespace

TEST_F(FeatureKinds, AreNamedByTheSixTypeWordsAndNoOther)
{
    QStringList passes;
    for (const char* word : {"Boolean", "Enumeration", "Integer", "IntReg", "Float", "StringReg"}) {
        const auto kind = featureKind(word);
        ASSERT_TRUE(kind) << word;
        EXPECT_EQ(typeWord(*kind), QString(word));
        passes += QString::number(importPass(*kind));
    }
    EXPECT_EQ(passes.join(' '), QString("1 2 3 3 3 3"));
    for (const char* word : {"", "boolean", "String", "Command", "Register", "Float "})
        EXPECT_FALSE(featureKind(word)) << word;
}

TEST_F(FeatureKinds, AreReadAsFilesHaveThem)
{
    camera->setBool("B", true);
    camera->setEnumeration("E", 4294967295u, {1, 4294967295u});
    camera->setInteger("I", -5, -9, 9, 2);
    camera->setFloat("F", 0.1f);
    camera->setString("S", "a<b", 17);
    EXPECT_EQ(readFeature(access, FeatureKind::Boolean, "B").text, QString("1"));
    const FeatureReading entry = readFeature(access, FeatureKind::Enumeration, "E");
    EXPECT_EQ(entry.text, QString("4294967295"));
    EXPECT_EQ(entry.enumeration->supportedCount, 2u);
    for (const FeatureKind kind : {FeatureKind::Integer, FeatureKind::IntReg}) {
        const FeatureReading number = readFeature(access, kind, "I");
        EXPECT_EQ(number.text, QString("-5"));
        EXPECT_EQ(number.integer->increment, 2);
    }
    EXPECT_EQ(readFeature(access, FeatureKind::Float, "F").text, QString("0.100000"));
    const FeatureReading text = readFeature(access, FeatureKind::StringReg, "S");
    EXPECT_EQ(text.text, QString("a<b"));
    EXPECT_EQ(text.longestText, 17);
    EXPECT_EQ(takeTrace(), QStringList({"GetBoolValue B", "GetEnumValue E", "GetIntValueEx I",
                                        "GetIntValueEx I", "GetFloatValue F", "GetStringValue S"}));
}

TEST_F(FeatureKinds, AnEmptyTextIsGoodAndAFailedOneIsNot)
{
    camera->setString("S", "");
    const FeatureReading empty = readFeature(access, FeatureKind::StringReg, "S");
    EXPECT_TRUE(empty.isGood());
    EXPECT_EQ(empty.text, QString(""));
    const FeatureReading missing = readFeature(access, FeatureKind::Integer, "None");
    EXPECT_FALSE(missing.isGood());
    EXPECT_EQ(missing.status, KX_E_GC_PROPERTY);
    EXPECT_FALSE(missing.integer);
}

TEST_F(FeatureKinds, WithoutAHandleNothingIsAskedAndTheStatusSaysNothing)
{
    const KX_HANDLE none = nullptr;
    const NodeAccess closed(none);
    for (const FeatureKind kind : {FeatureKind::Boolean, FeatureKind::Float, FeatureKind::StringReg}) {
        const FeatureReading reading = readFeature(closed, kind, "N");
        EXPECT_FALSE(reading.isGood());
        EXPECT_EQ(reading.status, KX_OK);
    }
    EXPECT_EQ(takeTrace(), QStringList());
}

TEST_F(FeatureKinds, FailuresAreLoggedOnlyWhereJobsRead)
{
    EXPECT_FALSE(readFeature(silent, FeatureKind::StringReg, "None").isGood());
    EXPECT_FALSE(silent.isWritable("None"));
    EXPECT_EQ(recorder.logs().size(), 0);
    EXPECT_FALSE(readFeature(access, FeatureKind::StringReg, "None").isGood());
    EXPECT_FALSE(access.isWritable("None"));
    EXPECT_EQ(recorder.logs().size(), 2);
}

TEST_F(FeatureKinds, AreWrittenAsImportsTakeTheirTexts)
{
    camera->setBool("B", false);
    camera->setEnumeration("E", 1, {1, 2});
    camera->setInteger("I", 1);
    camera->setFloat("F", 1.0f);
    camera->setString("S", "");
    int code = 0;
    EXPECT_TRUE(writeFeature(access, FeatureKind::Boolean, "B", "2", &code));
    EXPECT_TRUE(writeFeature(access, FeatureKind::Enumeration, "E", "2", &code));
    EXPECT_TRUE(writeFeature(access, FeatureKind::IntReg, "I", "0x10", &code));
    EXPECT_TRUE(writeFeature(access, FeatureKind::Float, "F", "2.5", &code));
    EXPECT_TRUE(writeFeature(access, FeatureKind::StringReg, "S", "text", &code));
    EXPECT_EQ(*camera->node("B").boolean, true);
    EXPECT_EQ(camera->node("E").enumeration->current, 2u);
    EXPECT_EQ(camera->node("I").integer->current, 0);
    EXPECT_EQ(camera->node("F").real->current, 2.5f);
    EXPECT_EQ(QByteArray(camera->node("S").text->current), QByteArray("text"));
}

TEST_F(FeatureKinds, WhatAnImportWritesIsPrintedAndTold)
{
    EXPECT_EQ(written(FeatureKind::Boolean, "1"), QString("1"));
    EXPECT_EQ(written(FeatureKind::Boolean, "2"), QString("1"));
    EXPECT_EQ(written(FeatureKind::Boolean, "-1"), QString("0 unfaithful"));
    EXPECT_EQ(written(FeatureKind::Boolean, "true"), QString("0 unfaithful"));
    for (const FeatureKind kind : {FeatureKind::Enumeration, FeatureKind::Integer, FeatureKind::IntReg}) {
        EXPECT_EQ(written(kind, "4294967295"), QString("4294967295"));
        EXPECT_EQ(written(kind, "4294967296"), QString("0 unfaithful"));
        EXPECT_EQ(written(kind, "-5"), QString("0 unfaithful"));
        EXPECT_EQ(written(kind, "0x10"), QString("0 unfaithful"));
    }
    EXPECT_EQ(written(FeatureKind::Float, "25"), QString("25.000000"));
    EXPECT_EQ(written(FeatureKind::Float, "a"), QString("0.000000 unfaithful"));
    EXPECT_EQ(written(FeatureKind::StringReg, QString(255, 'x')), QString(255, 'x'));
    EXPECT_EQ(written(FeatureKind::StringReg, QString(256, 'x')), QString(255, 'x') + " unfaithful");
}

TEST_F(FeatureKinds, AreTheSameByWhatTheirTextsMean)
{
    EXPECT_TRUE(isSameValue(FeatureKind::Integer, "0x10", "16"));
    EXPECT_TRUE(isSameValue(FeatureKind::IntReg, "01", "1"));
    EXPECT_TRUE(isSameValue(FeatureKind::Integer, "0xFFFFFFFFFFFFFFFF", "-1"));
    EXPECT_FALSE(isSameValue(FeatureKind::Integer, "ten", "10"));
    EXPECT_TRUE(isSameValue(FeatureKind::Float, "25", "25.000000"));
    EXPECT_FALSE(isSameValue(FeatureKind::Float, "25.000001", "25.000000"));
    EXPECT_TRUE(isSameValue(FeatureKind::Boolean, "2", "1"));
    EXPECT_FALSE(isSameValue(FeatureKind::Boolean, "true", "1"));
    EXPECT_TRUE(isSameValue(FeatureKind::Enumeration, "01", "1"));
    EXPECT_FALSE(isSameValue(FeatureKind::Enumeration, "-1", "0"));
    EXPECT_FALSE(isSameValue(FeatureKind::StringReg, "01", "1"));
}
