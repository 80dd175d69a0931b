// iefeatures plan and verify, and import --dry-run, against emulated cameras.
#include "companion/ImportCompanion.h"
#include "gvcp/Gvcp.h"
#include "support/SystemTexts.h"

#include <nlohmann/json.hpp>

#include <QRegularExpression>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::Arguments;
using tests::Program;
using tests::Result;

namespace
{

constexpr uint32_t kGainOfAll = 77824;           // register of the gain, the first of three
constexpr uint32_t kTriggerMode = 73776;         // of the selected trigger
constexpr uint32_t kTransferLayerLock = 0x10070; // "TLParamsLockedReg"
constexpr uint32_t kWidth = 0x11010;

class CheckCommand : public tests::ImportCompanion
{
protected:
    Result run(const std::string& command, const std::string& name, const Arguments& more = {"--all"})
    {
        Arguments arguments{command, path(name)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return tests::runInProcess(arguments);
    }

    // A file of that features alone, for the emulator's camera.
    std::string fileOf(const QByteArray& features)
    {
        write("small.fpk", "<FeaturesFile version=\"1.0.0\">"
                           "<DeviceFirmwareVersion>1.2.3</DeviceFirmwareVersion>"
                           "<DeviceModelName>EMU-1</DeviceModelName><Features>" +
                               features + "</Features></FeaturesFile>");
        return "small.fpk";
    }

    // Behind the camera's verdict: the counts and what needs attention.
    static std::string entriesOf(const Result& result)
    {
        return result.out.substr(result.out.find('\n') + 1);
    }
};

const char* const kProven = "  version given: good, file \"1.0.0\", camera \"1.0.0\"\n"
                            "  version: good, file \"1.0.0\", camera \"1.0.0\"\n"
                            "  board type: good, file \"4711\", camera \"4711\"\n"
                            "  firmware: good, file \"1.2.3\", camera \"1.2.3\"\n"
                            "  model: good, file \"EMU-1\", camera \"EMU-1\"\n";

} // namespace

TEST_F(CheckCommand, ShowsWhatAnImportWouldDoWithTheCamerasOwnExport)
{
    addCamera("S1");
    const std::string file = exported("S1");
    const std::string control =
        "  state: GevCCP: camera OpenAccess (0), file ExclusiveAccess (1): tells who controls the camera\n";
    const std::string counts = "  152 unchanged; state: 1 differs\n";
    const std::string warning =
        "  warning: WideScale (register 0x00017460): written again: the texts differ, the "
        "values do not\n";
    const Result plan = run("plan", file);
    EXPECT_EQ(plan.code, 0);
    EXPECT_EQ(plan.err, "");
    EXPECT_EQ(plan.out, "EMU-1 S1: ready\n" + counts + warning);
    EXPECT_EQ(run("plan", file, {"--all", "--details"}).out,
              "EMU-1 S1: ready\n" + counts + kProven + control + warning);
    const Result verify = run("verify", file);
    EXPECT_EQ(verify.code, 0);
    EXPECT_EQ(verify.out, "EMU-1 S1: applied\n" + counts);
    EXPECT_EQ(run("verify", file, {"--all", "--details"}).out,
              "EMU-1 S1: applied\n" + counts + kProven + control);
}

TEST_F(CheckCommand, TakesNoControlAndWritesNothing)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(1)), "");
    camera.pokeWord(kGainOfAll, 7);
    const emu::Bytes before = camera.peek(0x10000, 0x10000);
    for (const Arguments& command :
         {Arguments{"plan"}, Arguments{"verify"}, Arguments{"import", "--dry-run"}}) {
        camera.resetCounters();
        Arguments more(command.begin() + 1, command.end());
        more.push_back("--all");
        EXPECT_EQ(run(command[0], file, more).code, command[0] == "verify" ? 4 : 0);
        EXPECT_GT(camera.counters().readReg, 0u);
        EXPECT_EQ(camera.counters().writeReg, 0u);
        EXPECT_EQ(camera.counters().writeMem, 0u);
        EXPECT_EQ(camera.counters().registersWritten, 0u);
    }
    EXPECT_TRUE(camera.peek(0x10000, 0x10000) == before);
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(CheckCommand, WorksWhileAnotherHostControlsTheCamera)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(1)), "");
    camera.stealControl();
    const uint32_t control = controlOf(camera);
    const Result plan = run("plan", file);
    EXPECT_EQ(plan.code, 0);
    EXPECT_THAT(plan.out,
                HasSubstr("\n  would change: TestPattern: GreyHorizontalRamp (1) -> GreyVerticalRamp (2)\n"));
    EXPECT_EQ(controlOf(camera), control);
    EXPECT_EQ(run("import", file).code, 1);

    camera.releaseControl();
    camera.stealControl(true); // which forbids others to read
    const Result refused = run("plan", file);
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.out, StartsWith("EMU-1 S1: failed: "));
}

