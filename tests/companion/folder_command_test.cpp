// Folders of files, each called after its camera: export --file-name, and plan, verify and import of a
// folder.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Arguments;
using tests::Json;
using tests::lastObject;
using tests::Result;
using tests::runInProcess;

namespace
{

class Folder : public tests::ImportCompanion
{
protected:
    emu::EmulatedCamera& addNamed(const std::string& serial, const std::string& name)
    {
        return addCamera(serial, [&](emu::CameraConfig& config) { config.userName = name; });
    }

    Result exportAll(const Arguments& more = {}) { return run({"export", "--all", "--to", files()}, more); }
    Result verify(const Arguments& more = {"--all"}) { return run({"verify", files()}, more); }
    Result diff(const Arguments& more = {}) { return run({"diff", files()}, more); }
    Result importAll(const Arguments& more = {"--all"}) { return run({"import", files()}, more); }

    std::string files() const
    {
        QDir().mkdir(QString::fromStdString(path("files")));
        return path("files");
    }
    QStringList names() const
    {
        return QDir(QString::fromStdString(files())).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    void rename(const char* from, const char* to) const
    {
        ASSERT_TRUE(QDir(QString::fromStdString(files())).rename(from, to));
    }

    static std::vector<std::string> results(const Json& summary)
    {
        std::vector<std::string> words;
        for (const Json& pair : summary["pairs"])
            words.push_back(pair["camera"]["serial"].get<std::string>() + ' ' +
                            pair["result"].get<std::string>());
        return words;
    }

    uint64_t writes() const
    {
        uint64_t count = 0;
        for (const emu::EmulatedCamera& camera : const_cast<Folder*>(this)->cameras())
            count += camera.counters().settingWrites;
        return count;
    }

private:
    static Result run(Arguments arguments, const Arguments& more)
    {
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }
};

using Words = std::vector<std::string>;

} // namespace

TEST_F(Folder, HasFilesThatAreCalledAsWasAskedFor)
{
    const std::string address = addNamed("S1", "Gate 3").config().address;
    ASSERT_EQ(exportAll().code, 0);
    ASSERT_EQ(exportAll({"--file-name", "name"}).code, 0);
    ASSERT_EQ(exportAll({"--file-name", "serial"}).code, 0);
    const Result run = exportAll({"--file-name", "address", "--json"});
    ASSERT_EQ(run.code, 0);
    EXPECT_EQ(lastObject(run, "export")["path"], files() + '/' + address + ".fpk");
    const QStringList all{QString::fromStdString(address) + ".fpk", "EMU-1_S1.fpk", "Gate 3.fpk", "S1.fpk"};
    EXPECT_EQ(names(), all);
    for (const QString& name : all)
        EXPECT_EQ(fileText("files/" + name.toStdString()), fileText("files/EMU-1_S1.fpk"));
    EXPECT_EQ(exportAll({"--file-name", "model"}).code, 2);
}

TEST_F(Folder, HasBagsThatAreCalledAsWasAskedFor)
{
    addNamed("S1", "Gate 3");
    ASSERT_EQ(exportAll({"--file-name", "name", "--format", "bag"}).code, 0);
    EXPECT_EQ(names(), QStringList{"Gate 3.fpk"});
    EXPECT_TRUE(fileText("files/Gate 3.fpk").startsWith("#"));
}

TEST_F(Folder, TakesNoTwoCamerasOfOneName)
{
    addNamed("S1", "Gate 3");
    addNamed("S2", "Gate 3");
    const Result run = exportAll({"--file-name", "name"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err, "The cameras 1 and 2 would write one file, Gate 3.fpk.\n");
    EXPECT_EQ(names(), QStringList());
}

// Names come from cameras: each of these fails its own one, and no other.
TEST_F(Folder, IsNotLeftByHostileNames)
{
    addNamed("S1", "../../out");
    addNamed("S2", "");
    addNamed("S3", "a\nb");
    addNamed("S4", "Gate 4");
    const Result run = exportAll({"--file-name", "name"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(names(), QStringList{"Gate 4.fpk"});
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("../out.fpk"))));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: its file would lie outside of the folder: ../../out.fpk.\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S2: it has no user name to call a file after.\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S3: no file can be called a\uFFFDb.fpk.\n"));
    EXPECT_THAT(run.out, EndsWith("1 exported, 3 failed\n"));
    // Nor is what they lead to read.
    write("out.fpk", fileText("files/Gate 4.fpk"));
    const Result read = verify({"--all", "--by", "name", "--keep-going"});
    EXPECT_EQ(read.code, 3);
    EXPECT_THAT(read.err, HasSubstr("EMU-1 S1: its file would lie outside of the folder: ../../out.fpk.\n"));
    EXPECT_THAT(read.out, HasSubstr("1 applied, 3 cameras without a file\n"));
}

TEST_F(Folder, IsHeldAgainstTheCamerasThatItsFilesAreOf)
{
    addCamera("S1");
    emu::EmulatedCamera& other = addCamera("S2");
    ASSERT_EQ(exportAll().code, 0);
    ASSERT_EQ(other.setNode("Height", int64_t(16)), "");
    const Result run = verify();
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.out, HasSubstr("EMU-1 S1: applied\n"));
    EXPECT_THAT(run.out, HasSubstr("  not applied: Height: camera 16, file 480"));
    EXPECT_THAT(run.out, EndsWith("FILE          MODEL  SERIAL  RESULT\n"
                                  "EMU-1_S1.fpk  EMU-1  S1      applied\n"
                                  "EMU-1_S2.fpk  EMU-1  S2      incomplete\n"
                                  "1 applied, 1 incomplete\n"));
    const Result scripted = verify({"--all", "--json"});
    EXPECT_EQ(scripted.code, 4);
    const Json summary = lastObject(scripted, "summary");
    EXPECT_EQ(summary["folder"], files());
    EXPECT_EQ(summary["by"], "model and serial number");
    EXPECT_EQ(summary["pairs"][1]["path"], files() + "/EMU-1_S2.fpk");
    EXPECT_EQ(results(summary), (Words{"S1 applied", "S2 incomplete"}));
    const Result plan = runInProcess({"plan", files(), "--all"});
    EXPECT_EQ(plan.code, 0);
    EXPECT_THAT(plan.out, HasSubstr("  would change: Height: 16 -> 480\n"));
    EXPECT_THAT(plan.out, EndsWith("2 ready\n"));
}

