// iefeatures diff: files in golden texts, emulated cameras in what they have differently.
#include "companion/ImportCompanion.h"
#include "iefeatures/cameras/NamePatterns.h"
#include "iefeatures/cameras/NamedNatures.h"
#include "support/RegisterByRegister.h"
#include "support/SystemTexts.h"

#include <nlohmann/json.hpp>

#include <QDir>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <thread>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::Arguments;
using tests::entries;
using tests::gigeEntry;
using tests::Program;
using tests::Result;
using tests::runInProcess;

namespace
{

constexpr uint32_t kGainOfAll = 77824;   // register of the gain, the first of three
constexpr uint32_t kTemperature = 65612; // "BoardTemperatureReg"

std::string data(const std::string& name)
{
    return std::string(IE_TEST_DATA) + "/compare/" + name;
}

std::string golden(const std::string& name)
{
    QFile file(QString::fromStdString(data(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll().toStdString();
}

Result diffOfFiles(const Arguments& more = {})
{
    Arguments arguments{"diff", data("a.fpk"), data("b.fpk")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    Result run = runInProcess(arguments, entries({}));
    run.out = QString::fromStdString(run.out).remove(IE_TEST_DATA "/compare/").toStdString();
    return run;
}

class DiffOfCameras : public tests::ImportCompanion
{
protected:
    Result diff(const std::string& a, const std::string& b, const Arguments& more = {})
    {
        Arguments arguments{"diff", a, b};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }

    // The lines of the table and the counts.
    static std::string table(const Result& run)
    {
        const size_t end = run.out.find('\n', run.out.find("\nB: ") + 1);
        return run.out.substr(end + 1);
    }
};

} // namespace

TEST(DiffOfFiles, TellsEachFeatureAndRegisterThatDiffers)
{
    const Result run = diffOfFiles();
    EXPECT_EQ(run.out, golden("diff.txt"));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.code, 1);
}

TEST(DiffOfFiles, IsTheSameForScripts)
{
    const Result run = diffOfFiles({"--json"});
    EXPECT_EQ(run.code, 1);
    nlohmann::json told = nlohmann::json::parse(tests::lastObject(run, "diff").dump());
    EXPECT_EQ(told["a"], (nlohmann::json{{"path", "a.fpk"}, {"camera", nullptr}}));
    for (const char* key : {"format_version", "command", "kind", "a", "b"})
        told.erase(key);
    EXPECT_EQ(told, nlohmann::json::parse(golden("diff.json"))) << told.dump(2);
}

TEST(DiffOfFiles, ComparesWhatChangesByItselfWhenAsked)
{
    EXPECT_THAT(diffOfFiles().out, EndsWith("\nleft out: SensorTemperature\n"));
    const Result run = diffOfFiles({"--all"});
    EXPECT_THAT(run.out, HasSubstr("\ndiffers    SensorTemperature                 41.500000  "));
    EXPECT_THAT(run.out, Not(HasSubstr("left out")));
}

// By their names alone: no camera is asked.
TEST_F(DiffOfCameras, TellsOfFilesOfTwoUnitsWhatIsSetDifferently)
{
    addCamera("S1");
    const QByteArray file = fileText(exported("S1"));
    for (const char* unit : {"A", "B"})
        write(std::string(unit) + ".fpk",
              QByteArray(file).replace("</Features>", feature("DeviceID", "StringReg", unit) +
                                                          feature("GevSCPD", "Integer", unit) +
                                                          "</Features>"));
    const Result run = diff(path("A.fpk"), path("B.fpk"));
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(table(run), "0 different, 0 only in A, 0 only in B, 2 more left out\n"
                          "left out: GevSCPD (session), DeviceID\n");
    EXPECT_EQ(diff(path("A.fpk"), path("B.fpk"), {"--all"}).code, 1);
}

TEST(DiffOfFiles, TellsAsMuchAsIsAskedFor)
{
    const QStringList all = QString::fromStdString(diffOfFiles().out).split('\n');
    const Result quiet = diffOfFiles({"--quiet"});
    EXPECT_EQ(quiet.code, 1);
    EXPECT_EQ(quiet.out, all.mid(0, 3).join('\n').toStdString() + '\n');
    QStringList differences = all;
    differences.erase(std::remove_if(differences.begin(), differences.end(),
                                     [](const QString& line) { return line.startsWith("only in "); }),
                      differences.end());
    const auto words = [](const QString& text) { return text.simplified().toStdString(); };
    EXPECT_EQ(words(QString::fromStdString(diffOfFiles({"--only-differences"}).out)),
              words(differences.join('\n')));
}

TEST(DiffOfFiles, FitsTheColumns)
{
    qputenv("COLUMNS", "40");
    const Result narrow = diffOfFiles();
    const Result wide = diffOfFiles({"--wide"});
    qputenv("COLUMNS", "0");
    EXPECT_EQ(wide.out, golden("diff.txt"));
    EXPECT_THAT(narrow.out, HasSubstr("differs    Gain 0x0...ctor:1]"));
    for (const QString& line : QString::fromStdString(narrow.out).split('\n').mid(3))
        EXPECT_LE(line.size(), 51) << line.toStdString(); // three columns of twelve, and what is before
}

TEST(DiffOfFiles, LeavesOutWhatIsToBeIgnored)
{
    const Result some = diffOfFiles({"--ignore", "Gain", "Ki*", "BoardDeviceType"});
    EXPECT_EQ(some.code, 1);
    EXPECT_THAT(some.out, Not(HasSubstr("Gain ")));
    EXPECT_THAT(some.out, Not(HasSubstr("Kind ")));
    EXPECT_THAT(some.out, HasSubstr("Width")); // "Gain" is not "*Gain*"
    EXPECT_THAT(some.out, EndsWith("\nleft out: BoardDeviceType, SensorTemperature, Kind, Gain\n"));

    const Result all = diffOfFiles({"--ignore", "*", "--json"});
    EXPECT_EQ(all.code, 0);
    const auto json = tests::lastObject(all, "diff");
    EXPECT_EQ(json["equal"], true);
    EXPECT_EQ(json["features"], tests::Json::array());
    EXPECT_EQ(json["header"], tests::Json::array());
    EXPECT_EQ(json["left_out"].size(), 14u);
}

TEST(DiffOfFiles, SaysThatNothingDiffers)
{
    const Result run = runInProcess({"diff", data("a.fpk"), data("a.fpk"), "--all"}, entries({}));
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, EndsWith("/a.fpk\n0 different, 0 only in A, 0 only in B\n"));
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 3);
}

// Imports do so: what comes later is written over what came before.
class DiffOfOddFiles : public tests::ImportCompanion
{
protected:
    std::string file(const std::string& name, const QByteArray& features)
    {
        write(name, "<FeaturesFile version=\"1.0.0\"><Features>" + features + "</Features></FeaturesFile>");
        return path(name);
    }
    Result diff(const QByteArray& a, const QByteArray& b)
    {
        return runInProcess({"diff", file("a", a), file("b", b)}, entries({}));
    }
};

TEST_F(DiffOfOddFiles, TakeTheLastOfSeveralValues)
{
    const QByteArray three = feature("X", "Integer", "3");
    EXPECT_EQ(diff(feature("X", "Integer", "5") + three, three).code, 0);
    EXPECT_EQ(diff(three + feature("X", "Integer", "5"), three).code, 1);
}

TEST_F(DiffOfOddFiles, AreComparedAsTextsAsImportsDo)
{
    EXPECT_EQ(diff(feature("X", "Integer", "5"), feature("X", "Integer", "05")).code, 1);
}

TEST_F(DiffOfOddFiles, SendNothingToTheTerminalThatItActsOn)
{
    const Result run = diff(feature("X\xC2\x9B", "Integer", "\xC2\x9B"), "<ComplexFeature name='\xC2\x9BY' "
                                                                         "len='4' reg='R\xC2\x9B'/>");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(run.out.find("\xC2\x9B"), std::string::npos);
    EXPECT_THAT(run.out, HasSubstr("\nonly in B  \xEF\xBF\xBDY "));
}

TEST_F(DiffOfOddFiles, MustBeFeaturesFiles)
{
    const auto with = [&](const std::string& other) {
        return runInProcess({"diff", data("a.fpk"), other}, entries({}));
    };
    const Result missing = with(path("missing"));
    EXPECT_EQ(missing.code, 6);
    EXPECT_EQ(missing.err,
              "The file cannot be read: " + path("missing") + " (" + tests::noSuchFile() + ")\n");
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(with(folder()).code, 6);
    write("text", "Width 5");
    EXPECT_EQ(with(path("text")).code, 5);

    write("other", "<FeaturesFile version=\"1\"><Feature/></FeaturesFile>");
    const Result other = with(path("other"));
    EXPECT_EQ(other.code, 5);
    EXPECT_EQ(other.err, "The file has no features: " + path("other") + "\n");
    write("other", "<FeaturesFile><Features/></FeaturesFile>");
    EXPECT_EQ(with(path("other")).code, 5);
    EXPECT_EQ(with(path("other")).err, "The file names no version: " + path("other") + "\n");
}

TEST(NamePatterns, MatchWholeNames)
{
    const companion::NamePatterns patterns({"Gain", "*Value", "A*C"});
    for (const char* name : {"Gain", "Value", "LUTValue", "AC", "ABBC"})
        EXPECT_TRUE(patterns.match(name)) << name;
    for (const char* name : {"Gains", "AGain", "gain", "Values", "ACE", ""})
        EXPECT_FALSE(patterns.match(name)) << name;
    EXPECT_FALSE(companion::NamePatterns({}).match(""));
    EXPECT_FALSE(companion::NamePatterns({"G.in"}).match("Gain"));
    EXPECT_TRUE(companion::NamePatterns({"G.i("}).match("G.i("));
}

TEST(NamePatterns, KnowWhatChangesByItselfAndWhatIsASetting)
{
    const companion::NamePatterns changing(companion::changingByThemselves());
    for (const char* name :
         {"DeviceTemperature", "BoardTemperature", "Timestamp", "GevTimestampValue", "GevTimestampValueHigh",
          "TimestampLatchValue", "EventExposureEndTimestamp", "CounterValue", "CounterValueAtReset",
          "CounterStatus", "TimerValue", "LineStatusAll", "LinkErrorCount", "LinkUptime"})
        EXPECT_TRUE(changing.match(name)) << name;
    for (const char* name : {"DeviceTemperatureSelector", "TemperatureThreshold", "AcquisitionFrameCount",
                             "CounterDuration", "CounterSelector", "GevTimestampTickFrequency",
                             "TimerDuration", "LineStatusSource", "GevStreamChannelCount"})
        EXPECT_FALSE(changing.match(name)) << name;
}

TEST_F(DiffOfCameras, ComparesACameraWithItsFile)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    const Result same = diff(path(file), "serial:S1");
    EXPECT_EQ(same.code, 0) << same.out;
    EXPECT_EQ(same.out, "A: " + path(file) + "\nB: camera EMU-1 S1\n0 different, 0 only in A, 0 only in B\n");