TEST_F(CheckCommand, ADryRunIsThePlan)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(1)), "");
    for (const Arguments& more : {Arguments{"--all"}, Arguments{"--all", "--json"}}) {
        Arguments dry = more;
        dry.push_back("--dry-run");
        QString told = QString::fromStdString(run("import", file, dry).out);
        told.replace("\"command\":\"import\"", "\"command\":\"plan\"");
        EXPECT_EQ(told.toStdString(), run("plan", file, more).out);
    }
    EXPECT_EQ(std::get<int64_t>(*camera.node("TestPattern")), 1);
    const Result bag = run("import", file, {"--all", "--dry-run", "--format", "bag"});
    EXPECT_EQ(bag.code, 2);
    EXPECT_EQ(bag.err, "--dry-run needs a features file: nobody can tell what a feature bag would do.\n");
}

// What a plan tells of each feature is what an import then does.
TEST_F(CheckCommand, AnImportDoesWhatThePlanSays)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file =
        fileOf(feature("Height", "Integer", "16") + feature("TestPatternSeed", "Integer", "-5") +
               feature("SensorHeight", "Integer", "1025") + feature("Width", "Integer", "64000") +
               feature("Absent", "Float", "1.000000") + feature("TestPattern", "Enumeration", "77") +
               feature("DeviceUserID", "StringReg", "new") + feature("ReverseY", "Boolean", "0") +
               "<ComplexFeature name=\"Gain\" len=\"4\" reg=\"GainRawReg\">"
               "<RegValue address=\"77824\" variables=\"\" to=\"70\" from=\"TO/10\">7.000000</RegValue>"
               "</ComplexFeature>");
    const Result plan = run("plan", file);
    EXPECT_EQ(plan.code, 4);
    EXPECT_EQ(
        entriesOf(plan),
        "  1 unchanged, 3 would change, 1 skipped, 2 out of range, 1 absent; state: 1 differs\n"
        "  would change: TestPatternSeed: 3735928559 -> 0\n"
        "  warning: TestPatternSeed: \"-5\" is written as 0: imports take decimal numbers from 0 to "
        "4294967295\n"
        "  out of range: Width: camera 640, file 64000: 64000 is above the maximum 960\n"
        "  absent: Absent: The camera has no feature of this name.\n"
        "  out of range: TestPattern: camera GreyVerticalRamp (2), file 77: 77 is no entry that it has now\n"
        "  would change: Height: 480 -> 16\n"
        "  would change: Gain (register 0x00013000): 0x00000064 -> 0x00000046\n");

    EXPECT_EQ(run("import", file).code, 4);
    EXPECT_EQ(camera.peekWord(kGainOfAll), 70u);
    const Result verify = run("verify", file);
    EXPECT_EQ(verify.code, 4);
    EXPECT_EQ(
        entriesOf(verify),
        "  3 unchanged, 3 not applied, 1 skipped, 1 absent; state: 1 differs\n"
        "  not applied: TestPatternSeed: camera 0, file -5: \"-5\" is written as 0: imports take decimal "
        "numbers from 0 to 4294967295\n"
        "  not applied: Width: camera 640, file 64000: 64000 is above the maximum 960\n"
        "  absent: Absent: The camera has no feature of this name.\n"
        "  not applied: TestPattern: camera GreyVerticalRamp (2), file 77: 77 is no entry that it has now\n");
}

