#include "companion/ImportCompanion.h"
#include "support/RegisterByRegister.h"

#include <nlohmann/json.hpp>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;

namespace
{

using ImportCommand = tests::ImportCompanion;

constexpr uint32_t kGainOfAll = 77824; // register of the gain, the first of three

int64_t number(const emu::EmulatedCamera& camera, const std::string& name)
{
    return std::get<int64_t>(camera.node(name).value());
}

} // namespace

TEST_F(ImportCommand, SetsEveryCameraAsTheFileSays)
{
    std::vector<emu::EmulatedCamera*> cameras;
    for (const char* serial : {"S1", "S2", "S3", "S4"})
        cameras.push_back(&addCamera(serial));
    const std::string file = exported("S1");
    for (emu::EmulatedCamera* camera : cameras) {
        ASSERT_EQ(camera->setNode("TestPattern", int64_t(1)), "");
        ASSERT_EQ(camera->setNode("ReverseY", int64_t(1)), "");
        ASSERT_EQ(camera->setNode("Height", int64_t(16)), "");
        camera->pokeWord(kGainOfAll, 7);
    }
    const Result run = import(file);
    EXPECT_EQ(run.code, 0);
    for (emu::EmulatedCamera* camera : cameras) {
        EXPECT_EQ(number(*camera, "TestPattern"), 2);
        EXPECT_EQ(number(*camera, "ReverseY"), 0);
        EXPECT_EQ(number(*camera, "Height"), 480);
        EXPECT_EQ(camera->peekWord(kGainOfAll), 100u);
        EXPECT_EQ(controlOf(*camera), 0u);
    }
    EXPECT_THAT(run.out, ::testing::StartsWith("MODEL  SERIAL  REQUESTS  SECONDS  RESULT\nEMU-1  S1  "));
    EXPECT_THAT(run.out, EndsWith("  applied\n4 applied, 0 incomplete, 0 incompatible, 0 failed\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S3: importing\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S3: done\n"));
}

TEST_F(ImportCommand, GoesOnWithTheOthersWhenOneFails)
{
    emu::EmulatedCamera& taken = addCamera("S1");
    emu::EmulatedCamera& sound = addCamera("S2");
    addCamera("S3", [](emu::CameraConfig& config) { config.model = "Other"; });
    const std::string file = exported("S2");
    taken.stealControl();
    ASSERT_EQ(sound.setNode("Height", int64_t(16)), "");
    const Result run = import(file);
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(number(sound, "Height"), 480);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: Failed to import features.Failed to open device.\n"));
    EXPECT_THAT(run.err, HasSubstr("Other S3: Failed to import features. Camera models mismatch.\n"));
    EXPECT_THAT(run.out, EndsWith("\n1 applied, 0 incomplete, 1 incompatible, 1 failed\n"));
}

TEST_F(ImportCommand, PrintsTheSignalsAndAResultForEachCameraAsJsonLines)
{
    addCamera("S1");
    addCamera("S2", [](emu::CameraConfig& config) { config.model = "Other"; });
    const std::string file =
        altered(exported("S1"), feature("Width", "Integer", "640"), feature("Width", "Integer", "64000"));
    const Result run = import(file, {"--serial", "S1", "--json"});
    EXPECT_EQ(run.code, 4);
    const tests::Json told = tests::lastObject(run, "result");
    EXPECT_EQ(told["result"], "incomplete");
    EXPECT_EQ(told["not_applied"], tests::Json{"Width"});
    EXPECT_EQ(told["features"].dump(),
              "[{\"feature\":\"Width\",\"verdict\":\"not applied\",\"file\":null,\"camera\":null,"
              "\"reason\":\"The value is out of the feature's range.\",\"warnings\":[]}]");
    EXPECT_GT(told["requests"], 0);
    for (const char* key : {"error", "snapshot", "undo", "user_set"})
        EXPECT_TRUE(told[key].is_null()) << key;
    EXPECT_EQ(run.err, "EMU-1 S1: Width did not take its value: The value is out of the feature's range.\n");

    const Result other = import(file, {"--serial", "S2", "--json"});
    EXPECT_EQ(other.code, 5);
    const tests::Json refused = tests::lastObject(other, "result");
    EXPECT_EQ(refused["result"], "incompatible");
    EXPECT_EQ(refused["camera"]["number"], 2);
    EXPECT_EQ(refused["error"], "The file belongs to another model, firmware, board type or version: model "
                                "EMU-1, the camera has Other.");
    EXPECT_THAT(other.err, HasSubstr(": model EMU-1, the camera has Other.\n"));
}