    ASSERT_EQ(camera.setNode("Width", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("PixelFormat", std::string("Mono12")), "");
    camera.pokeWord(kGainOfAll, 7);
    camera.pokeWord(kTemperature, 99);
    const uint64_t settings = camera.counters().settingWrites;
    const Result run = diff(path(file), "serial:S1");
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(table(run), golden("diff_camera.txt"));
    EXPECT_EQ(camera.counters().settingWrites, settings);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(filesInFolder(), QStringList{QString::fromStdString(file)});
}

TEST_F(DiffOfCameras, NamesEntriesOfFilesByTheCameraOnTheOtherSide)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("PixelFormat", std::string("Mono12")), "");
    const auto json = tests::lastObject(diff("serial:S1", path(file), {"--json"}), "diff");
    ASSERT_EQ(json["features"].size(), 1u);
    EXPECT_EQ(json["features"][0]["entry_a"], "Mono12");
    EXPECT_EQ(json["features"][0]["entry_b"], "Mono8");
    EXPECT_EQ(json["a"]["camera"]["serial"], "S1");
    EXPECT_EQ(json["b"]["path"], path(file));
}

TEST_F(DiffOfCameras, StandsUnderCategoriesOnDemand)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Width", int64_t(16)), "");
    camera.pokeWord(kGainOfAll, 7);
    const Result run = diff(path(file), "serial:S1", {"--group", "category"});
    EXPECT_THAT(run.out, HasSubstr("\nAnalogControl:\ndiffers  Gain 0x00013000 GainSelector=All "));
    EXPECT_THAT(run.out, HasSubstr("\nImageFormatControl:\ndiffers  Width "));
    const auto json =
        tests::lastObject(diff(path(file), "serial:S1", {"--group", "category", "--json"}), "diff");
    EXPECT_EQ(json["features"][0]["category"], "AnalogControl");
    EXPECT_EQ(json["features"][0]["registers"][0]["selectors"], "GainSelector=All");
}

