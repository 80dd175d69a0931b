// What stands behind an import: the check of everything that the file names, and the camera's user set.
#include "companion/ImportCompanion.h"
#include "iefeatures/imports/UserSet.h"

#include "gvcp/Gvcp.h"

#include <nlohmann/json.hpp>

#include <algorithm>

using nlohmann::json;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;

namespace
{

using VerifiedImport = tests::ImportCompanion;

constexpr uint32_t kGainOfAll = 77824;
constexpr uint32_t kUserSetSelector = 0x16000;
constexpr uint32_t kUserSetSave = 0x16008;
constexpr uint32_t kUserSetDefault = 0x1600C;

json told(const Result& run)
{
    return json::parse(tests::lastObject(run, "result").dump());
}

json entryOf(const json& verification, const std::string& feature)
{
    for (const json& entry : verification["features"])
        if (entry["feature"] == feature)
            return entry;
    return {};
}

auto countOf(const json& report, const std::string& verdict)
{
    return std::count_if(report["features"].begin(), report["features"].end(),
                         [&](const json& entry) { return entry["verdict"] == verdict; });
}

} // namespace

TEST_F(VerifiedImport, TellsWhatWasAppliedAndWhatWasSoBefore)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.pokeWord(kGainOfAll, 7);
    const Result run = import(file, {"--all", "--verify", "--json"});
    EXPECT_EQ(run.code, 0) << run.out;
    const json told = ::told(run);
    EXPECT_EQ(told["result"], "applied");
    EXPECT_EQ(told["camera"]["number"], 1);
    EXPECT_EQ(told["camera"]["model"], "EMU-1");
    EXPECT_EQ(told["camera"]["serial"], "S1");
    EXPECT_EQ(told["not_applied"], json::array());
    EXPECT_EQ(countOf(told, "applied"), 3); // the gain's register stands behind another feature as well
    EXPECT_GT(countOf(told, "unchanged"), 50);
    EXPECT_EQ(entryOf(told, "Height"), (json{{"feature", "Height"},
                                             {"verdict", "applied"},
                                             {"file", "480"},
                                             {"camera", "480"},
                                             {"warnings", json::array()}}));
    EXPECT_EQ(entryOf(told, "Width")["verdict"], "unchanged");
    EXPECT_EQ(entryOf(told, "Gain")["register"], kGainOfAll);
    EXPECT_EQ(entryOf(told, "Gain")["verdict"], "applied");
}

TEST_F(VerifiedImport, NamesWhatDidNotReachItsValueAndWhy)
{
    addCamera("S1");
    const std::string file =
        altered(exported("S1"), feature("Width", "Integer", "640"),
                feature("Width", "Integer", "64000") + feature("Nobody", "Float", "1.000000"));
    const Result run = import(file, {"--all", "--verify"});
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.out, HasSubstr(" 1 not applied, 1 absent; state: 1 differs\n"));
    EXPECT_THAT(run.out, HasSubstr("  not applied: Width: camera 640, file 64000: The value is out of the "
                                   "feature's range.\n"));
    EXPECT_THAT(run.out, HasSubstr("  absent: Nobody: The camera has no feature of this name.\n"));
}

// The import takes all of these for well done.
TEST_F(VerifiedImport, FindsWhatTheImportDoesNotNotice)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = altered(exported("S1"), feature("TestPatternSeed", "Integer", "3735928559"),
                                     feature("TestPatternSeed", "Integer", "4294967296"));
    const Result plain = import(file);
    EXPECT_EQ(plain.code, 0) << plain.err;
    EXPECT_EQ(camera.node("TestPatternSeed"), emu::NodeValue(int64_t(0)));
    const Result run = import(file, {"--all", "--verify", "--json"});
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(entryOf(told(run), "TestPatternSeed")["verdict"], "not applied");
    EXPECT_EQ(entryOf(told(run), "TestPatternSeed")["camera"], "0");
}

// Who holds control is another matter behind the export than it was in its midst.
TEST_F(VerifiedImport, LeavesOutWhatImportsDoNotSet)
{
    addCamera("S1");
    const std::string file =
        altered(exported("S1"), feature("Width", "Integer", "640"),
                feature("Width", "Integer", "640") + feature("DeviceUserID", "StringReg", "Other"));
    const Result run = import(file, {"--all", "--verify", "--json"});
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_EQ(entryOf(told(run), "GevCCP")["verdict"], "state");
    EXPECT_EQ(entryOf(told(run), "DeviceUserID")["verdict"], "skipped");
}

// There is no such float.
TEST_F(VerifiedImport, TellsWhatTheCameraHasRounded)
{
    addCamera("S1");
    const std::string file = altered(exported("S1"), feature("AcquisitionFrameRate", "Float", "25.000000"),
                                     feature("AcquisitionFrameRate", "Float", "25.000001"));
    const Result run = import(file, {"--all", "--verify", "--json"});
    EXPECT_EQ(entryOf(told(run), "AcquisitionFrameRate"), (json{{"feature", "AcquisitionFrameRate"},
                                                                {"verdict", "coerced"},
                                                                {"file", "25.000001"},
                                                                {"camera", "25.000002"},
                                                                {"warnings", json::array()}}));
}

