// The text of a features file: exact lines, and records that come back as they went in.
#include "jobs/file/FeaturesFile.h"
#include "support/QtPrinting.h"
#include "support/RecordingSuiteTools.h"

#include <QDomDocument>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

using namespace ie;

namespace
{

RegisterValue plainRegister(qint64 address, const QString& variables, const QString& content)
{
    RegisterValue value;
    value.address = address;
    value.variables = variables;
    value.content = content;
    return value;
}

QDomElement parsed(QDomDocument& document, const QString& text)
{
    EXPECT_TRUE(document.setContent(text));
    return document.documentElement();
}

} // namespace

TEST(FeaturesFileText, BeginsWithTheDeclarationAndTheVersion)
{
    EXPECT_EQ(fileBegin("1.2.3"), QString("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
                                          "<FeaturesFile version=\"1.2.3\">\r\n"));
}

TEST(FeaturesFileText, HeaderLinesKeepBothTagsWhenTheTextIsEmpty)
{
    EXPECT_EQ(headerLine("DeviceModelName", "Cam 7"),
              QString("<DeviceModelName>Cam 7</DeviceModelName>\r\n"));
    EXPECT_EQ(headerLine("DeviceModelName", ""), QString("<DeviceModelName></DeviceModelName>\r\n"));
    EXPECT_EQ(headerLine("DeviceModelName", "a<b&c%2"),
              QString("<DeviceModelName>a<b&c%2</DeviceModelName>\r\n"));
}

TEST(FeaturesFileText, EndsWithoutALineEnd)
{
    EXPECT_EQ(featuresBegin(), QString("<Features>\r\n"));
    EXPECT_EQ(fileEnd(), QString("</Features>\r\n</FeaturesFile>"));
}

TEST(FeaturesFileText, PlainBlockHasSixUnescapedLines)
{
    EXPECT_EQ(plainBlock({"DeviceUserText", "StringReg", "a<b&c \"%1\""}),
              QString("<Feature>\r\n"
                      "<Name>DeviceUserText</Name>\r\n"
                      "<Type>StringReg</Type>\r\n"
                      "<Value>a<b&c \"%1\"</Value>\r\n"
                      "<Streamable>Yes</Streamable>\r\n"
                      "</Feature>\r\n"));
}

TEST(FeaturesFileText, ComplexBlockFramesItsLines)
{
    EXPECT_EQ(complexBegin("Lut", 4096, "LutReg"),
              QString("<ComplexFeature name=\"Lut\" len=\"4096\" reg=\"LutReg\">\r\n"));
    EXPECT_EQ(complexEnd(), QString("</ComplexFeature>\r\n"));
}

TEST(FeaturesFileText, AddressIsDecimalAndVariablesAlwaysStand)
{
    EXPECT_EQ(registerLine(plainRegister(0x0A00, "", "1,2")),
              QString("<RegValue address=\"2560\" variables=\"\">1,2</RegValue>\r\n"));
    EXPECT_EQ(registerLine(plainRegister(-4, "[A:1][B:2]", "7")),
              QString("<RegValue address=\"-4\" variables=\"[A:1][B:2]\">7</RegValue>\r\n"));
}

TEST(FeaturesFileText, ConvertedLineCarriesRawWordAndEscapedFormula)
{
    RegisterValue value = plainRegister(8192, "[S:0]", "100.000000");
    value.converted = true;
    value.to = "200";
    value.from = "(TO>3)&(TO<\"4\")'x'";
    EXPECT_EQ(registerLine(value),
              QString("<RegValue address=\"8192\" variables=\"[S:0]\" to=\"200\" "
                      "from=\"(TO&gt;3)&amp;(TO&lt;&quot;4&quot;)'x'\">100.000000</RegValue>\r\n"));
}

TEST(FeaturesFileText, ValuesPrintAsNumbers)
{
    EXPECT_EQ(booleanText(true), QString("1"));
    EXPECT_EQ(booleanText(false), QString("0"));
    EXPECT_EQ(integerText(-5), QString("-5"));
    EXPECT_EQ(integerText(std::numeric_limits<qint64>::max()), QString("9223372036854775807"));
    EXPECT_EQ(integerText(std::numeric_limits<qint64>::min()), QString("-9223372036854775808"));
    EXPECT_EQ(enumerationText(4294967295u), QString("4294967295"));
}