TEST_F(DiffOfCameras, LeavesOutWhatCannotBeWrittenNow)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Width", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("TLParamsLocked", int64_t(1)), ""); // Width is read-only meanwhile
    const Result run = diff(path(file), "serial:S1");
    EXPECT_THAT(run.out, HasSubstr("\nleft out: "));
    EXPECT_THAT(run.out, Not(HasSubstr("differs  Width")));
    const Result all = diff(path(file), "serial:S1", {"--all"});
    EXPECT_EQ(all.code, 1);
    EXPECT_THAT(all.out, HasSubstr("\ndiffers  Width  "));
}

TEST_F(DiffOfCameras, ComparesTwoAtOnceByNameAndAddress)
{
    emu::EmulatedCamera& first =
        addCamera("S1", [](emu::CameraConfig& config) { config.userName = "Gate 3"; });
    const emu::EmulatedCamera& second =
        addCamera("S2", [](emu::CameraConfig& config) { config.model = "EMU-2"; });
    ASSERT_EQ(first.setNode("Width", int64_t(16)), "");
    const Result run = diff("name:Gate 3", "address:" + second.config().address);
    EXPECT_EQ(run.code, 1) << run.err;
    EXPECT_THAT(run.out, StartsWith("A: camera EMU-1 S1\nB: camera EMU-2 S2\n"));
    EXPECT_THAT(run.out, HasSubstr("\ndiffers  DeviceModelName  EMU-1  EMU-2\n"
                                   "differs  Width            16     640\n"));
}

