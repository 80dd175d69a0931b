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

// Written from the standards' lists of registers and features, not from the table in the code.
TEST_F(FeatureNature, NamesTellWhatNoDescriptionDoes)
{
    struct Row
    {
        const char* name;
        companion::Nature::Kind kind;
        const char* reason;
    };
    const auto state = companion::Nature::Kind::State;
    const auto session = companion::Nature::Kind::Session;
    const char* const unit = "tells this unit from others";
    const char* const stream = "set by the program that streams from the camera";
    const char* const messages = "set by the program that takes the camera's messages";
    const char* const control = "tells who controls the camera";
    const char* const heartbeat = "set by the program that controls the camera";
    const Row rows[] = {{"GevCCP", state, control},
                        {"GevPrimaryApplicationSwitchoverKey", state, control},
                        {"GevPrimaryApplicationSocket", state, control},
                        {"GevPrimaryApplicationIPAddress", state, control},
                        {"DeviceID", state, unit},
                        {"DeviceSerialNumber", state, unit},
                        {"DeviceMACAddress", state, unit},
                        {"GevMACAddress", state, unit},
                        {"GevDeviceMACAddressLow", state, unit},
                        {"GevSCPHostPort", session, stream},
                        {"GevSCPInterfaceIndex", session, stream},
                        {"GevSCPSPacketSize", session, stream},
                        {"GevSCPSDoNotFragment", session, stream},
                        {"GevSCPSFireTestPacket", session, stream},
                        {"GevSCPD", session, stream},
                        {"GevSCDA", session, stream},
                        {"GevSCSP", session, stream},
                        {"DeviceStreamChannelPacketSize", session, stream},
                        {"TLParamsLocked", session, stream},
                        {"GevMCPHostPort", session, messages},
                        {"GevMCDA", session, messages},
                        {"GevMCTT", session, messages},
                        {"GevMCRC", session, messages},
                        {"GevHeartbeatTimeout", session, heartbeat},
                        {"GevGVCPHeartbeatDisable", session, heartbeat},
                        {"GevGVCPPendingAck", session, heartbeat},
                        {"DeviceLinkHeartbeatTimeout", session, heartbeat},
                        {"DeviceLinkHeartbeatMode", session, heartbeat}};
    for (const Row& row : rows) {
        const companion::Nature nature = companion::natureOfName(row.name);
        EXPECT_EQ(nature.kind, row.kind) << row.name;
        EXPECT_EQ(nature.reason, row.reason) << row.name;
    }
    // The whole name, and people's own settings beside them.
    for (const char* name :
         {"GevSCPSPacketSizeX", "XGevCCP", "gevccp", "GevSCFTD", "GevSCBWR", "DeviceIDX", "DeviceUserID",
          "GevPersistentIPAddress", "GevCurrentIPConfigurationDHCP", "DeviceLinkThroughputLimit"})
        EXPECT_EQ(companion::natureOfName(name).kind, companion::Nature::Kind::Setting) << name;
}

