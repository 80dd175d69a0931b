// The feature bag from the command line.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;

namespace
{

class BagCommand : public tests::ImportCompanion
{
protected:
    std::string exportedBag() { return exported("S1", {"--format", "bag"}); }
    Result importBag(const std::string& name, tests::Arguments more = {"--all"})
    {
        more.insert(more.end(), {"--format", "bag"});
        return import(name, more);
    }
};

} // namespace

TEST_F(BagCommand, CarriesSettingsBothWays)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exportedBag();
    const QByteArray text = fileText(file);
    EXPECT_TRUE(text.startsWith("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n"));
    EXPECT_TRUE(text.contains("\nTestPattern\t"));
    const auto pattern = camera.node("TestPattern");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(0)), "");
    ASSERT_NE(camera.node("TestPattern"), pattern);
    const Result run = importBag(file);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(camera.node("TestPattern"), pattern);
    EXPECT_THAT(run.out, EndsWith("\n1 applied, 0 incomplete, 0 incompatible, 0 failed\n"));
}

TEST_F(BagCommand, CountsTheLinesOfTheFile)
{
    addCamera("S1");
    const Result run = tests::runInProcess({"export", "--all", "--to", folder(), "--format", "bag"});
    EXPECT_EQ(run.code, 0);
    const int lines = fileText("EMU-1_S1.fpk").count('\n') - 3; // the head
    EXPECT_THAT(run.out, HasSubstr("EMU-1  S1           " + std::to_string(lines) + "  "));
    EXPECT_THAT(run.out, EndsWith("\n1 exported, 0 failed\n"));
}

TEST_F(BagCommand, NamesWhatDidNotTakeWithTheReason)
{
    addCamera("S1");
    const std::string file = exportedBag();
    write(file, fileText(file) + "Absent\t1\n");
    const Result run = importBag(file, {"--all", "--json"});
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.out, HasSubstr("Failed to load feature.[0x80000303] Not every feature took its value."));
    const tests::Json told = tests::lastObject(run, "result");
    EXPECT_EQ(told["result"], "incomplete");
    EXPECT_EQ(told["not_applied"], tests::Json{"Absent"});
    EXPECT_EQ(told["features"].dump(),
              "[{\"feature\":\"Absent\",\"verdict\":\"not applied\",\"file\":\"1\","
              "\"camera\":null,\"reason\":\"The camera has no feature of this name.\","
              "\"warnings\":[]}]");
    EXPECT_THAT(run.err, HasSubstr("\nEMU-1 S1: Absent = 1: "));
}

// The jobs themselves say nothing of a camera that they cannot open.
TEST_F(BagCommand, TellsOfACameraThatCannotBeOpened)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exportedBag();
    camera.stealControl();
    const QByteArray before = fileText(file);
    const Result load = importBag(file, {"--all", "--json"});
    EXPECT_EQ(load.code, 1);
    EXPECT_THAT(load.out, Not(HasSubstr("\"info\"")));
    const tests::Json told = tests::lastObject(load, "result");
    EXPECT_EQ(told["result"], "failed");
    const std::string cause = "the camera could not be opened: Another application controls the camera "
                              "(127.255.255.254:1).";
    EXPECT_EQ(told["error"], cause);
    EXPECT_EQ(load.err, "EMU-1 S1: " + cause + '\n');

    const Result save = tests::runInProcess({"export", "--all", "--to", folder(), "--format", "bag"});
    EXPECT_EQ(save.code, 1);
    EXPECT_THAT(save.err, HasSubstr("EMU-1 S1: failed\nEMU-1 S1: " + cause + '\n'));
    EXPECT_THAT(save.out, EndsWith("  not written\n0 exported, 1 failed\n"));
    EXPECT_EQ(fileText(file), before);
}

TEST_F(BagCommand, TakesOtherFilesForBadInput)
{
    addCamera("S1");
    const std::string features = exported("S1");
    const Result other = importBag(features);
    EXPECT_EQ(other.code, 5);
    EXPECT_THAT(other.err, HasSubstr("it does not begin with the identification line"));
    EXPECT_EQ(importBag("missing").code, 6);
    EXPECT_EQ(import(exportedBag(), {"--all", "--format", "xml"}).code, 5);
}

// Names come from the camera.
TEST_F(BagCommand, WritesNothingOutsideOfTheFolder)
{
    const emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.model = "../elsewhere"; });
    const emu::EmulatedCamera& chinese =
        addCamera("S2", [](emu::CameraConfig& config) { config.model = "门"; });
    addCamera("S3");
    QDir().mkdir(QString::fromStdString(path("to")));
    const Result save = tests::runInProcess({"export", "--all", "--to", path("to"), "--format", "bag"});
    EXPECT_EQ(save.code, 1);
    EXPECT_THAT(save.err, HasSubstr("../elsewhere S1: its file would lie outside of the folder: "
                                    "../elsewhere_S1.fpk.\n"));
    EXPECT_THAT(save.err, HasSubstr("门 S2: A feature bag cannot have the path " + path("to") +
                                    "/门_S2.fpk: only Latin-1 characters are possible.\n"));
    EXPECT_THAT(save.out, EndsWith("\n1 exported, 2 failed\n"));
    EXPECT_EQ(QDir(QString::fromStdString(path("to"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{"EMU-1_S3.fpk"});
    EXPECT_FALSE(QFile::exists(QString::fromStdString(path("elsewhere_S1.fpk"))));
    EXPECT_EQ(camera.counters().writeReg + chinese.counters().writeReg, 0u);
}

// The camera library takes paths as Latin-1; the bag would get another name than the one that was asked for.
TEST_F(BagCommand, RefusesPathsThatTheCameraLibraryCannotBeTold)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const std::string folderOnly = path("门");
    const Result save = tests::runInProcess({"export", "--all", "--to", folderOnly, "--format", "bag"});
    EXPECT_EQ(save.code, 2);
    EXPECT_EQ(save.err, "A feature bag cannot have the path " + folderOnly +
                            ": only Latin-1 characters are possible.\n");
    EXPECT_EQ(importBag("门.fpk").code, 2);
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

TEST_F(BagCommand, TakesPathsOfLatin1)
{
    addCamera("S1");
    write("é.fpk", fileText(exportedBag()));
    EXPECT_EQ(importBag("é.fpk").code, 0);
}

TEST_F(BagCommand, IsRecognisedByItsContent)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string bag = exportedBag();
    const auto pattern = camera.node("TestPattern");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(0)), "");
    EXPECT_EQ(import(bag).code, 0);
    EXPECT_EQ(camera.node("TestPattern"), pattern);
    EXPECT_EQ(import(bag, {"--all", "--verify"}).code, 2);
    EXPECT_EQ(import(bag, {"--all", "--format", "xml"}).code, 5); // as was asked for
    EXPECT_EQ(import(exported("S1")).code, 0);
}

// As old descriptions do, the one of this camera calls nothing streamable.
TEST_F(BagCommand, TellsThatItIsEmpty)
{
    addCamera("S1",
              [](emu::CameraConfig& config) { config.description = tests::descriptionWithOneRegister(); });
    const Result save = tests::runInProcess({"export", "--all", "--to", folder(), "--format", "bag"});
    EXPECT_EQ(save.code, 0);
    EXPECT_THAT(save.err, HasSubstr("EMU-1 S1: the feature bag is empty: the camera's description calls no "
                                    "feature streamable. Export a features file (--format xml) instead.\n"));
    const Result whole = tests::runInProcess({"export", "--all", "--to", folder()});
    EXPECT_THAT(whole.err, Not(HasSubstr("empty")));
}