TEST_F(DiffOfCameras, KeepsTheExportsOfCamerasApartThatAreAlike)
{
    emu::EmulatedCamera& first = addCamera("S1");
    const emu::EmulatedCamera& second = addCamera("S1");
    ASSERT_EQ(first.setNode("Width", int64_t(16)), "");
    const Result run = diff("address:" + first.config().address, "address:" + second.config().address);
    EXPECT_THAT(table(run), HasSubstr("\ndiffers  Width    16  640\n"));
}

TEST_F(DiffOfCameras, SaysWhoseExportIsNoXml)
{
    addCamera("S1", [](emu::CameraConfig& config) { config.model = "E<1"; });
    const Result run = diff(data("a.fpk"), "serial:S1");
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, EndsWith("E<1 S1: could not be exported.\n"));
}

TEST_F(DiffOfCameras, NeedsOneCameraForASide)
{
    addCamera("S1", [](emu::CameraConfig& config) { config.userName = "Gate"; });
    addCamera("S2", [](emu::CameraConfig& config) { config.userName = "Gate"; });
    const std::string file = exported("S1");
    const Result none = diff(path(file), "serial:S9");
    EXPECT_EQ(none.code, 3);
    EXPECT_EQ(none.err, "No camera has the serial number \"S9\".\n");
    EXPECT_EQ(none.out, "");
    const Result several = diff("name:Gate", path(file));
    EXPECT_EQ(several.code, 2);
    EXPECT_THAT(several.err, StartsWith("More than one camera has the user name \"Gate\": address:127."));
    const Result same = diff("serial:S1", "serial:S1");
    EXPECT_EQ(same.code, 2);
    EXPECT_EQ(same.err, "A and B are one camera: EMU-1 S1\n");
}

