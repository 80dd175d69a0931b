// What an import would do and has done with plain features, verdict by verdict, over a camera library that
// answers from tables.
#include "companion/CameraChecked.h"

#include <algorithm>
#include <numeric>

using companion::CameraCheck;
using companion::CameraVerdict;
using companion::CheckMode;
using ::testing::StartsWith;
using tests::block;
using tests::CameraChecked;
using tests::exitCodeOf;
using tests::parsed;
using tests::plain;

namespace
{

constexpr CheckMode kPlan = CheckMode::Plan;
constexpr CheckMode kVerify = CheckMode::Verify;

} // namespace

TEST_F(CameraChecked, OpensForMonitoringAndOnlyReads)
{
    device().setInteger("Width", 640);
    tests::Recorder::instance().clear();
    EXPECT_EQ(told(plain("Width", "Integer", "320"), kPlan),
              "  would change: Width: 640 -> 320\n  1 would change\n");
    QStringList calls;
    for (const tests::TraceEntry& call : tests::Recorder::instance().calls())
        calls += call.operation + ' ' + call.name;
    EXPECT_EQ(calls.join('\n'), "CreateHandle S1\nOpenDevice \nGetStringValue DeviceFirmwareVersion\n"
                                "GetIntValueEx Width\nGetNodeAccessMode Width\nIsEverWritable Width\n"
                                "GetRelatedNames Width\nGetRelatedNames Width\nGetRelatedNames Width\n"
                                "CloseDevice \n"
                                "DestroyHandle ");
    EXPECT_EQ(tests::Recorder::instance().calls("OpenDevice").first().arguments.first().toUInt(),
              uint(KX_ACCESS_MONITOR));
}

TEST_F(CameraChecked, TellsWhatWouldChange)
{
    device().setBool("Flip", false);
    device().setInteger("Width", 640);
    device().setInteger("Raw", 1);
    device().setEnumeration("Mode", 2, {1, 2});
    device().setFloat("Gain", 1.5f);
    device().setString("Place", "here");
    EXPECT_EQ(told(plain("Flip", "Boolean", "0") + plain("Width", "Integer", "640") +
                       plain("Mode", "Enumeration", "2") + plain("Gain", "Float", "1.500000") +
                       plain("Place", "StringReg", "here") + plain("Raw", "IntReg", "1"),
                   kPlan),
              "  6 unchanged\n");
    EXPECT_EQ(told(plain("Flip", "Boolean", "1") + plain("Width", "Integer", "4294967295") +
                       plain("Mode", "Enumeration", "1") + plain("Gain", "Float", "-0.500000") +
                       plain("Place", "StringReg", "there") + plain("Raw", "IntReg", "2"),
                   kPlan),
              "  would change: Flip: 0 -> 1\n"
              "  would change: Width: 640 -> 4294967295\n"
              "  would change: Mode: 2 -> 1\n"
              "  would change: Gain: 1.500000 -> -0.500000\n"
              "  would change: Place: here -> there\n"
              "  would change: Raw: 1 -> 2\n"
              "  6 would change\n");
}

TEST_F(CameraChecked, TellsWhatImportsLeaveAlone)
{
    device().setInteger("AcquisitionLineRate", 5);
    const QString lineRate = plain("AcquisitionLineRate", "Integer", "6");
    EXPECT_EQ(told(plain("DeviceUserID", "StringReg", "x") + plain("GevCurrentIPAddress", "Integer", "1") +
                       lineRate + plain("Start", "Command", "1") + plain("NoValue", "Integer", "") +
                       plain("NoType", "", "1") + plain("", "Integer", "1") +
                       block("len='4'", "<R address='16'>1</R>").replace("Lut", "LUTValueAll"),
                   kPlan),
              "  skipped: DeviceUserID: protected: imports never write it\n"
              "  skipped: GevCurrentIPAddress: on the import's skip list\n"
              "  skipped: AcquisitionLineRate: imports write it to line-scan cameras only\n"
              "  skipped: Start: imports write no feature of the type \"Command\"\n"
              "  skipped: NoValue: the file gives no value\n"
              "  skipped: NoType: the file gives no type\n"
              "  skipped: the file gives no name\n"
              "  skipped: LUTValueAll: on the import's skip list\n"
              "  8 skipped\n");
    device().setEnumeration("DeviceScanType", 1, {0, 1});
    EXPECT_EQ(told(lineRate, kPlan), "  would change: AcquisitionLineRate: 5 -> 6\n  1 would change\n");
    device().removeNode("DeviceScanType");
    EXPECT_THAT(told(lineRate, kVerify), StartsWith("  skipped: AcquisitionLineRate: "));
}

