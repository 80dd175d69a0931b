#include "companion/ImportCompanion.h"
#include "iefeatures/files/FeatureBagInput.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>

using nlohmann::json;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using tests::Result;
using tests::runInProcess;

namespace
{

class Rollback : public tests::ImportCompanion
{
protected:
    Rollback() { QDir().mkdir(QString::fromStdString(path("snapshots"))); }

    // Imports the file into all cameras and gives the snapshot of the one.
    std::string importedOver(const std::string& serial, const std::string& file)
    {
        import(file, {"--all", "--snapshot", path("snapshots")});
        const QStringList found = QDir(QString::fromStdString(path("snapshots")))
                                      .entryList({"*_" + QString::fromStdString(serial)});
        EXPECT_EQ(found.size(), 1);
        return path("snapshots/" + found.value(0).toStdString());
    }

    static Result rollback(const std::string& snapshot, const tests::Arguments& more)
    {
        tests::Arguments arguments{"rollback", snapshot};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }
};

} // namespace

TEST_F(Rollback, BringsTheCameraBackToTheByte)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    write("other", fileText(exported("S1")));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("TestPatternSeed", int64_t(-5)), ""); // beyond what a features file brings back
    ASSERT_EQ(camera.setNode("ExposureTime", 1234.567), "");
    ASSERT_EQ(camera.setNode("ReverseX", int64_t(0)), "");
    camera.pokeWord(77824, 7);
    const QByteArray before = fileText(exported("S1"));
    const QByteArray bagBefore = fileText(exported("S1", {"--format", "bag"}));
    const std::string snapshot = importedOver("S1", "other");
    ASSERT_NE(fileText(exported("S1")), before);

    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 0) << run.err << run.out;
    EXPECT_EQ(fileText(exported("S1")), before);
    EXPECT_EQ(fileText(exported("S1", {"--format", "bag"})), bagBefore);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_THAT(run.out, HasSubstr("\n1 applied, 0 incomplete, 0 incompatible, 0 failed\n"));
    EXPECT_THAT(run.out, HasSubstr("EMU-1 S1: applied\n"));
    EXPECT_THAT(run.out, EndsWith(" unchanged; state: 1 differs\n"));
}

TEST_F(Rollback, LoadsTheFeatureBagBeforeTheRegisters)
{
    addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    const Result run = rollback(snapshot, {"--serial", "S1", "--json"});
    EXPECT_EQ(run.code, 0);
    std::vector<int> types;
    for (const tests::Json& object : tests::objects(run))
        if (object.value("signal", "") == "begin")
            types.push_back(object["type"]);
    EXPECT_EQ(types, (std::vector<int>{0, 2})); // bag, features file
    EXPECT_EQ(tests::lastObject(run, "result")["result"], "applied");
}

TEST_F(Rollback, TellsWhatItCannotBringBack)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    emu::Faults faults;
    faults.refusals = {{0x11014, 4}}; // the height's register
    camera.setFaults(faults);
    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.out, HasSubstr("  not applied: Height: file 480: "));
}

TEST_F(Rollback, RefusesTheSnapshotOfAnotherCamera)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    emu::EmulatedCamera& other = addCamera("S2");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(other.setNode("Height", int64_t(16)), "");
    other.resetCounters();
    const Result refused = rollback(snapshot, {"--serial", "S2"});
    EXPECT_EQ(refused.code, 5);
    EXPECT_EQ(refused.err,
              "EMU-1 S2: the snapshot is of another camera, EMU-1_S1; --force takes it all the same.\n");
    EXPECT_EQ(other.counters().writeReg, 0u);

    EXPECT_EQ(rollback(snapshot, {"--serial", "S2", "--force"}).code, 0);
    EXPECT_EQ(other.node("Height"), camera.node("Height"));
}

TEST_F(Rollback, RefusesTheSnapshotOfAnotherModelEvenByForce)
{
    addCamera("S1");
    emu::EmulatedCamera& other = addCamera("S2", [](emu::CameraConfig& config) { config.model = "Other"; });
    const std::string snapshot = importedOver("S1", exported("S1"));
    other.resetCounters();
    const Result run = rollback(snapshot, {"--serial", "S2", "--force"});
    EXPECT_EQ(run.code, 5);
    EXPECT_EQ(run.err, "Other S2: the snapshot is of another model, EMU-1.\n");
    EXPECT_EQ(other.counters().writeReg, 0u);
}