TEST_F(ImportCommand, NamesTheFeaturesThatDidNotTakeTheirValue)
{
    addCamera("S1");
    const std::string file =
        altered(exported("S1"), feature("SensorHeight", "Integer", "1024"),
                feature("SensorHeight", "Integer", "1025") + feature("Absent", "Float", "1.000000"));
    const Result run = import(file);
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.out, EndsWith("  incomplete\n0 applied, 1 incomplete, 0 incompatible, 0 failed\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: incomplete\n"
                                   "EMU-1 S1: Absent did not take its value: The camera has no feature of "
                                   "this name.\n"));
    EXPECT_EQ(run.err.find("SensorHeight"), std::string::npos); // nobody can ever write it
}

// The camera refuses the register to hosts, reads and writes alike.
TEST_F(ImportCommand, NamesTheRegistersThatDidNotTakeTheirValue)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    emu::Faults faults;
    faults.refusals = {{kGainOfAll + 4, 4}};
    camera.setFaults(faults);
    const Result run = import(file, {"--all", "--json"});
    EXPECT_EQ(run.code, 4);
    const tests::Json told = tests::lastObject(run, "result");
    EXPECT_EQ(told["not_applied"], tests::Json{"Gain (register 0x00013004)"});
    EXPECT_EQ(told["features"][0]["register"], 77828);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: Gain (register 0x00013004) did not take its value: "));
}

// A write that fails at first and takes later has taken.
TEST_F(ImportCommand, IsNotMisledByWhatSettlesLater)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    // The offset's largest value depends on the width: the file's offset does not fit before its width does.
    ASSERT_EQ(camera.setNode("OffsetX", int64_t(0)), "");
    ASSERT_EQ(camera.setNode("Width", int64_t(1280)), "");
    const Result run = import(file);
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(number(camera, "OffsetX"), 320);
    EXPECT_EQ(number(camera, "Width"), 640);
    EXPECT_THAT(run.err, Not(HasSubstr("did not take")));
}

TEST_F(ImportCommand, SaysWhenTheFileIsOfAnotherVersionAndAppliesIt)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file =
        altered(exported("S1"), "<FeaturesFile version=\"1.0.0\">", "<FeaturesFile version=\"0.9\">");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = import(file);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(number(camera, "Height"), 480);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: the file was written by another version of the suite.\n"));
}

TEST_F(ImportCommand, TellsOfABrokenRegisterBlockWhatTheJobDoesNot)
{
    addCamera("S1");
    const std::string file =
        altered(exported("S1"), "name=\"CounterLevel\" len=\"4\"", "name=\"CounterLevel\" len=\"\"");
    const Result run = import(file);
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: the file has a broken register block; what comes before it "
                                   "was applied.\n"));
    EXPECT_THAT(run.out, EndsWith("  incomplete\n0 applied, 1 incomplete, 0 incompatible, 0 failed\n"));
}

TEST_F(ImportCommand, TellsOfACameraThatVanishes)
{
    const tests::RegisterByRegister setting;
    emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    emu::Faults faults;
    faults.silence = emu::Silence{150, std::nullopt}; // in the middle of the first cycle
    camera.setFaults(faults);
    const Result run = import(file);
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: the line failed at "));
    EXPECT_THAT(run.err,
                HasSubstr(": The camera does not answer. A part of the file may have been applied.\n"));
    EXPECT_THAT(run.out, EndsWith("\n1 applied, 0 incomplete, 0 incompatible, 1 failed\n"));
}

// The job calls it another model; a camera that cannot be asked is no other one.
TEST_F(ImportCommand, AFirmwareThatCannotBeReadIsNoMismatch)
{
    emu::EmulatedCamera& camera = addCamera(
        "S1", [](emu::CameraConfig& config) { config.description = tests::descriptionWithOneRegister(); });
    const std::string file = exported("S1");
    emu::Faults faults;
    faults.refusals = {{0x10000, 32}};
    camera.setFaults(faults);
    const Result run = import(file, {"--all", "--json"});
    EXPECT_EQ(run.code, 1);
    const tests::Json told = tests::lastObject(run, "result");
    EXPECT_EQ(told["result"], "failed");
    EXPECT_THAT(told["error"].get<std::string>(),
                ::testing::StartsWith("DeviceFirmwareVersion cannot be read: "));
    EXPECT_THAT(told["error"].get<std::string>(), EndsWith(" Nothing was written."));
    EXPECT_EQ(tests::runInProcess({"verify", path(file), "--all"}).code, 1);
    EXPECT_EQ(tests::runInProcess({"plan", path(file), "--all"}).code, 1);
}

TEST_F(ImportCommand, DoesNothingWhenASelectorFitsNobody)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = import("missing.fpk", {"--serial", "S1", "S9"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, "No camera has the serial number \"S9\".\n");
    EXPECT_EQ(camera.counters().writeReg, 0u);
}