// Whoever looks on sees another controller than an import, which has exclusive access itself.
TEST_F(CameraChecked, DoesNotMistakeAnImportsOwnControlForASetting)
{
    device().setEnumeration("GevCCP", 0, {0, 1, 2});
    EXPECT_EQ(told(plain("GevCCP", "Enumeration", "1"), kPlan),
              "  state: GevCCP: camera 0, file 1: tells who controls the camera\n"
              "  no settings; state: 1 differs\n");
}

// An import leaves a feature out as soon as one of its names is such.
TEST_F(CameraChecked, LooksAtEachNameOfAFeature)
{
    device().setInteger("Width", 640);
    EXPECT_EQ(told("<Feature><Name>UserSetDefault</Name><Name>Width</Name><Type>Integer</Type>"
                   "<Value>1</Value></Feature>",
                   kPlan),
              "  skipped: Width: protected: imports never write it\n  1 skipped\n");
}

TEST_F(CameraChecked, TellsWhatCannotBeWrittenNow)
{
    for (const char* name : {"ReadOnly", "Locked", "Off", "WriteOnly", "Never"})
        device().setInteger(name, 1);
    device().setAccessMode("ReadOnly", KX_AM_READ_ONLY);
    device().setAccessMode("Off", KX_AM_NOT_AVAILABLE);
    device().setAccessMode("WriteOnly", KX_AM_WRITE_ONLY);
    device().setAccessMode("Never", KX_AM_NOT_IMPLEMENTED);
    device().setBool("Flag", true);
    device().addRule({"GetIntValueEx", KX_E_GC_ACCESS, "Locked"});
    const QString features = plain("ReadOnly", "Integer", "1") + plain("ReadOnly", "Integer", "2") +
                             plain("Off", "Integer", "2") + plain("WriteOnly", "Integer", "2") +
                             plain("Never", "Integer", "2") + plain("Nobody", "Integer", "2") +
                             plain("Flag", "Integer", "2") + plain("Locked", "Integer", "2");
    EXPECT_EQ(told(features, kPlan), "  not writable: ReadOnly: camera 1, file 2: read-only now\n"
                                     "  not writable: Off: file 2: not available now\n"
                                     "  absent: Never: not implemented\n"
                                     "  absent: Nobody: A scripted failure.\n"
                                     "  not writable: Flag: file 2: A scripted failure.\n"
                                     "  not writable: Locked: file 2: the camera refuses its register\n"
                                     "  would change: WriteOnly: ? -> 2: write-only now\n"
                                     "  1 unchanged, 1 would change, 4 not writable, 2 absent\n");
    EXPECT_EQ(told(features, kVerify), "  not applied: ReadOnly: camera 1, file 2: read-only now\n"
                                       "  not applied: Off: file 2: not available now\n"
                                       "  absent: Never: not implemented\n"
                                       "  absent: Nobody: A scripted failure.\n"
                                       "  not applied: Flag: file 2: A scripted failure.\n"
                                       "  not applied: Locked: file 2: the camera refuses its register\n"
                                       "  skipped: WriteOnly: write-only: it cannot be read back\n"
                                       "  1 unchanged, 4 not applied, 1 skipped, 2 absent\n");
}