TEST_F(Rollback, NeedsASnapshotAndACamera)
{
    addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    const Result none = rollback(path("missing"), {"--serial", "S1"});
    EXPECT_EQ(none.code, 6);
    EXPECT_EQ(none.err,
              path("missing") + " is no snapshot: it needs one file in features/, one in bag/, or both.\n");
    const Result nobody = rollback(snapshot, {"--serial", "S9"});
    EXPECT_EQ(nobody.code, 3);
    EXPECT_EQ(nobody.err, "No camera has the serial number \"S9\".\n");
}

// The selectors that a feature bag walks over are not what was changed.
TEST_F(Rollback, TellsWhatItHasChangedInTheEnd)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.pokeWord(77824, 7); // the gain of all channels
    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: changed: Height, Gain (GainSelector=All)\n"));
    // The import before has two lines, the rollback has two.
    const QByteArrayList lines = fileText("user-data/Audit/iefeatures.jsonl").split('\n');
    const json changes = json::parse(lines[3].toStdString())["changes"];
    EXPECT_EQ(changes.size(), 2u) << changes;
    EXPECT_EQ(changes[1]["under"], "GainSelector=All");
    EXPECT_LT(lines[3].size(), 2000);

    const Result again = rollback(snapshot, {"--serial", "S1"});
    EXPECT_THAT(again.err, HasSubstr("EMU-1 S1: changed: nothing\n"));
    const Result scripted = rollback(snapshot, {"--serial", "S1", "--json"});
    EXPECT_EQ(tests::lastObject(scripted, "result")["changed"], tests::Json::array());
}

// The feature bag is whole and would be loaded first.
TEST_F(Rollback, WritesNothingWhenItsFeaturesFileIsNone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    QFile file(QString::fromStdString(snapshot + "/features/EMU-1_S1.fpk"));
    ASSERT_TRUE(file.resize(file.size() / 2));
    camera.resetCounters();
    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 5);
    EXPECT_EQ(run.err, "The file is no features file: " + snapshot + "/features/EMU-1_S1.fpk\n");
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST_F(Rollback, WritesNothingWhenItsFeatureBagIsNone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    const QString bag = QString::fromStdString(snapshot + "/bag/EMU-1_S1.fpk");
    camera.resetCounters();
    ASSERT_TRUE(QFile::resize(bag, 10));
    EXPECT_EQ(rollback(snapshot, {"--serial", "S1"}).code, 5);
    ASSERT_TRUE(QFile::resize(bag, companion::kLargestBag + 1));
    const Result large = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(large.code, 6);
    EXPECT_EQ(large.err, "The file is too large (64 MiB at most): " + bag.toStdString() + "\n");
    EXPECT_EQ(camera.counters().requests(), 0u);
}

// The import of the features file would see that, behind the feature bag.
TEST_F(Rollback, WritesNothingToACameraOfAnotherFirmware)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.pokeWord(0x10000, 0);
    camera.resetCounters();
    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: incompatible: "));
    EXPECT_THAT(run.err, EndsWith("Nothing was written.\n"));
    EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(Rollback, WorksWithAFeatureBagAlone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_TRUE(QFile::remove(QString::fromStdString(snapshot + "/features/EMU-1_S1.fpk")));
    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(camera.node("Height"), emu::NodeValue(int64_t(480)));
    EXPECT_THAT(run.err, HasSubstr("The snapshot has no features file; its feature bag alone is taken.\n"));
}

TEST_F(Rollback, RefusesTheFeatureBagAloneOfAnotherCamera)
{
    addCamera("S1");
    addCamera("S2");
    addCamera("S3", [](emu::CameraConfig& config) { config.model = "Other"; });
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_TRUE(QFile::remove(QString::fromStdString(snapshot + "/features/EMU-1_S1.fpk")));
    EXPECT_EQ(rollback(snapshot, {"--serial", "S2"}).code, 5);
    EXPECT_EQ(rollback(snapshot, {"--serial", "S3", "--force"}).code, 5);
    EXPECT_EQ(rollback(snapshot, {"--serial", "S2", "--force"}).code, 0);
}