TEST_F(DiffOfCameras, FailsWhenACameraCannotBeExported)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    camera.stealControl(true); // nobody else may read
    const Result run = diff(path(file), "serial:S1");
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, EndsWith("EMU-1 S1: could not be exported.\n"));
}

TEST_F(DiffOfCameras, AsksNoCameraWhenTheFileIsNoGood)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = diff("serial:S1", path("missing"));
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

TEST_F(DiffOfCameras, EndsOnCtrlC)
{
    const tests::RegisterByRegister setting;
    const emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    std::thread person([&] {
        awaitRequests(camera, 100);
        std::raise(SIGINT);
    });
    const Result run = diff("serial:S1", data("a.fpk"));
    person.join();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, EndsWith("Interrupted.\n"));
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(DiffOfCameras, FindsNothingBetweenAnExportAndTheCameraOfARealDescription)
{
    const QDir descriptions(qEnvironmentVariable("KX_DESCRIPTIONS"));
    const QStringList names = qEnvironmentVariableIsSet("KX_DESCRIPTIONS")
                                  ? descriptions.entryList({"*.xml"}, QDir::Files, QDir::Name)
                                  : QStringList();
    if (names.isEmpty())
        std::cout << "SKIPPED: KX_DESCRIPTIONS names no folder with descriptions.\n";
    int compared = 0;
    for (const QString& name : names) {
        const emu::EmulatedCamera& camera = addCamera("R" + name.left(12).toStdString(), [&](auto& config) {
            config.descriptionFile = descriptions.filePath(name).toStdString();
        });
        const std::string address = camera.config().address;
        if (runInProcess({"export", "--address", address, "--to", folder()}).code != 0)
            continue; // has no firmware version, without which there is no file
        const std::string file = "EMU-1_" + camera.config().serial + ".fpk";
        const Result run = diff(path(file), "address:" + address, {"--all"});
        EXPECT_EQ(run.code, 0) << name.toStdString() << '\n' << run.out << run.err;
        ++compared;
    }
    EXPECT_EQ(compared > 0, !names.isEmpty());
}

TEST(DiffOfFiles, IsNoAnswerWhenTheDifferencesAreLost)
{
    Program program({"diff", data("a.fpk"), data("b.fpk")}, "exec >/dev/full;");
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.err, "The standard output cannot be written.\n");
}

TEST_F(DiffOfCameras, WorksAsAProgram)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    camera.pokeWord(kGainOfAll, 7);
    Program program({"diff", path(file), "serial:S1", "--json"});
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 1) << run.err;
    const auto json = tests::lastObject(run, "diff");
    EXPECT_EQ(json["equal"], false);
    EXPECT_EQ(json["features"][0]["registers"][0]["address"], kGainOfAll);
}

TEST_F(DiffOfCameras, LeavesOutWhatNobodyHasSet)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    ASSERT_EQ(camera.setNode("GainAuto", int64_t(2)), "");
    const std::string file = path(exported("S1"));
    ASSERT_EQ(camera.setNode("GevHeartbeatTimeout", int64_t(5000)), "");
    camera.pokeWord(kGainOfAll, 7);
    const Result plain = diff(file, "serial:S1");
    EXPECT_EQ(plain.code, 0) << plain.out;
    EXPECT_THAT(plain.out, ::testing::HasSubstr("GevHeartbeatTimeout (session)"));
    EXPECT_THAT(plain.out, ::testing::HasSubstr("Gain (automatic)"));
    const Result strict = diff(file, "serial:S1", {"--strict"});
    EXPECT_EQ(strict.code, 1);
    EXPECT_THAT(strict.out, ::testing::HasSubstr("differs  GevHeartbeatTimeout "));
}