TEST_F(CameraChecked, TellsWhatIsOutOfRange)
{
    device().setInteger("Width", 640, 16, 1280, 16);
    device().setInteger("Free", 0, std::numeric_limits<qint64>::min(), 100, 8);
    device().setEnumeration("Mode", 2, {1, 2});
    device().setString("Place", "here", 4);
    EXPECT_EQ(
        told(plain("Width", "Integer", "0") + plain("Width", "Integer", "1281") +
                 plain("Width", "Integer", "650") + plain("Width", "Integer", "1264") +
                 plain("Free", "Integer", "12") + plain("Mode", "Enumeration", "3") +
                 plain("Place", "StringReg", "there"),
             kPlan),
        "  out of range: Width: camera 640, file 0: 0 is below the minimum 16\n"
        "  out of range: Width: camera 640, file 1281: 1281 is above the maximum 1280\n"
        "  out of range: Width: camera 640, file 650: 650 is no multiple of the increment 16, counted "
        "from 16\n"
        "  out of range: Free: camera 0, file 12: 12 is no multiple of the increment 8, counted from 0\n"
        "  out of range: Mode: camera 2, file 3: 3 is no entry that it has now\n"
        "  out of range: Place: camera here, file there: the text is longer than 4 bytes\n"
        "  would change: Width: 640 -> 1264\n"
        "  1 would change, 6 out of range\n");
}

// The library's record holds 64 entries; of those behind nothing is known here.
TEST_F(CameraChecked, AnEnumerationMayHaveMoreEntriesThanItsRecord)
{
    std::vector<quint32> entries(KX_ENUM_CAPACITY);
    std::iota(entries.begin(), entries.end(), 0);
    device().setEnumeration("Mode", 2, entries);
    EXPECT_EQ(told(plain("Mode", "Enumeration", "63"), kPlan),
              "  would change: Mode: 2 -> 63\n  1 would change\n");
    EXPECT_EQ(told(plain("Mode", "Enumeration", "64"), kPlan),
              "  out of range: Mode: camera 2, file 64: 64 is no entry that it has now\n  1 out of range\n");
    entries.push_back(64);
    device().setEnumeration("Mode", 2, entries);
    EXPECT_EQ(told(plain("Mode", "Enumeration", "64"), kPlan),
              "  would change: Mode: 2 -> 64\n  1 would change\n");
}

TEST_F(CameraChecked, WarnsOfValuesThatAreWrittenAsOthers)
{
    for (const char* name : {"A", "B", "C", "D"})
        device().setInteger(name, 1);
    device().setBool("Flip", true);
    device().setFloat("Gain", 1.5f);
    const QString why = "\" is written as 0: imports take decimal numbers from 0 to 4294967295\n";
    EXPECT_EQ(told(plain("A", "Integer", "-5") + plain("B", "IntReg", "0x10") +
                       plain("C", "Integer", "4294967296") + plain("D", "Enumeration", "-1") +
                       plain("Flip", "Boolean", "true") + plain("Flip", "Boolean", "0x1") +
                       plain("Gain", "Float", "1,5"),
                   kPlan),
              ("  would change: A: 1 -> 0\n  warning: A: \"-5" + why +
               "  would change: B: 1 -> 0\n  warning: B: \"0x10" + why +
               "  would change: C: 1 -> 0\n  warning: C: \"4294967296" + why +
               "  not writable: D: file -1: A scripted failure.\n"
               "  would change: Flip: 1 -> 0\n"
               "  warning: Flip: \"true\" is written as 0: imports take 1 and 0\n"
               "  would change: Flip: 1 -> 0\n"
               "  warning: Flip: \"0x1\" is written as 0: imports take 1 and 0\n"
               "  would change: Gain: 1.500000 -> 0.000000\n"
               "  warning: Gain: \"1,5\" is written as 0.000000: it is no number of 32 bits\n"
               "  6 would change, 1 not writable\n")
                  .toStdString());
}