TEST_F(Folder, IsPairedByNameAddressOrSerial)
{
    addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    for (const char* by : {"name", "address", "serial"}) {
        ASSERT_EQ(exportAll({"--file-name", by}).code, 0);
        const Result run = verify({"--all", "--by", by, "--json"});
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(results(lastObject(run, "summary")), (Words{"S1 applied", "S2 applied"}));
        EXPECT_NE(verify({"--all"}).code, 0) << by;
        for (const QString& name : names())
            ASSERT_TRUE(QFile::remove(QString::fromStdString(files()) + '/' + name));
    }
}

// What is replaced gets the settings of the one before it.
TEST_F(Folder, IsImportedWithEachFileInItsOwnCamera)
{
    emu::EmulatedCamera& first = addNamed("S1", "Gate 1");
    emu::EmulatedCamera& second = addNamed("S2", "Gate 2");
    ASSERT_EQ(second.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(exportAll({"--file-name", "name"}).code, 0);
    ASSERT_EQ(first.setNode("Height", int64_t(32)), "");
    ASSERT_EQ(second.setNode("Height", int64_t(32)), "");
    const Result run = importAll({"--all", "--by", "name", "--verify"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(first.node("Height"), emu::NodeValue(int64_t(480)));
    EXPECT_EQ(second.node("Height"), emu::NodeValue(int64_t(16)));
    EXPECT_THAT(run.out, EndsWith("FILE        MODEL  SERIAL  RESULT\n"
                                  "Gate 1.fpk  EMU-1  S1      applied\n"
                                  "Gate 2.fpk  EMU-1  S2      applied\n"
                                  "2 applied\n"));
    const Json line = Json::parse(lastAuditLine());
    EXPECT_EQ(line["camera"]["serial"], "S2");
    EXPECT_EQ(line["files"][0]["path"], files() + "/Gate 2.fpk");
}

TEST_F(Folder, IsImportedInPartAndPlannedAsAFileIs)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(exportAll().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(0)), "");
    const Result plan = importAll({"--all", "--dry-run"});
    EXPECT_EQ(plan.code, 0);
    EXPECT_THAT(plan.out, HasSubstr("  would change: Height: 16 -> 480\n"));
    EXPECT_EQ(importAll({"--all", "--only", "Hei*"}).code, 0);
    EXPECT_EQ(camera.node("Height"), emu::NodeValue(int64_t(480)));
    EXPECT_EQ(camera.node("TestPattern"), emu::NodeValue(int64_t(0)));
    EXPECT_EQ(importAll({"--all", "--only", "NoSuch"}).code, 2);
}

TEST_F(Folder, OfBagsIsImported)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(exportAll({"--format", "bag"}).code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = importAll();
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(camera.node("Height"), emu::NodeValue(int64_t(480)));
    EXPECT_EQ(importAll({"--all", "--verify"}).code, 2);
}

TEST_F(Folder, TellsFilesWithoutACameraAndCamerasWithoutAFile)
{
    addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(exportAll().code, 0);
    rename("EMU-1_S2.fpk", "EMU-1_S3.fpk");
    const Result run = importAll({"--all", "--json"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, "No camera is there for the file EMU-1_S3.fpk.\n"
                       "EMU-1 S2: the folder has no file EMU-1_S2.fpk.\n");
    const Json summary = lastObject(run, "summary");
    EXPECT_EQ(results(summary), Words{"S1 not started"});
    EXPECT_EQ(summary["files_without_camera"], Json{"EMU-1_S3.fpk"});
    EXPECT_EQ(summary["cameras_without_file"][0]["serial"], "S2");
    EXPECT_EQ(writes(), 0u);

    const Result going = importAll({"--all", "--keep-going"});
    EXPECT_EQ(going.code, 3);
    EXPECT_THAT(going.out, EndsWith("EMU-1_S1.fpk  EMU-1  S1      applied\n"
                                    "EMU-1_S3.fpk  -      -       no camera\n"
                                    "-             EMU-1  S2      no file\n"
                                    "1 applied, 1 file without a camera, 1 camera without a file\n"));
    // Who is chosen by name has not asked for all files.
    EXPECT_EQ(verify({"--serial", "S1"}).code, 0);
    EXPECT_EQ(verify({"--serial", "S2"}).code, 3);
}

TEST_F(Folder, WaitsForTheCamerasOfItsFilesAndNotForFiles)
{
    addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(exportAll().code, 0);
    rename("EMU-1_S2.fpk", "S2.fpk.old");
    const Result run = verify({"--all", "--wait", "3600"});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, Not(HasSubstr("Waiting")));
    rename("S2.fpk.old", "EMU-1_S3.fpk");
    EXPECT_THAT(verify({"--all", "--wait", "0.1"}).err,
                HasSubstr("Waiting for 0.1 s at most: No camera is there for the file EMU-1_S3.fpk.\n"));
}

// Nothing may be written where nobody knows which one is meant, whoever else could do.
TEST_F(Folder, RefusesFilesThatMayBeOfMoreThanOneCamera)
{
    const std::string first = addNamed("S1", "Gate 1").config().address;
    const std::string twin = addNamed("S1", "Gate 1").config().address;
    addNamed("S2", "Gate 2");
    ASSERT_EQ(runInProcess({"export", "--address", first, "--to", files()}).code, 0);
    ASSERT_EQ(runInProcess({"export", "--serial", "S2", "--to", files()}).code, 0);
    for (const Arguments& more : {Arguments{"--all"}, Arguments{"--all", "--keep-going"}}) {
        const Result run = importAll(more);
        EXPECT_EQ(run.code, 2);
        EXPECT_EQ(run.err, "The file EMU-1_S1.fpk may be of more than one camera: EMU-1 S1 at " + first +
                               ", EMU-1 S1 at " + twin + ".\n");
    }
    // The other one is on the line all the same.
    EXPECT_EQ(importAll({"--address", first}).code, 2);
    rename("EMU-1_S1.fpk", "Gate 1.fpk");
    EXPECT_EQ(importAll({"--all", "--by", "name"}).code, 2);
    EXPECT_EQ(writes(), 0u);
    rename("Gate 1.fpk", (first + ".fpk").c_str());
    EXPECT_EQ(importAll({"--address", first, "--by", "address"}).code, 0);
}

TEST_F(Folder, IsRefusedWholeWhenOneOfItsFilesIsNone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(exportAll().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    write("files/EMU-1_S2.fpk", "<FeaturesFile");
    for (emu::EmulatedCamera& one : cameras())
        one.resetCounters();
    QDir().mkdir(QString::fromStdString(path("snapshots")));
    const Result run = importAll({"--all", "--snapshot", path("snapshots"), "--json"});
    EXPECT_EQ(run.code, 5);
    EXPECT_EQ(run.err, "The file is no features file: " + files() + "/EMU-1_S2.fpk\n");
    EXPECT_EQ(results(lastObject(run, "summary")), (Words{"S1 not started", "S2 bad file"}));
    for (emu::EmulatedCamera& one : cameras())
        EXPECT_EQ(one.counters().writeReg, 0u); // no control was taken
    // A check writes nothing, so the others are checked.
    const Result checked = verify({"--all", "--json"});
    EXPECT_EQ(checked.code, 5);
    EXPECT_EQ(results(lastObject(checked, "summary")), (Words{"S1 incomplete", "S2 bad file"}));
}

TEST_F(Folder, WithoutFilesIsRefusedBeforeACameraIsLookedFor)
{
    const Result run = verify();
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.err, "The folder has no file to pair with a camera (*.fpk): " + files() + "\n");
    EXPECT_EQ(lastObject(verify({"--all", "--json"}), "refusal")["result"], "unreadable file");
    EXPECT_EQ(runInProcess({"show", files()}).code, 6); // it takes none
    write("file.fpk", "x");
    const Result file = runInProcess({"verify", path("file.fpk"), "--all", "--by", "name"});
    EXPECT_EQ(file.code, 2);
    EXPECT_EQ(file.err, "--by needs a folder.\n");
}

TEST_F(Folder, LeavesTheCameraAloneThatAFileDoesNotFit)
{
    addCamera("S1");
    emu::EmulatedCamera& other = addCamera("S2");
    ASSERT_EQ(exportAll().code, 0);
    QByteArray text = fileText("files/EMU-1_S2.fpk");
    write("files/EMU-1_S2.fpk", text.replace("<DeviceModelName>EMU-1", "<DeviceModelName>EMU-2"));
    ASSERT_EQ(other.setNode("Height", int64_t(16)), "");
    const Result run = importAll({"--all", "--json"});
    EXPECT_EQ(run.code, 5);
    EXPECT_EQ(results(lastObject(run, "summary")), (Words{"S1 applied", "S2 incompatible"}));
    EXPECT_EQ(other.node("Height"), emu::NodeValue(int64_t(16)));
}

TEST_F(Folder, IsComparedWithTheCamerasOfItsFiles)
{
    addNamed("S1", "Gate 1");
    emu::EmulatedCamera& other = addNamed("S2", "Gate 2");
    ASSERT_EQ(exportAll({"--file-name", "name"}).code, 0);
    const Result same = diff({"--by", "name"});
    EXPECT_EQ(same.code, 0) << same.err;
    EXPECT_THAT(same.out, EndsWith("Gate 1.fpk  EMU-1  S1      equal\n"
                                   "Gate 2.fpk  EMU-1  S2      equal\n"
                                   "2 equal\n"));
    ASSERT_EQ(other.setNode("Height", int64_t(16)), "");
    const Result run = diff({"--by", "name", "--json"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(results(lastObject(run, "summary")), (Words{"S1 equal", "S2 different"}));
    const Json difference = lastObject(run, "diff");
    EXPECT_EQ(difference["a"]["path"], files() + "/Gate 2.fpk");
    EXPECT_EQ(difference["b"]["camera"]["serial"], "S2");
    EXPECT_EQ(difference["features"][0]["name"], "Height");
    EXPECT_EQ(diff({"--by", "name", "--serial", "S1"}).code, 0);
    EXPECT_EQ(diff({"--by", "name", "--ignore", "Height"}).code, 0);
    EXPECT_EQ(diff({"--by", "name", "--expect", "3"}).code, 3);
}

// One that cannot be compared does not stop the others.
TEST_F(Folder, IsComparedWhereAFileOrACameraFails)
{
    emu::EmulatedCamera& silent = addCamera("S1");
    addCamera("S2");
    addCamera("S3");
    addCamera("S4");
    ASSERT_EQ(exportAll().code, 0);
    rename("EMU-1_S4.fpk", "EMU-1_S5.fpk");
    write("files/EMU-1_S2.fpk", "<FeaturesFile");
    emu::Faults faults;
    faults.refusals = {{0x10000, 32}}; // the firmware version
    silent.setFaults(faults);
    EXPECT_EQ(diff({"--json"}).code, 3);
    const Result run = diff({"--json", "--keep-going"});
    EXPECT_EQ(run.code, 6);
    const Json summary = lastObject(run, "summary");
    EXPECT_EQ(results(summary), (Words{"S1 failed", "S2 bad file", "S3 equal"}));
    EXPECT_EQ(summary["files_without_camera"], Json{"EMU-1_S5.fpk"});
    EXPECT_EQ(summary["cameras_without_file"][0]["serial"], "S4");
}

TEST_F(Folder, HasNoOtherSideAndOnlyItChoosesCameras)
{
    addCamera("S1");
    ASSERT_EQ(exportAll().code, 0);
    const std::string file = files() + "/EMU-1_S1.fpk";
    EXPECT_EQ(diff({"serial:S1"}).code, 2);
    EXPECT_EQ(runInProcess({"diff", file, "serial:S1", "--serial", "S1"}).code, 2);
    EXPECT_EQ(runInProcess({"diff", file, "serial:S1", "--keep-going"}).code, 2);
    EXPECT_EQ(runInProcess({"diff", file, "serial:S1", "--by", "name"}).code, 2);
    EXPECT_EQ(runInProcess({"diff", file, "serial:S1"}).code, 0);
}