TEST_F(CheckCommand, KnowsFeaturesThatAreThereInAModeOnly)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file =
        fileOf(feature("TriggerDelay", "Float", "2.500000") + feature("Width", "Integer", "320"));
    camera.pokeWord(kTransferLayerLock, 1);
    EXPECT_EQ(entriesOf(run("plan", file)), "  2 not writable\n"
                                            "  not writable: TriggerDelay: file 2.500000: not available now\n"
                                            "  not writable: Width: camera 640, file 320: read-only now\n");
    EXPECT_EQ(entriesOf(run("verify", file)),
              "  2 not applied\n"
              "  not applied: TriggerDelay: file 2.500000: not available now\n"
              "  not applied: Width: camera 640, file 320: read-only now\n");
    camera.pokeWord(kTransferLayerLock, 0);
    camera.pokeWord(kTriggerMode, 1);
    const Result plan = run("plan", file);
    EXPECT_EQ(plan.code, 0);
    EXPECT_EQ(entriesOf(plan), "  2 would change\n"
                               "  would change: TriggerDelay: 1.500000 -> 2.500000\n"
                               "  would change: Width: 640 -> 320\n");
}

TEST_F(CheckCommand, KnowsValuesThatTheCameraHasMadeFit)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = fileOf(feature("Width", "Integer", "330") + feature("Height", "Integer", "482"));
    camera.pokeWord(kWidth, 320); // its increment is 16
    const Result verify = run("verify", file);
    EXPECT_EQ(verify.code, 4);
    EXPECT_EQ(entriesOf(verify), "  1 coerced, 1 not applied\n"
                                 "  not applied: Height: camera 480, file 482\n");
    EXPECT_EQ(run("verify", fileOf(feature("Width", "Integer", "330"))).code, 0);
}

// Steps of 3 over a signed register whose node gives no minimum: they count from 0 and not from the
// register's end.
TEST_F(CheckCommand, CountsIncrementsFromWhereAnImportDoes)
{
    emu::EmulatedCamera& camera = addCamera("S1", [](emu::CameraConfig& config) {
        config.description = tests::descriptionWithOneRegister();
        const std::string zone = "<pFeature>Zone</pFeature>";
        config.description.insert(config.description.find(zone), "<pFeature>Steps</pFeature>");
        config.description.insert(config.description.find("<Port "), R"(
            <Integer Name="Steps"><pValue>StepsReg</pValue><Inc>3</Inc></Integer>
            <IntReg Name="StepsReg"><Address>0x10200</Address><Length>4</Length><AccessMode>RW</AccessMode>
                <pPort>Device</pPort><Sign>Signed</Sign><Endianess>BigEndian</Endianess></IntReg>)");
    });
    const std::string whole = exported("S1");
    const std::string six =
        altered(whole, feature("Steps", "Integer", "0"), feature("Steps", "Integer", "6"));
    EXPECT_THAT(run("plan", six).out, HasSubstr("  would change: Steps: 0 -> 6\n"));
    EXPECT_EQ(import(six).code, 0);
    EXPECT_EQ(camera.node("Steps"), emu::NodeValue(int64_t(6)));
    const std::string seven =
        altered(whole, feature("Steps", "Integer", "0"), feature("Steps", "Integer", "7"));
    EXPECT_THAT(run("plan", seven).out,
                HasSubstr("  out of range: Steps: camera 6, file 7: 7 is no multiple of "
                          "the increment 3, counted from 0\n"));
    EXPECT_EQ(import(seven).code, 4);
    EXPECT_EQ(camera.node("Steps"), emu::NodeValue(int64_t(6)));
}

TEST_F(CheckCommand, NamesTheRegisterThatTheCameraRefuses)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = fileOf(feature("Height", "Integer", "16") + feature("Width", "Integer", "16"));
    emu::Faults faults;
    faults.refusals = {{kWidth, 4}};
    camera.setFaults(faults);
    const Result plan = run("plan", file);
    EXPECT_EQ(plan.code, 4);
    EXPECT_EQ(entriesOf(plan), "  1 would change, 1 not writable\n"
                               "  not writable: Width: file 16: the camera refuses its register\n"
                               "  would change: Height: 480 -> 16\n");
}

