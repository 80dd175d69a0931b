// What exports and imports leave alone, and what a file proves, each rule by itself.
#include "jobs/import/ImportIdentity.h"
#include "jobs/rules/ImportRules.h"
#include "support/QtPrinting.h"
#include "support/RecordingSuiteTools.h"

#include <gtest/gtest.h>

using namespace ie;

namespace
{

QString skip(const QString& name, const QString& scanType, bool* asked = nullptr)
{
    const ImportSkip reason = importSkip(name, [&] {
        if (asked)
            *asked = true;
        return scanType;
    });
    switch (reason) {
    case ImportSkip::Protected:
        return "protected";
    case ImportSkip::Listed:
        return "listed";
    case ImportSkip::LineScanOnly:
        return "line scan";
    default:
        return "-";
    }
}

// A header that fits the camera which `answers` describes.
class Identity : public ::testing::Test
{
protected:
    Identity()
    {
        tests::resetSuiteTools();
        header.version = "7.8.9";
        header.hasFirmware = header.hasModel = true;
        header.firmware = "V1";
        header.model = "Cam";
        device.transportType = KX_TRANSPORT_USB3;
        qstrcpy(reinterpret_cast<char*>(device.special.usb3.modelName), "Cam");
    }

    // One letter a comparison: good, tolerated, bad.
    QString outcomes(IdentityDepth depth = IdentityDepth::UpToTheFirstBad)
    {
        asked.clear();
        const auto read = [this](FeatureKind, const QString& name) {
            asked += name;
            FeatureReading reading;
            reading.text = name == "BoardDeviceType" ? board : firmware;
            return reading;
        };
        comparisons = compareIdentity(header, device, read, depth);
        QString text;
        for (const IdentityComparison& comparison : comparisons)
            text += QString("gtb").at(int(comparison.outcome));
        return text;
    }

    FeaturesHeader header;
    KX_DeviceInfo device = {};
    QString board = "5";
    QString firmware = "V1";
    QStringList asked;
    IdentityComparisons comparisons;
};

} // namespace

TEST(ImportRules, NamesAloneTellWhatStaysOut)
{
    EXPECT_EQ(skip("DeviceUserID", "1"), QString("protected"));
    EXPECT_EQ(skip("GevSCDA", "1"), QString("listed"));
    EXPECT_EQ(commonSkipList().size(), 11);
    EXPECT_EQ(skip("gevSCDA", "1"), QString("-"));
    EXPECT_EQ(skip("Gain", {}), QString("-"));
}

TEST(ImportRules, LineRatesAreForLineScanCameras)
{
    for (const char* name : {"AcquisitionLineRate", "AcquisitionLineRateEnable"}) {
        EXPECT_EQ(skip(name, "1"), QString("-"));
        EXPECT_EQ(skip(name, "0"), QString("line scan"));
        EXPECT_EQ(skip(name, {}), QString("line scan"));
    }
    bool asked = false;
    skip("Gain", "1", &asked);
    EXPECT_FALSE(asked);
}

TEST(ImportRules, AddressesAreLeftOutByTheWayTheyAreShown)
{
    EXPECT_TRUE(isSkippedAsShown("Any", "IPV4Address"));
    EXPECT_TRUE(isSkippedAsShown("Any", "MACAddress"));
    EXPECT_TRUE(isSkippedAsShown("GevMACAddress", "HexNumber"));
    EXPECT_FALSE(isSkippedAsShown("Any", "HexNumber"));
    EXPECT_FALSE(isSkippedAsShown("GevMACAddress", "Linear"));
    EXPECT_FALSE(isSkippedAsShown("GevMACAddress", ""));
}

TEST(ImportRules, OnlyTwoModesTakeValues)
{
    QStringList modes;
    for (int mode = KX_AM_NOT_IMPLEMENTED; mode <= KX_AM_READ_WRITE + 2; ++mode)
        modes += QString::number(int(isWritable(static_cast<KX_XML_AccessMode>(mode))));
    EXPECT_EQ(modes.join(' '), QString("0 0 1 0 1 0 0"));
}

