// What a file has to prove before an import writes anything of it.
#include "companion/CameraChecked.h"

using companion::CameraCheck;
using companion::CameraVerdict;
using companion::CheckMode;
using tests::CameraChecked;
using tests::exitCodeOf;
using tests::parsed;

namespace
{

constexpr CheckMode kPlan = CheckMode::Plan;
constexpr CheckMode kVerify = CheckMode::Verify;

} // namespace

TEST_F(CameraChecked, TellsWhatTheFileHasToProve)
{
    header += "<BoardDeviceType>7</BoardDeviceType>";
    const CameraCheck good = check({}, kPlan);
    EXPECT_EQ(companion::checkText({good}), "M S1: ready\n  nothing in the file\n");
    EXPECT_EQ(companion::checkText({good}, companion::Detail::All),
              "M S1: ready\n  nothing in the file\n"
              "  version given: good, file \"" +
                  VELAInterface::softwareVersion() + "\", camera \"" + VELAInterface::softwareVersion() +
                  "\"\n  version: good, file \"" + VELAInterface::softwareVersion() + "\", camera \"" +
                  VELAInterface::softwareVersion() +
                  "\"\n"
                  "  board type: good, file \"7\", camera \"7\"\n"
                  "  firmware: good, file \"V1\", camera \"V1\"\n"
                  "  model: good, file \"M\", camera \"M\"\n");
    EXPECT_EQ(exitCodeOf(good), 0);
}

namespace
{

struct IdentityCase
{
    const char* file;
    const char* verdicts; // of version given, version, board type, firmware, model: good, tolerated, bad
    int exitCode;
};

class Identity : public CameraChecked, public ::testing::WithParamInterface<IdentityCase>
{
};

} // namespace

TEST_P(Identity, IsToldInTheOrderOfTheImport)
{
    const CameraCheck done =
        companion::checkCamera(camera(), parsed(GetParam().file), kPlan, [] { return true; });
    std::string verdicts;
    for (const ie::IdentityComparison& line : done.identity)
        verdicts += "gtb"[int(line.outcome)];
    EXPECT_EQ(verdicts, GetParam().verdicts);
    EXPECT_EQ(exitCodeOf(done), GetParam().exitCode);
    EXPECT_EQ(exitCodeOf(done) == 5, done.entries.empty());
}

INSTANTIATE_TEST_SUITE_P(
    All, Identity,
    ::testing::Values(
        IdentityCase{"<F version='0.1'><DeviceFirmwareVersion>V1</DeviceFirmwareVersion>"
                     "<DeviceModelName>M</DeviceModelName><Features><F/></Features></F>",
                     "gtggg", 0},
        IdentityCase{"<F><DeviceFirmwareVersion>V1</DeviceFirmwareVersion>"
                     "<DeviceModelName>M</DeviceModelName><Features><F/></Features></F>",
                     "btggg", 5},
        IdentityCase{"<F version='0.1'><DeviceFirmwareVersion>V2</DeviceFirmwareVersion>"
                     "<DeviceModelName>M</DeviceModelName><Features><F/></Features></F>",
                     "gtgbg", 5},
        IdentityCase{"<F version='0.1'><DeviceModelName>M</DeviceModelName><Features><F/></Features></F>",
                     "gtgbg", 5},
        IdentityCase{"<F version='0.1'><DeviceFirmwareVersion>V1</DeviceFirmwareVersion>"
                     "<DeviceModelName>m</DeviceModelName><Features><F/></Features></F>",
                     "gtggb", 5},
        IdentityCase{"<F version='0.1'><DeviceFirmwareVersion>V1</DeviceFirmwareVersion>"
                     "<BoardDeviceType>8</BoardDeviceType><Features><F/></Features></F>",
                     "gtbgb", 5}));

TEST_F(CameraChecked, AFirmwareThatCannotBeReadFitsNoFile)
{
    device().removeNode("DeviceFirmwareVersion");
    header = "<DeviceFirmwareVersion></DeviceFirmwareVersion><DeviceModelName>M</DeviceModelName>";
    EXPECT_EQ(check({}, kPlan).verdict, CameraVerdict::Incompatible);
    device().setString("DeviceFirmwareVersion", "");
    EXPECT_EQ(check({}, kPlan).verdict, CameraVerdict::Ready);
}

// Who cannot be asked is no other camera.
TEST_F(CameraChecked, AFirmwareThatIsRefusedIsAFailureAndNoMismatch)
{
    device().setAccessMode("DeviceFirmwareVersion", KX_AM_NOT_AVAILABLE);
    const CameraCheck done = check({}, kVerify);
    EXPECT_EQ(done.verdict, CameraVerdict::Failed);
    EXPECT_EQ(done.error, "DeviceFirmwareVersion cannot be read: A scripted failure.");
    EXPECT_EQ(exitCodeOf(done), 1);
    header = "<DeviceFirmwareVersion>V1</DeviceFirmwareVersion><DeviceModelName>M</DeviceModelName>"
             "<BoardDeviceType>7</BoardDeviceType>";
    device().setAccessMode("DeviceFirmwareVersion", KX_AM_READ_ONLY);
    device().setAccessMode("BoardDeviceType", KX_AM_NOT_AVAILABLE);
    EXPECT_EQ(check({}, kVerify).error, "BoardDeviceType cannot be read: A scripted failure.");
}

TEST_F(CameraChecked, AMismatchIsToldWithBothValues)
{
    header = "<DeviceFirmwareVersion>V2</DeviceFirmwareVersion><DeviceModelName>N</DeviceModelName>";
    EXPECT_EQ(check({}, kPlan).error, "The file belongs to another model, firmware, board type or version: "
                                      "firmware V2, the camera has V1; model N, the camera has M.");
    device().removeNode("DeviceFirmwareVersion");
    header = "<DeviceModelName>M</DeviceModelName>";
    EXPECT_EQ(check({}, kPlan).error, "The file belongs to another model, firmware, board type or version: "
                                      "firmware not given, the camera has none.");
}