TEST_F(CameraChecked, WarnsOfWritesWithoutNeed)
{
    device().setInteger("Width", 640);
    device().setFloat("Gain", 1.5f);
    device().setBool("Flip", true);
    EXPECT_EQ(told(plain("Width", "Integer", "0640") + plain("Gain", "Float", "1.5") +
                       plain("Flip", "Boolean", "2"),
                   kPlan),
              "  warning: Width: written again: the texts differ, the values do not\n"
              "  warning: Gain: written again: the texts differ, the values do not\n"
              "  warning: Flip: written again: the texts differ, the values do not\n"
              "  3 unchanged\n");
}

// Texts are compared before anything is parsed: what stands there already is not written as something else.
TEST_F(CameraChecked, ANegativeValueThatTheCameraHasIsTheSame)
{
    device().setInteger("Offset", -5);
    EXPECT_EQ(told(plain("Offset", "Integer", "-5"), kPlan), "  1 unchanged\n");
}

TEST_F(CameraChecked, VerifiesValues)
{
    device().setInteger("Width", 640, 16, 1280, 16);
    device().setInteger("Hex", 16);
    device().setInteger("Negative", 0);
    device().setFloat("Gain", 1.5f);
    device().setBool("Flip", true);
    device().setEnumeration("Mode", 2, {1, 2});
    EXPECT_EQ(told(plain("Width", "Integer", "640") + plain("Width", "Integer", "0640") +
                       plain("Hex", "Integer", "0x10") + plain("Gain", "Float", "1.5") +
                       plain("Flip", "Boolean", "3") + plain("Mode", "Enumeration", "2"),
                   kVerify),
              "  6 unchanged\n");
    EXPECT_EQ(told(plain("Width", "Integer", "655") + plain("Width", "Integer", "625") +
                       plain("Gain", "Float", "1.500001") + plain("Gain", "Float", "1.50000001"),
                   kVerify),
              "  coerced: Width: camera 640, file 655\n"
              "  coerced: Width: camera 640, file 625\n"
              "  coerced: Gain: camera 1.500000, file 1.500001\n"
              "  coerced: Gain: camera 1.500000, file 1.50000001\n"
              "  4 coerced\n");
    EXPECT_EQ(told(plain("Width", "Integer", "656") + plain("Width", "Integer", "2000") +
                       plain("Gain", "Float", "1.500003") + plain("Negative", "Integer", "-5") +
                       plain("Mode", "Enumeration", "1") + plain("Mode", "Enumeration", "9"),
                   kVerify),
              "  not applied: Width: camera 640, file 656\n"
              "  not applied: Width: camera 640, file 2000: 2000 is above the maximum 1280\n"
              "  not applied: Gain: camera 1.500000, file 1.500003\n"
              "  not applied: Negative: camera 0, file -5: \"-5\" is written as 0: imports take decimal "
              "numbers from 0 to 4294967295\n"
              "  not applied: Mode: camera 2, file 1\n"
              "  not applied: Mode: camera 2, file 9: 9 is no entry that it has now\n"
              "  6 not applied\n");
}

TEST_F(CameraChecked, FailsWithTheLine)
{
    device().setInteger("Width", 640);
    device().addRule({"GetIntValueEx", KX_E_NO_ANSWER, "Width"});
    const CameraCheck done = check(plain("Width", "Integer", "640"), kPlan);
    EXPECT_EQ(done.verdict, CameraVerdict::Failed);
    EXPECT_EQ(done.error, KX_CC_StatusText(KX_E_NO_ANSWER));
    EXPECT_TRUE(done.entries.empty());
    EXPECT_EQ(exitCodeOf(done), 1);
    EXPECT_THAT(companion::checkText({done}).toStdString(),
                StartsWith(std::string("M S1: failed: ") + KX_CC_StatusText(KX_E_NO_ANSWER) + "\n"));

    device().addRule({"OpenDevice", KX_E_CONTROL_REFUSED});
    EXPECT_EQ(check({}, kVerify).error, KX_CC_StatusText(KX_E_CONTROL_REFUSED));
}