TEST(FeaturesFileText, FloatsHaveExactlySixDigitsAndNoExponent)
{
    EXPECT_EQ(floatText(25.0f), QString("25.000000"));
    EXPECT_EQ(floatText(-0.5f), QString("-0.500000"));
    EXPECT_EQ(floatText(0.1f), QString("0.100000"));
    EXPECT_EQ(floatText(1.0 / 128), QString("0.007813"));
    EXPECT_EQ(floatText(3.4e38f), QString("339999995214436424907732413799364296704.000000"));
}

TEST(FeaturesFileText, WordsAreUnsignedAndJoinedByCommas)
{
    EXPECT_EQ(wordsText({0, 4294967295u, 7}), QString("0,4294967295,7"));
    EXPECT_EQ(wordsText({5}), QString("5"));
    EXPECT_EQ(wordsText({}), QString(""));
}

TEST(FeaturesFileRecords, ComeBackAsTheyWentIn)
{
    RegisterValue converted = plainRegister(8192, "", "0.500000");
    converted.converted = true;
    converted.to = "50";
    converted.from = "TO<60 ? TO*0.01 : \"x\"";
    const QString text = fileBegin("1.0.0") + headerLine("DeviceFirmwareVersion", "V1 (7)") +
                         headerLine("DeviceModelName", "M") + headerLine("BoardDeviceType", "3") +
                         featuresBegin() + plainBlock({"Gain", "Float", "1.500000"}) +
                         complexBegin("Shade", 6, "ShadeReg") +
                         registerLine(plainRegister(4096, "[Sel:0]", "1,2")) +
                         registerLine(plainRegister(4104, "[Sel:1]", "3,4")) + complexEnd() +
                         complexBegin("Black", 4, "BlackReg") + registerLine(converted) + complexEnd() +
                         plainBlock({"Width", "Integer", "640"}) + fileEnd();
    QDomDocument document;
    const FeaturesContent content = readFeatures(parsed(document, text));

    EXPECT_EQ(content.header.version, QString("1.0.0"));
    EXPECT_EQ(content.header.firmware, QString("V1 (7)"));
    EXPECT_EQ(content.header.model, QString("M"));
    EXPECT_TRUE(content.header.hasBoardType);
    EXPECT_EQ(content.header.boardType, QString("3"));
    ASSERT_TRUE(content.hasFeatures);
    ASSERT_EQ(content.entries.size(), 4);

    QString again;
    for (const FeaturesContent::Entry& entry : content.entries) {
        if (!entry.isComplex) {
            again += plainBlock(entry.plain);
            continue;
        }
        again += complexBegin(entry.complex.name, entry.complex.length, entry.complex.reg);
        for (const RegisterValue& value : entry.complex.values)
            again += registerLine(value);
        again += complexEnd();
    }
    const int begin = text.indexOf(featuresBegin()) + featuresBegin().size();
    EXPECT_EQ(again, text.mid(begin, text.indexOf("</Features>") - begin));
    EXPECT_EQ(content.entries[2].complex.values[0].from, QString("TO<60 ? TO*0.01 : \"x\""));
}

TEST(FeaturesFileRecords, RootTagIsNotLookedAt)
{
    QDomDocument document;
    const FeaturesContent content =
        readFeatures(parsed(document, "<Anything version='2'><Features/></Anything>"));
    EXPECT_EQ(content.header.version, QString("2"));
    EXPECT_TRUE(content.hasFeatures);
    EXPECT_TRUE(content.entries.isEmpty());
}

TEST(FeaturesFileRecords, WhatIsMissingIsEmpty)
{
    QDomDocument document;
    const FeaturesContent content = readFeatures(parsed(document, "<F><Feature/></F>"));
    EXPECT_TRUE(content.header.version.isEmpty());
    EXPECT_FALSE(content.header.hasBoardType);
    EXPECT_FALSE(content.hasFeatures);
    EXPECT_TRUE(content.entries.isEmpty());
}

