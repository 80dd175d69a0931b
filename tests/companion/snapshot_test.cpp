#include "companion/ImportCompanion.h"
#include "companion/SmallDescription.h"
#include "iefeatures/imports/Snapshot.h"
#include "support/RegisterByRegister.h"
#include "support/SystemTexts.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;

namespace
{

class SnapshotTest : public tests::ImportCompanion
{
protected:
    SnapshotTest() { QDir().mkdir(snapshots()); }

    QString snapshots() const { return QString::fromStdString(path("snapshots")); }

    QStringList foldersOfSnapshots() const
    {
        return QDir(snapshots()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    }

    Result importWithSnapshot(const std::string& file, const tests::Arguments& more = {"--all"})
    {
        tests::Arguments arguments{"--snapshot", snapshots().toStdString()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return import(file, arguments);
    }

    static uint64_t commandsOf(const emu::EmulatedCamera& camera)
    {
        const emu::Counters counters = camera.counters();
        return counters.readReg + counters.writeReg + counters.readMem + counters.writeMem;
    }
};

// A selector that can be moved to two values, and be found at others.
std::string descriptionWithANarrowSelector()
{
    return tests::smallDescription(
        "<pFeature>Slot</pFeature><pFeature>Level</pFeature><pFeature>Size</pFeature>",
        "<Integer Name=\"Slot\"><Streamable>Yes</Streamable><pValue>SlotReg</pValue><Min>0</Min><Max>1</Max>"
        "<pSelected>Level</pSelected></Integer>"
        "<Integer Name=\"Level\"><Streamable>Yes</Streamable><pValue>LevelReg</pValue></Integer>"
        "<Integer Name=\"Size\"><Streamable>Yes</Streamable><pValue>SizeReg</pValue></Integer>" +
            tests::wordRegister("SlotReg", "0x10100") + tests::wordRegister("LevelReg", "0x10104") +
            tests::wordRegister("SizeReg", "0x10108"));
}

int64_t heightOf(const emu::EmulatedCamera& camera)
{
    return std::get<int64_t>(camera.node("Height").value());
}

} // namespace

TEST_F(SnapshotTest, HoldsWhatTheCameraWasSetToBefore)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    write("target", fileText(exported("S1")));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const QByteArray before = fileText(exported("S1"));
    const QByteArray bagBefore = fileText(exported("S1", {"--format", "bag"}));

