// What is told apart from settings, rule by rule, over a camera library that answers from tables.
#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/check/CheckReport.h"
#include "iefeatures/check/EntryNature.h"
#include "support/QtPrinting.h"
#include "support/ScriptedCamera.h"

#include <gtest/gtest.h>

using companion::CameraCheck;
using companion::CameraVerdict;
using companion::CheckMode;
using companion::EntryVerdict;

namespace
{

class FeatureNature : public ::testing::Test
{
protected:
    FeatureNature()
    {
        tests::resetScriptedCamera();
        device().setString("DeviceFirmwareVersion", "V1");
        file.header.version = "1.0.0";
        file.header.hasFirmware = file.header.hasModel = true;
        file.header.firmware = "V1";
        file.header.model = "M";
        file.hasFeatures = true;
    }

    static tests::ScriptedDevice& device() { return tests::scriptedDevice("S1"); }

    void addPlain(const char* name, const char* type, const char* value)
    {
        ie::FeaturesContent::Entry entry;
        entry.names = QStringList{name};
        entry.plain.name = name;
        entry.plain.type = type;
        entry.plain.value = value;
        file.entries += entry;
    }

    void addBlock(const char* name, qint64 address)
    {
        ie::FeaturesContent::Entry entry;
        entry.isComplex = true;
        entry.complex.name = name;
        entry.complex.length = 4;
        entry.complex.lengthText = "4";
        ie::RegisterValue value;
        value.address = address;
        value.addressText = QString::number(address);
        value.content = "7";
        entry.complex.values += value;
        file.entries += entry;
    }

    CameraCheck check(companion::CheckRule rule, uint32_t transport = KX_TRANSPORT_GIGE)
    {
        companion::ListedCamera camera;
        camera.device.stDeviceInfo = tests::deviceInfo(transport, "S1", "M");
        return companion::checkCamera(camera, file, rule, [] { return true; });
    }

    // Of the first entry; nothing of it is amiss exactly when it is no setting.
    EntryVerdict verdict(companion::CheckRule rule = CheckMode::Verify)
    {
        const CameraCheck done = check(rule);
        EXPECT_EQ(done.verdict == CameraVerdict::Incomplete, companion::isAmiss(done.entries.at(0)));
        reason = done.entries.at(0).reason;
        return done.entries.at(0).verdict;
    }

    ie::FeaturesContent file;
    QString reason;
};

} // namespace

TEST_F(FeatureNature, WhatNobodyEverWritesIsState)
{
    device().setInteger("Level", 1);
    addPlain("Level", "Integer", "2");
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    device().setAccessMode("Level", KX_AM_READ_ONLY); // for now
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::NotWritable);
    device().setEverWritable("Level", false);
    EXPECT_EQ(verdict(), EntryVerdict::State);
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::State);
    EXPECT_EQ(verdict({CheckMode::Verify, true}), EntryVerdict::State);
    device().setAccessMode("Level", KX_AM_NOT_AVAILABLE);
    EXPECT_EQ(verdict(), EntryVerdict::State);
}

TEST_F(FeatureNature, WhatIsAsTheFileSaysHasNoNatureOfItsOwn)
{
    device().setInteger("Level", 2);
    device().setEverWritable("Level", false);
    addPlain("Level", "Integer", "2");
    EXPECT_EQ(verdict(), EntryVerdict::Unchanged);
}

TEST_F(FeatureNature, WhatTellsUnitsApartIsState)
{
    device().setString("DeviceID", "B");
    addPlain("DeviceID", "StringReg", "A");
    EXPECT_EQ(verdict(), EntryVerdict::State);
    file.entries.clear();
    addBlock("AddressHigh", 0x0008);
    device().setMemory(0x0008, QByteArray::fromHex("00000001"));
    device().setInteger("AddressHigh", 1);
    EXPECT_EQ(verdict(), EntryVerdict::State);
    EXPECT_EQ(reason, "tells this unit from others");
    EXPECT_EQ(check(CheckMode::Verify, KX_TRANSPORT_USB3).verdict, CameraVerdict::Incomplete);
}

TEST_F(FeatureNature, AnAddressThatGigEVisionDoesNotHaveIsNobodysSetting)
{
    device().setInteger("Far", 1);
    addBlock("Far", 0x100000000);
    EXPECT_EQ(verdict(), EntryVerdict::State);
    EXPECT_EQ(check(CheckMode::Verify, KX_TRANSPORT_USB3).verdict, CameraVerdict::Incomplete);
}