TEST_F(Identity, AllFit)
{
    EXPECT_EQ(outcomes(), QString("ggggg"));
    EXPECT_EQ(asked, QStringList({"DeviceFirmwareVersion"}));
    header.hasBoardType = true;
    header.boardType = "5";
    EXPECT_EQ(outcomes(), QString("ggggg"));
    EXPECT_EQ(asked, QStringList({"BoardDeviceType", "DeviceFirmwareVersion"}));
    EXPECT_EQ(comparisons[2].cameraValue, QString("5"));
}

TEST_F(Identity, TheFirstThatIsBadEndsAnImport)
{
    header.version.clear();
    EXPECT_EQ(outcomes(), QString("b"));
    EXPECT_EQ(tests::suiteCalls(), QStringList());
    header.version = "1";
    header.hasBoardType = true;
    header.boardType = "05";
    EXPECT_EQ(outcomes(), QString("gtb"));
    EXPECT_EQ(asked, QStringList({"BoardDeviceType"}));
    header.boardType = "5";
    header.firmware = "v1";
    EXPECT_EQ(outcomes(), QString("gtgb"));
    header.firmware = "V1";
    header.hasModel = false;
    EXPECT_EQ(outcomes(), QString("gtggb"));
    EXPECT_FALSE(isGood(comparisons));
}

TEST_F(Identity, AllAreToldToWhoAsksForAll)
{
    header = {};
    header.hasBoardType = true;
    EXPECT_EQ(outcomes(IdentityDepth::All), QString("btbbb"));
    EXPECT_EQ(comparisons[0].cameraValue, QString("7.8.9"));
    EXPECT_TRUE(comparisons[3].fileValue.isNull());
    EXPECT_FALSE(comparisons[2].fileValue.isNull());
}

TEST_F(Identity, WhatTheCameraDoesNotTellFitsNothing)
{
    firmware = QString();
    header.firmware = "";
    EXPECT_EQ(outcomes(), QString("gggb"));
    EXPECT_TRUE(comparisons.back().cameraValue.isNull());
    firmware = "";
    EXPECT_EQ(outcomes(), QString("ggggg"));
}

TEST_F(Identity, ACameraOfNoTransportHasAnEmptyModel)
{
    device.transportType = 2;
    EXPECT_EQ(outcomes(), QString("ggggb"));
    header.model.clear();
    EXPECT_EQ(outcomes(), QString("ggggg"));
}

// What a text is written as; in brackets where that is not what it says.
template <typename Value>
QString shown(const Imported<Value>& imported)
{
    const QString text = QString::number(imported.value);
    return imported.isFaithful ? text : '(' + text + ')';
}

TEST(ImportedValue, TellsTextsThatAreWrittenAsSomethingElse)
{
    EXPECT_EQ(shown(importedBoolean("0")), QString("0"));
    EXPECT_EQ(shown(importedBoolean("1")), QString("1"));
    EXPECT_EQ(shown(importedBoolean("2")), QString("1"));
    EXPECT_EQ(shown(importedBoolean("-1")), QString("(0)"));
    EXPECT_EQ(shown(importedBoolean("true")), QString("(0)"));
    EXPECT_EQ(shown(importedNumber("4294967295")), QString("4294967295"));
    for (const QString text : {"-1", "4294967296", "0x10", ""})
        EXPECT_EQ(shown(importedNumber(text)), QString("(0)")) << text.toStdString();
    EXPECT_EQ(shown(importedFloat("-1.5")), QString("-1.5"));
    EXPECT_EQ(shown(importedFloat("1,5")), QString("(0)"));
}

TEST(ImportedValue, IsAWordOf32Bits)
{
    EXPECT_EQ(shown(importedWord("4294967295")), QString("4294967295"));
    EXPECT_EQ(shown(importedWord("0x10")), QString("16"));
    EXPECT_EQ(shown(importedWord("4294967297")), QString("(1)"));
    EXPECT_EQ(shown(importedWord("18446744073709551615")), QString("(4294967295)"));
    for (const QString text : {"0", "000", "0x0"})
        EXPECT_EQ(shown(importedWord(text)), QString("0")) << text.toStdString();
    for (const QString text : {"", "-1", "0 ", "x"})
        EXPECT_EQ(shown(importedWord(text)), QString("(0)")) << text.toStdString();
}
