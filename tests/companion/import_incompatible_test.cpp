// A file of another camera leaves a camera untouched.
#include "companion/ImportCompanion.h"

using ::testing::EndsWith;
using ::testing::HasSubstr;
using tests::Result;

namespace
{

struct Case
{
    const char* name;
    const char* text; // of the file's head
    const char* by;
    const char* message;
};

const char kMismatch[] = "Failed to import features. Camera models mismatch.";
const char kVersion[] = "Failed to import features. Possible version incompatibility.";

const Case kCases[] = {
    {"Model", "<DeviceModelName>EMU-1<", "<DeviceModelName>EMU-10<", kMismatch},
    {"ModelCase", "<DeviceModelName>EMU-1<", "<DeviceModelName>emu-1<", kMismatch},
    {"NoModel", "<DeviceModelName>EMU-1</DeviceModelName>\r\n", "", kMismatch},
    {"Firmware", "<DeviceFirmwareVersion>1.2.3<", "<DeviceFirmwareVersion>1.2.30<", kMismatch},
    {"NoFirmware", "<DeviceFirmwareVersion>1.2.3</DeviceFirmwareVersion>\r\n", "", kMismatch},
    {"BoardType", "<BoardDeviceType>4711<", "<BoardDeviceType>47110<", kMismatch},
    {"EmptyBoardType", "<BoardDeviceType>4711<", "<BoardDeviceType><", kMismatch},
    {"NoVersion", " version=\"1.0.0\">", ">", kVersion},
    {"EmptyVersion", " version=\"1.0.0\">", " version=\"\">", kVersion},
};

class Incompatible : public tests::ImportCompanion
{
protected:
    void expectUntouched(emu::EmulatedCamera& camera, const std::string& file, const std::string& message)
    {
        // Everything that the file would set stands otherwise.
        ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
        camera.pokeWord(77824, 7);
        const emu::Bytes before = camera.peek(0x10000, 0x10000);
        camera.resetCounters();
        const Result run = import(file, {"--serial", camera.config().serial});
        EXPECT_EQ(run.code, 5);
        EXPECT_THAT(run.err, HasSubstr(": " + message + "\n"));
        EXPECT_THAT(run.out, EndsWith("  incompatible\n0 applied, 0 incomplete, 1 incompatible, 0 failed\n"));
        const emu::Counters counters = camera.counters();
        EXPECT_EQ(counters.settingWrites, 0u);
        EXPECT_EQ(counters.writeMem, 0u);
        EXPECT_GT(counters.controlRequests, 0u);
        EXPECT_TRUE(camera.peek(0x10000, 0x10000) == before);
        EXPECT_EQ(controlOf(camera), 0u);
    }
};

class IncompatibleFile : public Incompatible, public ::testing::WithParamInterface<Case>
{
};

} // namespace

TEST_P(IncompatibleFile, LeavesTheCameraUntouched)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = altered(exported("S1"), GetParam().text, GetParam().by);
    expectUntouched(camera, file, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(All, IncompatibleFile, ::testing::ValuesIn(kCases),
                         [](const auto& one) { return one.param.name; });

TEST_F(Incompatible, LeavesACameraOfAnotherModelUntouched)
{
    addCamera("S1");
    const std::string file = exported("S1");
    emu::EmulatedCamera& other = addCamera("S2", [](emu::CameraConfig& config) { config.model = "EMU-2"; });
    expectUntouched(other, file, kMismatch);
}

TEST_F(Incompatible, LeavesACameraOfAnotherFirmwareUntouched)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("DeviceFirmwareVersion", std::string("9.9")), "");
    expectUntouched(camera, file, kMismatch);
}

TEST_F(Incompatible, LeavesACameraOfAnotherBoardUntouched)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("BoardDeviceType", int64_t(9)), "");
    expectUntouched(camera, file, kMismatch);
}

TEST_F(Incompatible, WouldHaveBeenSetByAFileThatFits)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.resetCounters();
    EXPECT_EQ(import(file).code, 0);
    EXPECT_GT(camera.counters().settingWrites, 0u);
}
