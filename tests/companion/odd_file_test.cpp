// One file, one verdict: whatever is wrong with a features file, all commands that take one say the same of
// it.
#include "companion/ImportCompanion.h"
#include "support/Device.h"

#include <nlohmann/json.hpp>

#include <QDir>

using nlohmann::json;
using ::testing::HasSubstr;
using tests::Arguments;
using tests::Result;

namespace
{

struct OddFile
{
    const char* name;
    // Of the emulator's own export, what another text stands for there; null: the file is made otherwise.
    const char* text;
    const char* by;
    int exitCode;       // of import, plan and verify
    const char* result; // of theirs; a plan is "ready" where an import is "applied"
    int exitCodeOfFile; // of show and diff, which ask no camera
};

constexpr char kVersion[] = " version=\"1.0.0\">";

const OddFile kFiles[] = {
    {"Missing", nullptr, nullptr, 6, "unreadable file", 6},
    {"Device", nullptr, nullptr, 6, "unreadable file", 6},
    {"Empty", nullptr, "", 5, "bad file", 5},
    {"NoXml", nullptr, "Width = 640\n", 5, "bad file", 5},
    {"CutOff", "</FeaturesFile>", "", 5, "bad file", 5},
    {"OtherXml", nullptr, "<svg version=\"1.1\"><g/></svg>", 5, "bad file", 5},
    {"NoFeatures", nullptr, "<FeaturesFile version=\"1.0.0\"/>", 5, "bad file", 5},
    {"NoVersion", kVersion, ">", 5, "incompatible", 5},
    {"OtherModel", "<DeviceModelName>EMU-1<", "<DeviceModelName>EMU-2<", 5, "incompatible", 0},
    {"OtherFirmware", "<DeviceFirmwareVersion>1.2.3<", "<DeviceFirmwareVersion>1.2.4<", 5, "incompatible", 0},
    {"OtherBoard", "<BoardDeviceType>4711<", "<BoardDeviceType>4712<", 5, "incompatible", 0},
    {"OtherVersion", kVersion, " version=\"0.9\">", 0, "applied", 0},
    {"EmptyFeatures", nullptr,
     "<FeaturesFile version=\"1.0.0\"><DeviceFirmwareVersion>1.2.3</DeviceFirmwareVersion>"
     "<DeviceModelName>EMU-1</DeviceModelName><Features/></FeaturesFile>",
     0, "applied", 0},
    {"BrokenBlock", "name=\"CounterLevel\" len=\"4\"", "name=\"CounterLevel\" len=\"\"", 4, "incomplete", 0},
    {"OutOfRange", "<Name>Width</Name>\r\n<Type>Integer</Type>\r\n<Value>640<",
     "<Name>Width</Name>\r\n<Type>Integer</Type>\r\n<Value>64000<", 4, "incomplete", 0},
};

class OddFiles : public tests::ImportCompanion
{
protected:
    // Of the camera, or of the file by itself.
    static json told(const Result& run)
    {
        const tests::Json object = tests::lastObject(run, "result");
        return json::parse((object.is_null() ? tests::lastObject(run, "refusal") : object).dump());
    }
};

class EachOddFile : public OddFiles, public ::testing::WithParamInterface<OddFile>
{
protected:
    // Its path.
    std::string made(const OddFile& odd)
    {
        if (std::string(odd.name) == "Device")
            return tests::kDevice;
        if (odd.text)
            altered(exported("S1"), odd.text, odd.by);
        else if (odd.by)
            write("altered.fpk", odd.by);
        return path("altered.fpk");
    }
};

} // namespace

TEST_P(EachOddFile, GetOneVerdictFromAllCommands)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const OddFile& odd = GetParam();
    const std::string file = made(odd);
    camera.resetCounters();
    for (const Arguments& command :
         {Arguments{"plan", file, "--all", "--json"}, Arguments{"verify", file, "--all", "--json"},
          Arguments{"import", file, "--all", "--json"},
          Arguments{"import", file, "--all", "--verify", "--json"}}) {
        const Result run = tests::runInProcess(command);
        const json told = OddFiles::told(run);
        const bool wouldBeApplied = command[0] == "plan" && odd.exitCode == 0;
        EXPECT_EQ(run.code, odd.exitCode) << command[0];
        EXPECT_EQ(told["result"], wouldBeApplied ? "ready" : odd.result) << command[0];
        EXPECT_EQ(told["camera"]["serial"], "S1") << command[0];
    }
    if (odd.exitCode > 4) {
        EXPECT_EQ(camera.counters().settingWrites, 0u);
    }
    for (const Arguments& command :
         {Arguments{"show", file, "--json"}, Arguments{"diff", file, file, "--json"}}) {
        const Result run = tests::runInProcess(command);
        EXPECT_EQ(run.code, odd.exitCodeOfFile) << command[0];
        if (odd.exitCodeOfFile != 0) {
            EXPECT_EQ(told(run)["result"], odd.result) << command[0];
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, EachOddFile, ::testing::ValuesIn(kFiles),
                         [](const auto& one) { return one.param.name; });

// Whoever refuses a file says why in the same words, and asks no camera.
TEST_F(OddFiles, ThatAreNoneAreToldInOneSentence)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    write("none.fpk", "<F version='1.0.0'/>");
    const std::string sentence = "The file has no features: " + path("none.fpk") + "\n";
    for (const Arguments& command :
         {Arguments{"plan", path("none.fpk"), "--all"}, Arguments{"verify", path("none.fpk"), "--all"},
          Arguments{"import", path("none.fpk"), "--all"}, Arguments{"show", path("none.fpk")},
          Arguments{"diff", path("none.fpk"), "serial:S1"}})
        EXPECT_EQ(tests::runInProcess(command).err, sentence) << command[0];
    EXPECT_EQ(camera.counters().writeReg, 0u); // nor was control taken

    const Result import = tests::runInProcess({"import", path("none.fpk"), "--all"});
    EXPECT_THAT(import.out, HasSubstr("  bad file\n0 applied, 0 incomplete, 0 incompatible, 1 failed\n"
                                      "EMU-1 S1: bad file: " +
                                      sentence));
}

// An import of a file that is none takes no snapshots and rolls nothing back.
TEST_F(OddFiles, AreRefusedBeforeAnythingIsDone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    QDir().mkdir(QString::fromStdString(path("snapshots")));
    const std::string file = exported("S1");
    ASSERT_EQ(tests::runInProcess({"import", path(file), "--all", "--snapshot", path("snapshots")}).code, 0);
    const QDir snapshots(QString::fromStdString(path("snapshots")));
    const QStringList names = snapshots.entryList({"*_S1"});
    ASSERT_EQ(names.size(), 1);
    const std::string snapshot = "snapshots/" + names.first().toStdString();
    write(snapshot + "/features/EMU-1_S1.fpk", "half");
    camera.resetCounters();
    const Result back = tests::runInProcess({"rollback", path(snapshot), "--serial", "S1", "--json"});
    EXPECT_EQ(back.code, 5);
    EXPECT_EQ(told(back)["result"], "bad file");
    write("text.fpk", "half");
    EXPECT_EQ(
        tests::runInProcess({"import", path("text.fpk"), "--all", "--snapshot", path("snapshots")}).code, 5);
    EXPECT_EQ(snapshots.entryList({"*_S1"}), names);
    EXPECT_EQ(camera.counters().writeReg, 0u); // nor was control taken
}