TEST(FeaturesFileRecords, AnyOtherTagIsAPlainFeatureAndStreamableIsIgnored)
{
    QDomDocument document;
    const FeaturesContent content = readFeatures(
        parsed(document, "<F><Features><Foo><Value>old</Value><Streamable>No</Streamable>"
                         "<Name>A</Name><Type>Boolean</Type><Value>1</Value></Foo></Features></F>"));
    ASSERT_EQ(content.entries.size(), 1);
    EXPECT_FALSE(content.entries[0].isComplex);
    EXPECT_EQ(content.entries[0].plain.name, QString("A"));
    EXPECT_EQ(content.entries[0].plain.type, QString("Boolean"));
    EXPECT_EQ(content.entries[0].plain.value, QString("1")); // the later of two
}

TEST(FeaturesFileRecords, NumbersAreReadWithTheSuitesParser)
{
    tests::resetSuiteTools();
    QDomDocument document;
    const FeaturesContent content =
        readFeatures(parsed(document, "<F><Features><ComplexFeature name='A' len='0x8' reg='R'>"
                                      "<Other address='0x10'>5,6</Other></ComplexFeature></Features></F>"));
    ASSERT_EQ(content.entries.size(), 1);
    EXPECT_EQ(content.entries[0].complex.length, 8);
    ASSERT_EQ(content.entries[0].complex.values.size(), 1);
    EXPECT_EQ(content.entries[0].complex.values[0].address, 16);
    EXPECT_EQ(content.entries[0].complex.values[0].content, QString("5,6"));
    EXPECT_EQ(tests::suiteCalls("string2Int"), QStringList({"string2Int(0x8)", "string2Int(0x10)"}));
}

namespace
{

class FeaturesFileLoad : public ::testing::Test
{
protected:
    LoadedFile::Failure failureOf(const QByteArray& bytes)
    {
        QFile file(path());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(bytes), bytes.size());
        file.close();
        return loadFeaturesFile(path()).failure;
    }
    QString path() const { return m_folder.filePath("in.fpk"); }

private:
    QTemporaryDir m_folder;
};

using Failure = LoadedFile::Failure;

} // namespace

TEST_F(FeaturesFileLoad, EveryFailedStepIsTold)
{
    EXPECT_EQ(loadFeaturesFile(path()).failure, Failure::NotOpened);
    EXPECT_EQ(loadFeaturesFile(".").failure, Failure::NotOpened);
#if !defined(_WIN32)
    EXPECT_EQ(loadFeaturesFile("/dev/zero").failure, Failure::NotOpened);
#else
    EXPECT_EQ(loadFeaturesFile("CON").failure, Failure::NotOpened);
#endif
    EXPECT_EQ(failureOf(""), Failure::Empty);
    EXPECT_EQ(failureOf(QByteArray("\0<F/>", 5)), Failure::Empty);
    EXPECT_EQ(failureOf("<F>"), Failure::NotLoaded);
    EXPECT_EQ(failureOf("<F/>"), Failure::None);
}

TEST_F(FeaturesFileLoad, TextsThatAreNotSafeToParseAreNotLoaded)
{
    EXPECT_EQ(failureOf(QByteArray("<a>").repeated(1000) + QByteArray("</a>").repeated(1000)), Failure::None);
    EXPECT_EQ(failureOf(QByteArray("<a>").repeated(1001) + QByteArray("</a>").repeated(1001)),
              Failure::NotLoaded);
}

TEST_F(FeaturesFileLoad, FilesBeyondTheLimitAreNotRead)
{
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(kMaximumFileSize + 1)); // sparse
    EXPECT_EQ(loadFeaturesFile(path()).failure, Failure::TooLarge);
}

TEST_F(FeaturesFileLoad, BytesAreUtf8WhateverTheFileDeclares)
{
    ASSERT_EQ(failureOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><F v=\"\xC3\xA4\"/>"), Failure::None);
    EXPECT_EQ(loadFeaturesFile(path()).document.documentElement().attribute("v"), QString(QChar(0xE4)));
}

TEST(FeaturesFileRead, TheFirstOfTwoHeaderElementsCounts)
{
    QDomDocument document;
    const QDomElement root = parsed(
        document, "<FeaturesFile><DeviceFirmwareVersion>1</DeviceFirmwareVersion><DeviceModelName>M"
                  "</DeviceModelName><DeviceFirmwareVersion>2</DeviceFirmwareVersion><DeviceModelName>N"
                  "</DeviceModelName></FeaturesFile>");
    EXPECT_EQ(readFeatures(root).header.firmware, QString("1"));
    EXPECT_EQ(readFeatures(root).header.model, QString("M"));
}