TEST_F(CheckCommand, ChecksAllCamerasThoughSomeFail)
{
    addCamera("S1");
    addCamera("S2", [](emu::CameraConfig& config) { config.model = "Other"; });
    emu::EmulatedCamera& taken = addCamera("S3");
    addCamera("S4");
    const std::string file = fileOf(feature("Height", "Integer", "16"));
    EXPECT_EQ(run("plan", file, {"--serial", "S1", "S4"}).code, 0);
    EXPECT_EQ(run("plan", file, {"--serial", "S1", "S2"}).code, 5);
    taken.stealControl(true);
    const Result all = run("plan", file);
    EXPECT_EQ(all.code, 1);
    EXPECT_THAT(all.out, StartsWith("EMU-1 S1: ready\n"));
    EXPECT_THAT(
        all.out,
        HasSubstr("\nOther S2: incompatible: The file belongs to another model, firmware, board type or "
                  "version: model EMU-1, the camera has Other.\n"));
    EXPECT_THAT(all.out, HasSubstr("\nEMU-1 S3: failed: "));
    EXPECT_THAT(all.out, Not(HasSubstr("  model: bad"))) << "which has been told";
    EXPECT_THAT(all.out, HasSubstr("\nEMU-1 S4: ready\n"));
    EXPECT_EQ(QString::fromStdString(all.out).count("  would change: Height: 480 -> 16\n"), 2);
}

TEST_F(CheckCommand, PrintsAnObjectALineForScripts)
{
    addCamera("S1");
    addCamera("S2");
    const Result plan = run("plan", fileOf(feature("Height", "Integer", "16")), {"--all", "--json"});
    const std::vector<tests::Json> lines = tests::objects(plan);
    ASSERT_EQ(lines.size(), 3u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(lines[i]["kind"], "result");
        EXPECT_EQ(lines[i]["result"], "ready");
        EXPECT_EQ(lines[i]["camera"]["number"], i + 1);
        EXPECT_EQ(lines[i]["features"][0]["new"], "16");
    }
    EXPECT_EQ(lines[2]["kind"], "end");
}

TEST_F(CheckCommand, SaysHowLargeAFileMayBe)
{
    addCamera("S1");
    QFile file(QString::fromStdString(path("large.fpk")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize((512 << 20) + 1)); // sparse
    const Result large = run("verify", "large.fpk");
    EXPECT_EQ(large.code, 6);
    EXPECT_EQ(large.err, "The file is too large (512 MiB at most): " + path("large.fpk") + "\n");
}

TEST_F(CheckCommand, ExitsByTheTable)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    for (const char* command : {"plan", "verify"}) {
        EXPECT_EQ(run(command, file, {}).code, 2);
        EXPECT_EQ(run(command, file, {"--serial", "S9"}).code, 3);
        const Result missing = run(command, "missing.fpk");
        EXPECT_EQ(missing.code, 6);
        EXPECT_EQ(missing.err,
                  "The file cannot be read: " + path("missing.fpk") + " (" + tests::noSuchFile() + ")\n");
        EXPECT_EQ(missing.out, "EMU-1 S1: unreadable file: The file cannot be read: " + path("missing.fpk") +
                                   " (" + tests::noSuchFile() + ")\n");
        EXPECT_EQ(run(command, file, {"--model", "EMU-1"}).code, 0);
    }
    EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(CheckCommand, EndsProperlyOnCtrlC)
{
    const emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    const std::string file = exported("S1");
    const uint64_t before = camera.counters().requests();
    Program program({"plan", path(file), "--all"});
    program.start();
    awaitRequests(camera, before + 100);
    program.interrupt();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.err, "Interrupted.\n");
    EXPECT_THAT(run.out, StartsWith("EMU-1 S1: interrupted\n"));
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(CheckCommand, RunsAsAProgram)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(1)), "");
    const auto code = [&](const char* command) {
        Program program({command, path(file), "--all"});
        program.start();
        return program.finish().code;
    };
    EXPECT_EQ(code("plan"), 0);
    EXPECT_EQ(code("verify"), 4);
    EXPECT_EQ(code("import"), 0);
    EXPECT_EQ(code("verify"), 0);
}