    const Result run = importWithSnapshot("target");
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(heightOf(camera), 480);
    ASSERT_EQ(foldersOfSnapshots().size(), 1);
    const QString name = foldersOfSnapshots().first();
    EXPECT_TRUE(QRegularExpression("^\\d{8}T\\d{6}Z_S1$").match(name).hasMatch()) << name.toStdString();
    const std::string place = "snapshots/" + name.toStdString();
    EXPECT_EQ(fileText(place + "/features/EMU-1_S1.fpk"), before);
    EXPECT_EQ(fileText(place + "/bag/EMU-1_S1.fpk"), bagBefore);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: snapshot " + path(place) + "\n"));
    EXPECT_THAT(run.err, Not(HasSubstr("to undo")));
    EXPECT_THAT(run.out, EndsWith("\n1 applied, 0 incomplete, 0 incompatible, 0 failed\n"));
}

TEST_F(SnapshotTest, IsTakenOfEveryCameraBeforeTheFirstWrite)
{
    emu::EmulatedCamera& one = addCamera("S1");
    emu::EmulatedCamera& other = addCamera("S2");
    const std::string file = exported("S1");
    ASSERT_EQ(one.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(other.setNode("Height", int64_t(32)), "");
    const Result run = importWithSnapshot(file, {"--all", "--json"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(foldersOfSnapshots().size(), 2);
    std::vector<int> types;
    for (const tests::Json& object : tests::objects(run))
        if (object.value("signal", "") == "begin")
            types.push_back(object["type"]);
    EXPECT_EQ(types, (std::vector<int>{3, 3, 1, 1, 2, 2})); // features files, bags, imports
    const tests::Json told = tests::lastObject(run, "result");
    const std::string folder = told["snapshot"];
    EXPECT_TRUE(QDir(QString::fromStdString(folder)).exists());
    EXPECT_EQ(told["undo"], "iefeatures rollback '" + folder + "' --serial 'S2'");
}

TEST_F(SnapshotTest, ThatFailsKeepsTheCameraAsItIsAndTheOthersGoOn)
{
    const tests::RegisterByRegister setting;
    emu::EmulatedCamera& taken = addCamera("S1");
    emu::EmulatedCamera& sound = addCamera("S2");
    const std::string file = exported("S2");
    ASSERT_EQ(taken.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(sound.setNode("Height", int64_t(16)), "");
    emu::Faults faults;
    faults.silence = emu::Silence{150, std::nullopt};
    taken.setFaults(faults);
    taken.resetCounters();
    const Result run = importWithSnapshot(file);
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(taken.counters().settingWrites, 0u);
    EXPECT_EQ(foldersOfSnapshots().size(), 1); // of the sound one
    EXPECT_EQ(heightOf(taken), 16);
    EXPECT_EQ(heightOf(sound), 480);
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: there is no snapshot, so nothing was written to the camera.\n"));
    EXPECT_THAT(run.out, EndsWith("\n1 applied, 0 incomplete, 0 incompatible, 0 failed, 1 not started\n"));
}

// The feature bag lacks what hangs on a selector of more values than are gone through.
TEST_F(SnapshotTest, ThatIsCutIsNone)
{
    std::string description = tests::descriptionWithOneRegister();
    const auto put = [&](const std::string& before, const std::string& text) {
        description.insert(description.find(before), text);
    };
    put("</Category>\n  <StringReg", "<pFeature>Entry</pFeature><pFeature>Index</pFeature>");
    put("<Port", "<Integer Name=\"Index\"><Value>0</Value><Min>0</Min><Max>65536</Max>"
                 "<pSelected>Entry</pSelected></Integer><Integer Name=\"Entry\"><Value>7</Value>"
                 "<Streamable>Yes</Streamable></Integer>");
    emu::EmulatedCamera& camera =
        addCamera("S1", [&](emu::CameraConfig& config) { config.description = description; });
    const std::string file = exported("S1");
    camera.pokeWord(0x10100, 5);
    const Result run = importWithSnapshot(file);
    EXPECT_EQ(run.code, 1) << run.err;
    EXPECT_EQ(camera.peekWord(0x10100), 5u);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: The selector Index has more than 65536 values: "));
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: there is no snapshot, so nothing was written to the camera.\n"));
}

TEST_F(SnapshotTest, WithoutAFolderToWriteIntoNothingIsImported)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.resetCounters();
    const Result run = import(file, {"--all", "--snapshot", path("missing")});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(heightOf(camera), 16);
    EXPECT_EQ(camera.counters().requests(), 0u);
    EXPECT_EQ(run.err,
              "The folder " + path("missing") + " cannot be written to: " + tests::noSuchFolder() + ".\n");
}

// The camera library could not write the bag there.
TEST_F(SnapshotTest, BeyondLatin1IsRefusedBeforeAnythingIsDone)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_TRUE(QDir().mkdir(QString::fromStdString(path("门"))));
    camera.resetCounters();
    const Result run = import(file, {"--all", "--snapshot", path("门")});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(camera.counters().requests(), 0u);
    EXPECT_THAT(run.err, HasSubstr("the name has characters beyond Latin-1.\n"));
}

TEST_F(SnapshotTest, OfAModelBeyondLatin1IsFoundAgain)
{
    addCamera("S1", [](emu::CameraConfig& config) { config.model = "相机"; });
    ASSERT_EQ(tests::runInProcess({"export", "--all", "--to", folder()}).code, 0);
    const Result run = importWithSnapshot("相机_S1.fpk");
    EXPECT_EQ(run.code, 0) << run.err;
    QString problem;
    EXPECT_TRUE(companion::findSnapshot(snapshots() + '/' + foldersOfSnapshots().first(), problem));
}

// A process of its own that may write no file beyond a few kilobytes.
TEST_F(SnapshotTest, OnAFullDiskKeepsTheCameraAsItIs)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const QByteArray target = fileText(file);
    const int bag = fileText(exported("S1", {"--format", "bag"})).size();
    write(file, target);                    // the bag has taken its name
    const int blocks = target.size() / 512; // less than the features file needs
    ASSERT_LT(bag, blocks * 512);
    tests::Program program(
        {"import", path(file), "--all", "--no-audit", "--snapshot", snapshots().toStdString()},
        QString("trap '' XFSZ; ulimit -f %1;").arg(blocks));
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(heightOf(camera), 16);
    EXPECT_EQ(foldersOfSnapshots(), QStringList());
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: there is no snapshot, so nothing was written to the camera.\n"));
}

TEST_F(SnapshotTest, OutlivesACameraThatVanishesBeforeTheImport)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    emu::EmulatedCamera& other = addCamera("S2");
    const std::string file = exported("S2");
    camera.resetCounters();
    exported("S1");
    exported("S1", {"--format", "bag"});
    const uint64_t commands = commandsOf(camera);
    const std::string sound = exported("S2");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(other.setNode("Height", int64_t(16)), "");

    // What the search asks a camera comes on top.
    camera.resetCounters();
    tests::runInProcess({"list"});
    const uint64_t searched = commandsOf(camera);
    emu::Faults faults;
    faults.silence = emu::Silence{unsigned(commands - searched), std::nullopt};
    camera.setFaults(faults);
    camera.resetCounters();
    const Result run =
        importWithSnapshot(sound, {"--all", "--force"}); // the file is not looked at with the camera
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(heightOf(camera), 16);
    EXPECT_EQ(heightOf(other), 480);
    EXPECT_EQ(foldersOfSnapshots().size(), 2);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: snapshot "));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: the camera could not be opened: No camera answers under this "
                                   "device information.\n"));
    EXPECT_THAT(run.err, Not(HasSubstr("to undo")));
    EXPECT_THAT(run.out, EndsWith("\n1 applied, 0 incomplete, 0 incompatible, 1 failed\n"));
}