TEST_F(VerifiedImport, LeavesOutCamerasThatWereNotImportedInto)
{
    addCamera("S1");
    addCamera("S2", [](emu::CameraConfig& config) { config.model = "Other"; });
    const Result run = import(exported("S1"), {"--all", "--verify"});
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.out, HasSubstr("EMU-1 S1: applied\n"));
    EXPECT_THAT(run.out, Not(HasSubstr("Other S2: ")));
}

TEST_F(VerifiedImport, IsForFeaturesFiles)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1", {"--format", "bag"});
    camera.resetCounters();
    for (const char* option : {"--verify", "--persist=UserSet1"}) {
        const Result run = import(file, {"--all", "--format", "bag", option});
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.err, "Only the import of a features file can be verified.\n");
    }
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

TEST_F(VerifiedImport, SavesIntoAUserSet)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = import(exported("S1"), {"--all", "--persist", "UserSet1"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(camera.peekWord(kUserSetSelector), 1u);
    EXPECT_EQ(camera.peekWord(kUserSetSave), 1u);
    EXPECT_EQ(camera.peekWord(kUserSetDefault), 0u);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_THAT(run.err, EndsWith("EMU-1 S1: saved into UserSet1.\n"));
    EXPECT_THAT(run.out, HasSubstr("EMU-1 S1: applied\n"));
}

TEST_F(VerifiedImport, MakesTheUserSetTheOneAtPowerUp)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    EXPECT_EQ(import(exported("S1"), {"--all", "--persist", "UserSet1", "--start-up"}).code, 0);
    EXPECT_EQ(camera.peekWord(kUserSetDefault), 1u);
}

TEST_F(VerifiedImport, SavesNothingThatWasNotAllApplied)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    emu::EmulatedCamera& sound = addCamera("S2");
    const std::string file = exported("S1");
    emu::Faults faults;
    faults.refusals = {{kGainOfAll, 4}};
    camera.setFaults(faults);
    const Result run = import(file, {"--all", "--persist", "UserSet1", "--start-up"});
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(camera.peekWord(kUserSetSave), 0u);
    EXPECT_EQ(camera.peekWord(kUserSetDefault), 0u);
    EXPECT_EQ(sound.peekWord(kUserSetSave), 1u);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: UserSet1 was not saved: not all was applied.\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S2: saved into UserSet1.\n"));
}

TEST_F(VerifiedImport, TellsOfAUserSetThatCannotBeSaved)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    const Result other = import(file, {"--all", "--persist", "UserSet9"});
    EXPECT_EQ(other.code, 1);
    EXPECT_THAT(other.err,
                EndsWith("EMU-1 S1: UserSet9 was not saved: UserSetSelector has no entry UserSet9.\n"));
    EXPECT_EQ(camera.peekWord(kUserSetSave), 0u);

    emu::Faults faults;
    faults.refusals = {{kUserSetSave, 4}};
    camera.setFaults(faults);
    const Result refused = import(file, {"--all", "--persist", "UserSet1", "--start-up"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, HasSubstr("EMU-1 S1: UserSet1 was not saved: UserSetSave failed: "));
    EXPECT_EQ(camera.peekWord(kUserSetDefault), 0u);
}

TEST_F(VerifiedImport, DoubtsAUserSetThatNoAnswerCameTo)
{
    using State = companion::SavedSet::State;
    EXPECT_EQ(companion::savingText("UserSet1", {State::Saved, {}}), "saved into UserSet1.");
    EXPECT_EQ(companion::savingText("UserSet1", {State::InDoubt, "UserSetSave failed: why."}),
              "UserSet1 may have been saved, as no answer came: UserSetSave failed: why.");
    EXPECT_EQ(
        companion::savingText("UserSet1", {State::Saved, "UserSetDefault did not take UserSet1: why."}),
        "UserSet1 was saved, and the camera does not start with it: UserSetDefault did not take UserSet1: "
        "why.");
}

TEST_F(VerifiedImport, TellsOfAUserSetThatTheCameraDoesNotStartWith)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    emu::Faults faults;
    faults.refusals = {{kUserSetDefault, 4, gvcp::WriteProtect}};
    camera.setFaults(faults);
    const Result run = import(file, {"--all", "--persist", "UserSet1", "--start-up", "--json"});
    EXPECT_EQ(run.code, 1);
    const tests::Json userSet = tests::lastObject(run, "result")["user_set"];
    EXPECT_EQ(userSet["saved"], true);
    EXPECT_THAT(userSet["error"].get<std::string>(),
                HasSubstr("UserSet1 was saved, and the camera does not start with it: "));
}

TEST_F(VerifiedImport, IsInTheAuditLog)
{
    addCamera("S1");
    ASSERT_EQ(import(exported("S1"), {"--all", "--persist", "UserSet1"}).code, 0);
    const json line = json::parse(lastAuditLine());
    EXPECT_EQ(line["user_set"], "UserSet1");
}