TEST_F(FeatureNature, AWindowOfDataHangsOnASelectorOutsideOfTheFile)
{
    device().setInteger("Data", 1);
    device().setInteger("Index", 0, 0, 9);
    device().setRelatedNames("Data", KX_RELATED_SELECTORS, "Index");
    addPlain("Data", "Integer", "2");
    EXPECT_EQ(verdict(), EntryVerdict::State);
    EXPECT_EQ(reason, "a window of data: what it shows hangs on Index, which is not in the file");
    device().setInteger("Index", 0, 0, 0); // stands where it stands
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    device().setInteger("Index", 0, 0, 9);
    addPlain("Index", "Integer", "0");
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
}

TEST_F(FeatureNature, ASelectorThatLeadsToTheAddressOfARegisterIsKnown)
{
    device().setInteger("Data", 1);
    device().setInteger("Index", 0, 0, 9);
    device().setRelatedNames("Data", KX_RELATED_SELECTORS, "Index");
    addBlock("Data", 0x20000);
    EXPECT_EQ(verdict(), EntryVerdict::State);
    device().setRelatedNames("Data", KX_RELATED_PLACE, "Index");
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    file.entries.clear();
    addPlain("Data", "Integer", "2");
    device().setRelatedNames("Data", KX_RELATED_SELECTORS, "");
    EXPECT_EQ(verdict(), EntryVerdict::State);
}

TEST_F(FeatureNature, WhatAStreamingProgramSetsCountsOnlyStrictly)
{
    device().setInteger("GevSCPSPacketSize", 1500);
    addPlain("GevSCPSPacketSize", "Integer", "9000");
    EXPECT_EQ(verdict(), EntryVerdict::Session);
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::Session);
    EXPECT_EQ(verdict({CheckMode::Verify, true}), EntryVerdict::NotApplied);
    EXPECT_EQ(verdict({CheckMode::Plan, true}), EntryVerdict::WouldChange);
}

TEST_F(FeatureNature, WhatAnAutomaticFunctionMovesCountsOnceItIsOff)
{
    device().setFloat("ExposureTime", 1.5f);
    addPlain("ExposureTime", "Float", "9.000000");
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    device().setBool("ExposureAuto", true);
    EXPECT_EQ(verdict(), EntryVerdict::Automatic);
    EXPECT_EQ(reason, "ExposureAuto moves it");
    EXPECT_EQ(verdict({CheckMode::Verify, true}), EntryVerdict::NotApplied);
    device().setBool("ExposureAuto", false);
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
}

TEST_F(FeatureNature, WhatAnAutomaticFunctionLocksIsItsOwnByName)
{
    device().setBool("FocusAuto", true);
    for (const char* name : {"FocusPosition", "FocusMode", "Width"}) {
        file.entries.clear();
        device().setInteger(name, 1);
        device().setRelatedNames(name, KX_RELATED_LOCKS, "TLParamsLocked\nFocusAuto");
        addPlain(name, "Integer", "2");
        const bool isMoved = QString(name) == "FocusPosition";
        EXPECT_EQ(verdict(), isMoved ? EntryVerdict::Automatic : EntryVerdict::NotApplied) << name;
    }
}

TEST_F(FeatureNature, OneSettingThatIsLockedIsStillAmiss)
{
    device().setInteger("Level", 1);
    device().setEverWritable("Level", false);
    device().setInteger("Width", 1);
    device().setAccessMode("Width", KX_AM_READ_ONLY);
    addPlain("Level", "Integer", "2");
    addPlain("Width", "Integer", "2");
    const CameraCheck done = check(CheckMode::Verify);
    EXPECT_EQ(done.verdict, CameraVerdict::Incomplete);
    EXPECT_EQ(done.notApplied(), QStringList{"Width"});
}

// Of a register that no feature is known to stand for, only the description's map of registers tells.
TEST_F(FeatureNature, TellsFailedRegistersApart)
{
    companion::ListedCamera camera;
    camera.device.stDeviceInfo = tests::deviceInfo(KX_TRANSPORT_GIGE, "S1", "M");
    device().addDescribedRegister("StatusReg", 0x20000, 4, false);
    device().addDescribedRegister("ModeReg", 0x20004, 4, true);
    std::vector<companion::EntryCheck> failures(3);
    for (size_t i = 0; i < failures.size(); ++i) {
        failures[i].isRegister = true;
        failures[i].address = 0x20000 + 4 * qint64(i);
        failures[i].judge(EntryVerdict::NotApplied, "refused");
    }
    companion::tellApart(camera, {}, failures);
    EXPECT_EQ(failures[0].verdict, EntryVerdict::State);
    EXPECT_EQ(failures[1].verdict, EntryVerdict::NotApplied);
    EXPECT_EQ(failures[2].verdict, EntryVerdict::NotApplied);
}