// Nothing is missing in the bag for that.
TEST_F(SnapshotTest, IsOneThoughASelectorCouldNotBeSetBack)
{
    emu::EmulatedCamera& camera = addCamera(
        "S1", [](emu::CameraConfig& config) { config.description = descriptionWithANarrowSelector(); });
    camera.pokeWord(0x10108, 480);
    const std::string file = exported("S1");
    camera.pokeWord(0x10100, 5);
    camera.pokeWord(0x10108, 16);
    const Result run = importWithSnapshot(file);
    EXPECT_EQ(run.code, 0) << run.err << run.out << fileText(file).toStdString();
    EXPECT_EQ(camera.peekWord(0x10108), 480u);
    EXPECT_EQ(foldersOfSnapshots().size(), 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: The selector Slot could not be set back to 5."));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: snapshot "));
}

TEST_F(SnapshotTest, IsOfferedForTheWayBackWhenNotAllWasApplied)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file =
        altered(exported("S1"), feature("Width", "Integer", "640"), feature("Width", "Integer", "64000"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = importWithSnapshot(file);
    EXPECT_EQ(run.code, 4);
    const std::string place = path("snapshots/" + foldersOfSnapshots().value(0).toStdString());
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: to undo: iefeatures rollback '" + place + "' --serial 'S1'\n"));
}

TEST_F(SnapshotTest, NeverGoesIntoAnotherOnesFolder)
{
    addCamera("S\\1");
    addCamera("S_1");
    const std::string file = exported("S_1");
    const Result run = importWithSnapshot(file);
    EXPECT_EQ(run.code, 0);
    for (const QString& name : foldersOfSnapshots())
        EXPECT_TRUE(QRegularExpression("^\\d{8}T\\d{6}Z_S_1(-2)?$").match(name).hasMatch())
            << name.toStdString();
    EXPECT_EQ(foldersOfSnapshots().size(), 2);
}

TEST_F(SnapshotTest, IsNoneWithoutItsTwoFiles)
{
    QString problem;
    EXPECT_FALSE(companion::findSnapshot(snapshots(), problem));
    EXPECT_EQ(problem,
              snapshots() + " is no snapshot: it needs one file in features/, one in bag/, or both.");
}
