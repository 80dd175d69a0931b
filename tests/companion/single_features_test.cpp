// Single features read and set, commands executed, and imports of a part of a file.
#include "companion/DoubtfulWrites.h"

#include <nlohmann/json.hpp>

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;
using tests::runInProcess;

namespace
{

class SingleFeatures : public tests::DoubtfulWrites
{
protected:
    static int64_t integer(const emu::EmulatedCamera& camera, const char* name)
    {
        return std::get<int64_t>(camera.node(name).value());
    }

    // "begins" and "ends" of the last command.
    json auditLine() const { return json::parse(lastAuditLine()); }
};

} // namespace

TEST_F(SingleFeatures, AreShownWithEntriesAndUnits)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.stealControl();
    camera.resetCounters();
    const Result run =
        runInProcess({"get", "Height", "PixelFormat", "ReverseX", "AcquisitionFrameRate", "--all"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("EMU-1  S1      Height                16\n"));
    EXPECT_THAT(run.out, HasSubstr("EMU-1  S1      PixelFormat           Mono8\n"));
    EXPECT_THAT(run.out, HasSubstr("EMU-1  S1      ReverseX              "));
    EXPECT_THAT(run.out, HasSubstr(" Hz\n"));
    EXPECT_THAT(run.out, HasSubstr("EMU-1  S2      Height                480\n"));
    EXPECT_EQ(camera.counters().writeReg, 0u);

    const json object =
        tests::lastObject(runInProcess({"get", "PixelFormat", "--serial", "S2", "--json"}), "values");
    EXPECT_EQ(object["camera"]["serial"], "S2");
    EXPECT_EQ(object["features"], (json{{{"feature", "PixelFormat"},
                                         {"value", "Mono8"},
                                         {"number", "17301505"},
                                         {"unit", nullptr},
                                         {"access", "writable now"},
                                         {"error", nullptr}}}));
}

TEST_F(SingleFeatures, ThatCannotBeReadAreNamed)
{
    addCamera("S1");
    const Result run = runInProcess({"get", "Nope", "AcquisitionStart", "Width", "--all"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: Nope: " + std::string(KX_CC_StatusText(KX_E_GC_PROPERTY)) + "\n"));
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: AcquisitionStart: It is a command, or a register without a value.\n"));
    EXPECT_THAT(run.out, HasSubstr("Width    640\n"));
    EXPECT_EQ(runInProcess({"get", "Width", "--serial", "S9"}).code, 3);
}

TEST_F(SingleFeatures, AreSetInTheirOrderAndLeaveAnAuditLine)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = runInProcess({"set", "Height=0x10", "PixelFormat=Mono12", "ReverseX=yes",
                                     "AcquisitionFrameRate=12.5Hz", "DeviceUserID=Gate=3", "--all"});
    EXPECT_EQ(run.code, 0) << run.out << run.err;
    EXPECT_EQ(integer(camera, "Height"), 16);
    EXPECT_EQ(integer(camera, "PixelFormat"), 0x01100005);
    EXPECT_EQ(integer(camera, "ReverseX"), 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: Height: 480 -> 16\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: PixelFormat: Mono8 -> Mono12\n"));
    EXPECT_THAT(run.err, HasSubstr("DeviceUserID:  -> Gate=3\n"));
    EXPECT_THAT(run.out, HasSubstr("EMU-1 S1: applied\n"));
    EXPECT_EQ(controlOf(camera), 0u);
    const json line = auditLine();
    EXPECT_EQ(line["event"], "ends");
    EXPECT_EQ(line["command"], "set");
    EXPECT_EQ(line["changes"][0], (json{{"feature", "Height"}, {"from", "480"}, {"to", "16"}}));
    EXPECT_EQ(line["outcome"], "applied");
}

TEST_F(SingleFeatures, ThatStandSoAreNotWritten)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    camera.resetCounters();
    const Result run = runInProcess({"set", "Height=480", "PixelFormat=Mono8", "--all"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(camera.counters().settingWrites, 0u);
    EXPECT_THAT(run.out, HasSubstr("  2 unchanged\n"));
}

TEST_F(SingleFeatures, AreNotSetWhenOneOfThemMeansNothing)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::pair<const char*, const char*> cases[] = {
        {"Nope=1", "absent: Nope"},
        {"PixelFormat=Mono99", "\"Mono99\" is none of its entries: Mono8, Mono10, Mono12."},
        {"Width=wide", "\"wide\" is no whole number."},
        {"ReverseX=perhaps", "\"perhaps\" is neither true nor false."},
        {"ExposureTime=long", "\"long\" is no number."}};
    for (const auto& [word, text] : cases) {
        camera.resetCounters();
        const Result run = runInProcess({"set", "Height=16", word, "--all"});
        EXPECT_EQ(run.code, 4) << word;
        EXPECT_THAT(run.out, HasSubstr(text));
        EXPECT_THAT(run.out, HasSubstr("Nothing was written."));
        EXPECT_EQ(camera.counters().settingWrites, 0u) << word;
    }
}

TEST_F(SingleFeatures, ThatTheCameraDoesNotTakeEndTheWork)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const Result range = runInProcess({"set", "Width=64000", "Height=16", "--all"});
    EXPECT_EQ(range.code, 4);
    EXPECT_THAT(range.out,
                HasSubstr("  out of range: Width: camera 640, wanted 64000: 64000 is above the maximum"));
    EXPECT_EQ(integer(camera, "Height"), 480);
    const Result step = runInProcess({"set", "Width=17", "--all"});
    EXPECT_THAT(step.out, HasSubstr("17 is no multiple of the increment 16"));
    const Result access = runInProcess({"set", "DeviceFirmwareVersion=2", "--all"});
    EXPECT_EQ(access.code, 4);
    EXPECT_THAT(access.out, HasSubstr("  not writable: DeviceFirmwareVersion: "));
    camera.stealControl();
    const Result taken = runInProcess({"set", "Height=16", "--all"});
    EXPECT_EQ(taken.code, 1);
    EXPECT_THAT(taken.out, HasSubstr("failed: the camera could not be opened: "));
}

TEST_F(SingleFeatures, ThatMayHaveBeenChangedAreTold)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const auto reset = [&] { ASSERT_EQ(camera.setNode("Height", int64_t(16)), ""); };
    expectDoubt(camera, {"set", "Height=24", "--all", "--json"},
                {"Height", reset, [&] { return integer(camera, "Height") == 24; }});
}