// GigE Vision, bootstrap registers; each from its first byte to its last.
TEST_F(FeatureNature, RegistersThatEveryGigECameraHas)
{
    const auto isState = [](qint64 address) {
        return companion::natureOfGigEAddress(address).kind == companion::Nature::Kind::State;
    };
    for (const auto& [first, last] :
         {std::pair<qint64, qint64>{0x0008, 0x000F}, {0x00D8, 0x00E7}, {0x0A00, 0x0A03}}) {
        EXPECT_TRUE(isState(first) && isState(last)) << first;
        EXPECT_FALSE(isState(first - 1) || isState(last + 1)) << first;
    }
    EXPECT_TRUE(isState(-1));
    EXPECT_FALSE(isState(0));
    EXPECT_FALSE(isState(0xFFFFFFFF));
    EXPECT_TRUE(isState(0x100000000));
    device().setInteger("Privilege", 1);
    addBlock("Privilege", 0x0A00);
    EXPECT_EQ(verdict(), EntryVerdict::State);
    EXPECT_EQ(reason, "tells who controls the camera");
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

TEST_F(FeatureNature, AutomaticFunctionsMoveWhatTheirNamesSay)
{
    const std::pair<const char*, QStringList> rows[] = {
        {"ExposureAuto", {"ExposureTime", "ExposureTimeAbs", "ExposureTimeRaw"}},
        {"GainAuto", {"Gain", "GainAbs", "GainRaw"}},
        {"BlackLevelAuto", {"BlackLevel", "BlackLevelAbs", "BlackLevelRaw"}},
        {"BalanceWhiteAuto", {"BalanceRatio", "BalanceRatioAbs", "BalanceRatioRaw"}}};
    for (const auto& [function, features] : rows) {
        for (const QString& feature : features)
            EXPECT_EQ(companion::automaticFunctionsOf(feature), QStringList{function}) << qPrintable(feature);
    }
    for (const char* name : {"ExposureMode", "GainAutoLimit", "Gamma", "ExposureTimeX"})
        EXPECT_EQ(companion::automaticFunctionsOf(name), QStringList()) << name;
}

// A camera has its entries under names; only "Off" is off, whatever its number.
TEST_F(FeatureNature, AnAutomaticFunctionIsOffByTheNameOfItsEntry)
{
    device().setFloat("ExposureTime", 1.5f);
    addPlain("ExposureTime", "Float", "9.000000");
    device().setEntryName("ExposureAuto", 0, "Continuous");
    device().setEntryName("ExposureAuto", 1, "Off");
    device().setEnumeration("ExposureAuto", 0, {0, 1});
    EXPECT_EQ(verdict(), EntryVerdict::Automatic);
    device().setEnumeration("ExposureAuto", 1, {0, 1});
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
}

// Imports set switches and enumerations before numbers, so what the file wants of the function is what will
// hold.
TEST_F(FeatureNature, AFileThatTurnsAnAutomaticFunctionOffMeansItsValue)
{
    device().setFloat("ExposureTime", 1.5f);
    addPlain("ExposureTime", "Float", "9.000000");
    device().setEntryName("ExposureAuto", 0, "Off");
    device().setEntryName("ExposureAuto", 2, "Continuous");
    device().setEnumeration("ExposureAuto", 2, {0, 2});
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::Automatic);
    addPlain("ExposureAuto", "Enumeration", "2");
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::Automatic);
    file.entries.removeLast();
    addPlain("ExposureAuto", "Enumeration", "0");
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::WouldChange);
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    file.entries.removeLast();
    device().setBool("GainAuto", true);
    device().setFloat("Gain", 1);
    file.entries.clear();
    addPlain("Gain", "Float", "2.000000");
    addPlain("GainAuto", "Boolean", "0");
    EXPECT_EQ(verdict(CheckMode::Plan), EntryVerdict::WouldChange);
}

TEST_F(FeatureNature, WhatAnAutomaticFunctionLocksIsItsOwnByName)
{
    device().setBool("FocusAuto", true);
    for (const char* name :
         {"FocusPosition", "AutoFocusPosition", "FocusSelector", "FocusMode", "FocusEnabled", "FocusLimitFar",
          "FocusMin", "FocusMax", "FocusIncrement", "FocusStep", "Width"}) {
        file.entries.clear();
        device().setInteger(name, 1);
        device().setRelatedNames(name, KX_RELATED_LOCKS, "TLParamsLocked\nFocusAuto");
        addPlain(name, "Integer", "2");
        const bool isMoved = QString(name) == "FocusPosition";
        EXPECT_EQ(verdict(), isMoved ? EntryVerdict::Automatic : EntryVerdict::NotApplied) << name;
    }
    // A lock that is no automatic function moves nothing, and one called just "Auto" not everything.
    EXPECT_FALSE(companion::isMovedByLock("FocusPosition", "Focus"));
    EXPECT_FALSE(companion::isMovedByLock("FocusPosition", "Auto"));
}

TEST_F(FeatureNature, ASelectorThatStandsWhereItStandsMovesNoWindow)
{
    device().setInteger("Data", 1);
    device().setRelatedNames("Data", KX_RELATED_SELECTORS, "Index");
    addPlain("Data", "Integer", "2");
    device().setEnumeration("Index", 0, {0, 1});
    EXPECT_EQ(verdict(), EntryVerdict::State);
    device().setEverWritable("Index", false);
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
    device().setEverWritable("Index", true);
    device().setEnumeration("Index", 0, {0});
    EXPECT_EQ(verdict(), EntryVerdict::NotApplied);
}

// What is broken is the file's fault, and what is amiss in the writing is nothing to warn of where nobody
// wants it written.
TEST_F(FeatureNature, IsNotAskedOfABrokenBlock)
{
    device().setInteger("GevCCP", 1);
    addBlock("GevCCP", 0x0A00);
    file.entries.last().complex.lengthText.clear();
    EXPECT_EQ(verdict(), EntryVerdict::Broken);
    file.entries.clear();
    addPlain("GevCCP", "Integer", "-2");
    const CameraCheck done = check(CheckMode::Plan);
    EXPECT_EQ(done.entries.at(0).verdict, EntryVerdict::State);
    EXPECT_EQ(done.entries.at(0).warnings, QStringList());
}