TEST_F(CameraChecked, EndsBetweenFeaturesWhenInterrupted)
{
    device().setInteger("Width", 640);
    int asked = 0;
    const QString width = plain("Width", "Integer", "640");
    const ie::FeaturesContent file =
        parsed("<F version='1'>" + header + "<Features>" + width + width + width + "</Features></F>");
    const CameraCheck done = companion::checkCamera(camera(), file, kPlan, [&] { return ++asked <= 3; });
    EXPECT_EQ(done.verdict, CameraVerdict::Interrupted);
    EXPECT_EQ(done.entries.size(), 2u);
    EXPECT_EQ(exitCodeOf(done), 130);
}

TEST_F(CameraChecked, CountsWhatWouldNotBeApplied)
{
    device().setInteger("Width", 640, 0, 1000);
    const auto code = [&](const QString& features, CheckMode mode) {
        return exitCodeOf(check(features, mode));
    };
    EXPECT_EQ(code(plain("Width", "Integer", "320"), kPlan), 0);
    EXPECT_EQ(code(plain("Width", "Integer", "320"), kVerify), 4);
    EXPECT_EQ(code(plain("Width", "Integer", "0x10"), kPlan), 4);
    EXPECT_EQ(code(plain("Width", "Integer", "1001"), kPlan), 4);
    EXPECT_EQ(code(plain("Gone", "Integer", "1"), kPlan), 4);
    EXPECT_EQ(code(plain("DeviceUserID", "StringReg", "x"), kPlan), 0);
    EXPECT_EQ(code(block("len='4'", "<R address='18'>0</R>"), kPlan), 0);
    EXPECT_EQ(code(block("len='4'", "<R address='18'>1</R>"), kPlan), 4);
    EXPECT_EQ(code(block("len='4'", "<R address='17'>1</R>"), kPlan), 0); // nobody can tell
    EXPECT_EQ(code(block("len='4'", "<R address='16'>1,2</R>"), kPlan), 4);
}

TEST_F(CameraChecked, TellsScriptsEverything)
{
    device().setInteger("Width", 640, 0, 1000);
    device().setMemory(16, QByteArray::fromHex("00000001"));
    const CameraCheck done = check(plain("Width", "Integer", "-5") + plain("Gone", "Integer", "1") +
                                       block("len='4'", "<R address='16'>1</R>"),
                                   kPlan);
    const std::string version = VELAInterface::softwareVersion().toStdString();
    EXPECT_EQ(
        companion::checkJson(done).dump(),
        "{\"camera\":{\"number\":" + std::to_string(done.camera.device.nDeviceID) +
            ",\"transport\":\"\",\"model\":\"M\",\"serial\":\"S1\",\"name\":\"\",\"address\":\"\"},"
            "\"result\":\"incomplete\",\"error\":null,\"not_applied\":[\"Width\",\"Gone\"],\"identity\":["
            "{\"check\":\"version given\",\"verdict\":\"good\",\"file\":\"" +
            version + "\",\"camera\":\"" + version +
            "\"},{\"check\":\"version\",\"verdict\":\"good\",\"file\":\"" + version + "\",\"camera\":\"" +
            version +
            "\"},{\"check\":\"board type\",\"verdict\":\"good\",\"file\":null,\"camera\":null},"
            "{\"check\":\"firmware\",\"verdict\":\"good\",\"file\":\"V1\",\"camera\":\"V1\"},"
            "{\"check\":\"model\",\"verdict\":\"good\",\"file\":\"M\",\"camera\":\"M\"}],\"features\":["
            "{\"feature\":\"Width\",\"verdict\":\"would change\",\"file\":\"-5\",\"camera\":\"640\","
            "\"new\":\"0\",\"warnings\":[\"\\\"-5\\\" is written as 0: imports take decimal numbers from 0 "
            "to 4294967295\"]},"
            "{\"feature\":\"Gone\",\"verdict\":\"absent\",\"file\":\"1\",\"camera\":null,"
            "\"reason\":\"A scripted failure.\",\"warnings\":[]},"
            "{\"feature\":\"Lut\",\"register\":16,\"verdict\":\"unchanged\",\"file\":\"1\",\"camera\":\"1\","
            "\"warnings\":[]}]}");
}