TEST_F(SingleFeatures, NeedAFormAndALine)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    for (const char* word : {"Width", "=640"}) {
        const Result run = runInProcess({"set", word, "--all"});
        EXPECT_EQ(run.code, 2);
        EXPECT_THAT(run.err, HasSubstr("Write FEATURE=VALUE."));
    }
    write("user-data", "a file where the folder should be");
    EXPECT_EQ(runInProcess({"set", "Height=16", "--all", "--require-audit"}).code, 6);
    EXPECT_EQ(integer(camera, "Height"), 480);
}

TEST_F(SingleFeatures, AreExecutedWhenTheyAreCommands)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    camera.resetCounters();
    const Result run = runInProcess({"run", "TriggerSoftware", "--all"});
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_EQ(camera.counters().settingWrites, 1u);
    EXPECT_EQ(auditLine()["changes"],
              (json{{{"feature", "TriggerSoftware"}, {"from", nullptr}, {"to", "executed"}}}));
    const Result none = runInProcess({"run", "Width", "--all"});
    EXPECT_EQ(none.code, 4);
    EXPECT_THAT(none.out, HasSubstr("  not applied: Width: "));
    EXPECT_EQ(runInProcess({"run", "Nope", "--all"}).code, 4);
}

TEST_F(SingleFeatures, AreTakenFromAFile)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("ReverseX", int64_t(0)), "");
    camera.pokeWord(77824, 7);
    const int64_t reverse = integer(camera, "ReverseX");
    const Result run = import(file, {"--all", "--only", "Heig*", "Gain", "--verify"});
    EXPECT_EQ(run.code, 0) << run.out << run.err;
    EXPECT_EQ(integer(camera, "Height"), 480);
    EXPECT_EQ(camera.peekWord(77824), 100u);
    EXPECT_EQ(integer(camera, "ReverseX"), reverse);
    const json line = auditLine();
    EXPECT_EQ(line["only"], (json{"Heig*", "Gain"}));
    EXPECT_EQ(line["files"][0]["path"], path(file));
    EXPECT_EQ(line["changes"].size(), 2u);
}

TEST_F(SingleFeatures, ThatTheFileDoesNotHaveAreWrongUsage)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = import(file, {"--all", "--only", "Height", "Nope"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, "The file has no feature Nope: " + path(file) + "\n");
    EXPECT_EQ(integer(camera, "Height"), 16);
    EXPECT_EQ(import("missing", {"--all", "--only", "Height"}).code, 6);
    EXPECT_EQ(import(exported("S1", {"--format", "bag"}), {"--all", "--only", "Height"}).code, 2);
}