TEST_F(Rollback, WorksWithAFeaturesFileAlone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_TRUE(QFile::remove(QString::fromStdString(snapshot + "/bag/EMU-1_S1.fpk")));
    const Result run = rollback(snapshot, {"--serial", "S1"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(camera.node("Height"), emu::NodeValue(int64_t(480)));
    EXPECT_THAT(run.err, HasSubstr("The snapshot has no feature bag; its features file alone is taken.\n"));
}

TEST_F(Rollback, IsInTheAuditLogWithBothFiles)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(rollback(snapshot, {"--serial", "S1"}).code, 0);
    const json line = json::parse(lastAuditLine());
    EXPECT_EQ(line["command"], "rollback");
    EXPECT_EQ(line["files"][0]["path"], snapshot + "/bag/EMU-1_S1.fpk");
    EXPECT_EQ(line["files"][1]["path"], snapshot + "/features/EMU-1_S1.fpk");
    EXPECT_THAT(line["changes"].get<std::vector<json>>(),
                ::testing::Contains(json{{"feature", "Height"}, {"from", "16"}, {"to", "480"}}));
}

TEST_F(Rollback, LeavesNoLineWhenTheAuditIsOff)
{
    addCamera("S1");
    const std::string snapshot = importedOver("S1", exported("S1"));
    const QByteArray before = fileText("user-data/Audit/iefeatures.jsonl");
    ASSERT_EQ(rollback(snapshot, {"--serial", "S1", "--no-audit"}).code, 0);
    EXPECT_EQ(fileText("user-data/Audit/iefeatures.jsonl"), before);
}

// The description calls nothing streamable.
TEST_F(Rollback, DoesWithoutAnEmptyFeatureBag)
{
    emu::EmulatedCamera& camera = addCamera(
        "S1", [](emu::CameraConfig& config) { config.description = tests::descriptionWithOneRegister(); });
    camera.pokeWord(0x10100, 5);
    const std::string file = exported("S1");
    const std::string snapshot = importedOver("S1", file);
    camera.pokeWord(0x10100, 6);
    const Result run = rollback(snapshot, {"--serial", "S1", "--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(camera.peekWord(0x10100), 5u);
    EXPECT_THAT(run.err,
                HasSubstr("The snapshot's feature bag is empty; its features file alone is taken.\n"));
    EXPECT_EQ(run.out.find("\"type\":0}"), std::string::npos); // no bag is loaded
}

namespace
{

// Two cameras that were set by one import, and one that was not.
class RollbackOfAll : public Rollback
{
protected:
    RollbackOfAll()
    {
        addCamera("S1");
        addCamera("S2");
        const std::string file = exported("S1");
        for (emu::EmulatedCamera& camera : cameras())
            EXPECT_EQ(camera.setNode("Height", int64_t(16)), "");
        EXPECT_EQ(import(file, {"--all", "--snapshot", path("snapshots")}).code, 0);
        EXPECT_THAT(heights(), ::testing::ElementsAre(480, 480));
        addCamera("S3");
    }

    std::vector<int64_t> heights()
    {
        std::vector<int64_t> all;
        for (emu::EmulatedCamera& camera : cameras())
            if (camera.config().serial != "S3")
                all.push_back(std::get<int64_t>(camera.node("Height").value()));
        return all;
    }
    Result rollbackAll(const tests::Arguments& more = {"--all"}) const
    {
        return rollback(path("snapshots"), more);
    }
    QDir snapshots() const { return QDir(QString::fromStdString(path("snapshots"))); }
    QString snapshotOf(const char* serial) const
    {
        const QStringList found = snapshots().entryList({QString("*_") + serial});
        EXPECT_EQ(found.size(), 1);
        return snapshots().filePath(found.value(0));
    }
};

} // namespace

TEST_F(RollbackOfAll, BringsEveryCameraOfTheImportBack)
{
    const Result run = rollbackAll({"--all", "--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(heights(), ::testing::ElementsAre(16, 16));
    std::vector<std::string> set;
    for (const tests::Json& object : tests::objects(run))
        if (object["kind"] == "result")
            set.push_back(object["camera"]["serial"]);
    EXPECT_THAT(set, ::testing::ElementsAre("S1", "S2")); // S3 was not imported into
}

TEST_F(RollbackOfAll, TakesThoseThatAreChosen)
{
    EXPECT_EQ(rollbackAll({"--serial", "S2"}).code, 0);
    EXPECT_THAT(heights(), ::testing::ElementsAre(480, 16));
    const Result none = rollbackAll({"--serial", "S1", "S3"});
    EXPECT_EQ(none.code, 3);
    EXPECT_EQ(none.err, "EMU-1 S3: there is no snapshot of it.\n");
    EXPECT_THAT(heights(), ::testing::ElementsAre(480, 16));
    EXPECT_EQ(rollbackAll({"--serial", "S1", "S3", "--keep-going"}).code, 3);
    EXPECT_THAT(heights(), ::testing::ElementsAre(16, 16));
}

TEST_F(RollbackOfAll, WritesNothingWhenOneOfTheFilesIsNone)
{
    for (const char* kind : {"/features", "/bag"}) {
        QFile file(snapshotOf("S2") + kind + "/EMU-1_S2.fpk");
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        const QByteArray whole = file.readAll();
        ASSERT_TRUE(file.resize(10));
        EXPECT_EQ(rollbackAll().code, 5);
        ASSERT_TRUE(file.seek(0));
        file.write(whole);
    }
    ASSERT_TRUE(QDir(snapshotOf("S1")).removeRecursively() && snapshots().mkdir(snapshotOf("S2") + "-2"));
    const Result none = rollbackAll();
    EXPECT_EQ(none.code, 6);
    EXPECT_THAT(none.err,
                EndsWith("_S2-2 is no snapshot: it needs one file in features/, one in bag/, or both.\n"));
    EXPECT_THAT(heights(), ::testing::ElementsAre(480, 480));
}

// The other one would take its own.
TEST_F(RollbackOfAll, WritesNothingWhenOneOfTheCamerasHasAnotherFirmware)
{
    std::next(cameras().begin())->pokeWord(0x10000, 0);
    for (emu::EmulatedCamera& camera : cameras())
        camera.resetCounters();
    const Result run = rollbackAll();
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S2: incompatible: "));
    EXPECT_THAT(run.err, EndsWith("Nothing was written.\n"));
    for (emu::EmulatedCamera& camera : cameras())
        EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(RollbackOfAll, WritesNothingWhenACameraOfTheImportIsMissing)
{
    std::next(cameras().begin())->stop();
    const Result run = rollbackAll();
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, HasSubstr("No camera is there for the snapshot " + snapshotOf("S2").toStdString()));
    EXPECT_EQ(std::get<int64_t>(cameras().front().node("Height").value()), 480);
    EXPECT_EQ(rollbackAll({"--all", "--keep-going"}).code, 3);
    EXPECT_EQ(std::get<int64_t>(cameras().front().node("Height").value()), 16);
}

TEST_F(RollbackOfAll, TakesTheNewestImportUnlessAnotherIsNamed)
{
    // An older one, by its name, that knew another height.
    const QString newest = snapshotOf("S1");
    const QString older = snapshots().filePath("20200102T030405Z_S1");
    ASSERT_EQ(cameras().front().setNode("Height", int64_t(32)), "");
    for (const char* kind : {"features", "bag"}) {
        ASSERT_TRUE(QDir().mkpath(older + '/' + kind));
        const bool isBag = std::string(kind) == "bag";
        ASSERT_EQ(runInProcess({"export", "--serial", "S1", "--to", (older + '/' + kind).toStdString(),
                                "--format", isBag ? "bag" : "xml"})
                      .code,
                  0);
    }
    ASSERT_EQ(rollbackAll().code, 0);
    EXPECT_THAT(heights(), ::testing::ElementsAre(16, 16));
    ASSERT_EQ(rollbackAll({"--all", "--at", "20200102T030405Z"}).code, 0);
    EXPECT_THAT(heights(), ::testing::ElementsAre(32, 16));
    const Result none = rollbackAll({"--all", "--at", "2020"});
    EXPECT_EQ(none.code, 6);
    EXPECT_EQ(none.err, path("snapshots") + " has no snapshot of 2020.\n");
}

TEST_F(RollbackOfAll, RefusesTwoCamerasOfOneModelAndSerialNumber)
{
    addCamera("S2");
    const Result run = rollbackAll();
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("name one snapshot and one camera.\n"));
    EXPECT_EQ(std::get<int64_t>(cameras().front().node("Height").value()), 480);
}