// A program that streams has set the one, an automatic function has moved the other.
TEST_F(CheckCommand, TellsApartWhatNobodyHasSet)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    ASSERT_EQ(camera.setNode("GainAuto", int64_t(2)), "");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("GevHeartbeatTimeout", int64_t(5000)), "");
    camera.pokeWord(kGainOfAll, 7);
    const Result verify = run("verify", file, {"--all", "--details"});
    EXPECT_EQ(verify.code, 0) << verify.out;
    EXPECT_THAT(verify.out, HasSubstr("\n  session: GevHeartbeatTimeout: camera 5000, file 3000: set by the "
                                      "program that controls the camera\n"));
    EXPECT_THAT(verify.out, HasSubstr("\n  automatic: Gain, GainRaw (GainSelector=All, register 0x00013000): "
                                      "camera 0x00000007, file 0x00000064: GainAuto "
                                      "moves it\n"));
    const Result strict = run("verify", file, {"--all", "--strict"});
    EXPECT_EQ(strict.code, 4);
    EXPECT_THAT(strict.out, HasSubstr("\n  not applied: GevHeartbeatTimeout: camera 5000, file 3000\n"));
    EXPECT_THAT(strict.out, HasSubstr("\n  not applied: Gain, GainRaw (GainSelector=All, register "
                                      "0x00013000): camera 0x00000007, file 0x00000064\n"));
    EXPECT_THAT(run("plan", file).out, HasSubstr("; state: 1 differs; session: 1 differs; automatic: "));

    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    EXPECT_EQ(run("verify", file).code, 4);
    EXPECT_EQ(import(file).code, 0); // writes all of it, as ever
    EXPECT_EQ(std::get<int64_t>(*camera.node("GevHeartbeatTimeout")), 3000);
    EXPECT_EQ(camera.peekWord(kGainOfAll), 100u);
}

TEST_F(CheckCommand, LaysReportsOutForAsManyColumnsAsThereAre)
{
    addCamera("S1");
    const std::string longName = "begin" + std::string(200, 'x') + "end";
    const std::string file =
        fileOf(feature("Height", "Integer", "16") + feature("DeviceLocation", "StringReg", longName.c_str()) +
               feature("Width", "Integer", "64000"));
    qputenv("COLUMNS", "40");
    const Result narrow = run("plan", file, {"--all", "--details"});
    const Result wide = run("plan", file, {"--all", "--details", "--wide"});
    const Result quiet = run("plan", file, {"--all", "--quiet"});
    qputenv("COLUMNS", "0");
    EXPECT_THAT(narrow.out, HasSubstr("  out of range: Width:\n"
                                      "      camera 640, file 64000\n"
                                      "      64000 is above the maximum 960\n"));
    EXPECT_THAT(narrow.out, HasSubstr("\n  model: good, file \"EMU-1\",\n      camera \"EMU-1\"\n"));
    for (const QString& line : QString::fromStdString(narrow.out).split('\n'))
        EXPECT_LE(line.size(), 40) << line.toStdString();
    EXPECT_EQ(wide.out, run("plan", file, {"--all", "--details"}).out);
    EXPECT_THAT(wide.out, HasSubstr(longName));
    EXPECT_EQ(quiet.out, "EMU-1 S1: incomplete\n  1 would change, 2 out of range\n");
}

TEST_F(CheckCommand, CallsRegistersAndEntriesAsTheDescriptionDoes)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(1)), "");
    camera.pokeWord(kGainOfAll, 7);
    const Result plan = run("plan", file, {"--all", "--group", "category"});
    EXPECT_THAT(plan.out,
                HasSubstr(" AnalogControl:\n  would change: Gain, GainRaw (GainSelector=All, register "
                          "0x00013000): 0x00000007 -> 0x00000064\n"));
    const Result scripts = run("plan", file, {"--all", "--group", "category", "--json"});
    const tests::Json told = tests::lastObject(scripts, "result");
    for (const tests::Json& entry : told["features"]) {
        if (entry["feature"] == "Gain" && entry["register"] == kGainOfAll) {
            EXPECT_EQ(entry["selectors"], "GainSelector=All");
            EXPECT_EQ(entry["category"], "AnalogControl");
        }
        if (entry["feature"] == "TestPattern") {
            EXPECT_EQ(entry["camera_entry"], "GreyHorizontalRamp");
            EXPECT_EQ(entry["new_entry"], "GreyVerticalRamp");
        }
    }
    EXPECT_THAT(scripts.out, HasSubstr("\"selectors\":\"GainSelector=All\""));
    EXPECT_EQ(run("plan", file, {"--all", "--group", "name"}).code, 2);
}