TEST_F(FeatureNature, IsCountedApart)
{
    for (const char* name : {"DeviceID", "GevPrimaryApplicationSocket", "GevCCP", "GevSCPD", "Width"}) {
        device().setInteger(name, 1);
        addPlain(name, "Integer", "2");
    }
    addPlain("Width", "Integer", "1");
    const QString text = companion::checkText({check(CheckMode::Verify)});
    EXPECT_TRUE(text.contains("\n  1 unchanged, 1 not applied; state: 3 differ; session: 1 differs\n"))
        << text.toStdString();
    EXPECT_FALSE(text.contains("DeviceID")) << text.toStdString();
    file.entries.removeLast();
    file.entries.removeLast();
    EXPECT_TRUE(
        companion::checkText({check(CheckMode::Verify)}).contains("\n  no settings; state: 3 differ"));
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
    companion::tellApart(camera, {}, CheckMode::Verify, failures);
    EXPECT_EQ(failures[0].verdict, EntryVerdict::State);
    EXPECT_EQ(failures[1].verdict, EntryVerdict::NotApplied);
    EXPECT_EQ(failures[2].verdict, EntryVerdict::NotApplied);

    failures[0].judge(EntryVerdict::NotApplied, "refused");
    device().addUnplacedRegister(); // which may lie there as well
    companion::tellApart(camera, {}, CheckMode::Verify, failures);
    EXPECT_EQ(failures[0].verdict, EntryVerdict::NotApplied);
}

// More than a first try has room for.
TEST_F(FeatureNature, KnowsFeaturesThatHangOnVeryMany)
{
    device().setInteger("Data", 1);
    device().setInteger("Index", 0, 0, 9);
    QByteArray selectors;
    for (int i = 0; i < 100; ++i) {
        const QByteArray name = "SelectorThatStands" + QByteArray::number(i);
        device().setInteger(name, 0, 0, 0);
        selectors += name + '\n';
    }
    device().setRelatedNames("Data", KX_RELATED_SELECTORS, selectors + "Index");
    addPlain("Data", "Integer", "2");
    EXPECT_EQ(verdict(), EntryVerdict::State);
}

TEST_F(FeatureNature, WhatIsToBeIgnoredDoesNotCount)
{
    device().setInteger("LineDelay", 1);
    addPlain("LineDelay", "Integer", "2");
    EXPECT_EQ(verdict({CheckMode::Verify, false, {"Line", "Delay*"}}), EntryVerdict::NotApplied);
    for (const bool isStrict : {false, true}) {
        EXPECT_EQ(verdict({CheckMode::Verify, isStrict, {"Width", "Line*"}}), EntryVerdict::Ignored);
        EXPECT_EQ(verdict({CheckMode::Plan, isStrict, {"LineDelay"}}), EntryVerdict::Ignored);
    }
    EXPECT_EQ(reason, "changes by itself, or is to be ignored");
    device().setInteger("LineDelay", 2);
    EXPECT_EQ(verdict({CheckMode::Verify, false, {"Line*"}}), EntryVerdict::Unchanged);
}

// The list is the one that comparisons go by.
TEST_F(FeatureNature, WhatChangesByItselfDoesNotCount)
{
    device().setFloat("SensorTemperature", 1);
    addPlain("SensorTemperature", "Float", "2.000000");
    EXPECT_EQ(verdict(), EntryVerdict::Ignored);
    EXPECT_EQ(verdict({CheckMode::Plan, true}), EntryVerdict::Ignored);
    device().setEverWritable("SensorTemperature", false);
    EXPECT_EQ(verdict(), EntryVerdict::State);
}

// Behind a job as well, whether it was verified or not.
TEST_F(FeatureNature, IgnoresFailuresOfJobs)
{
    companion::ListedCamera camera;
    camera.device.stDeviceInfo = tests::deviceInfo(KX_TRANSPORT_GIGE, "S1", "M");
    device().setInteger("Width", 1);
    std::vector<companion::EntryCheck> failures(1);
    failures[0].feature = "Width";
    failures[0].judge(EntryVerdict::NotApplied, "refused");
    companion::tellApart(camera, {}, CheckMode::Verify, failures);
    EXPECT_EQ(failures[0].verdict, EntryVerdict::NotApplied);
    companion::tellApart(camera, {}, {CheckMode::Verify, false, {"Width"}}, failures);
    EXPECT_EQ(failures[0].verdict, EntryVerdict::Ignored);
}
