// Texts of cameras that the format cannot hold: a file that nobody could import again takes no good one's
// place.
#include "companion/ImportCompanion.h"
#include "companion/SmallDescription.h"

#include <nlohmann/json.hpp>

#include <QDir>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Arguments;
using tests::Result;
using tests::runInProcess;

namespace
{

const uint32_t kNote = 0x10100;
const uint32_t kSize = 0x10200;

class UnreadableExport : public tests::ImportCompanion
{
protected:
    emu::EmulatedCamera& addNotedCamera(const std::string& note, const std::string& firmware = "1.0")
    {
        emu::EmulatedCamera& camera = addCamera("S1", [](emu::CameraConfig& config) {
            config.description = tests::smallDescription(
                "<pFeature>Note</pFeature><pFeature>Size</pFeature>",
                "<StringReg Name=\"Note\"><Streamable>Yes</Streamable><Address>0x10100</Address>"
                "<Length>64</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></StringReg>"
                "<Integer Name=\"Size\"><Streamable>Yes</Streamable><pValue>SizeReg</pValue></Integer>" +
                    tests::wordRegister("SizeReg", "0x10200"));
        });
        setText(camera, kNote, note);
        setText(camera, 0x10000, firmware);
        camera.pokeWord(kSize, 480);
        return camera;
    }

    static void setText(emu::EmulatedCamera& camera, uint32_t address, const std::string& text)
    {
        emu::Bytes bytes(text.begin(), text.end());
        bytes.push_back(0);
        camera.poke(address, bytes);
    }

    Result exportAll(const Arguments& more = {})
    {
        Arguments arguments{"export", "--all", "--to", folder()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }
};

const std::string kRefused = "an import could not read the file again, for the texts of Note; it is not kept "
                             "(--skip-unreadable leaves them out).";
const std::string kFile = "EMU-1_S1.fpk";

} // namespace

TEST_F(UnreadableExport, IsAFailureThatNamesTheFeatureAndKeepsTheOlderFile)
{
    emu::EmulatedCamera& camera = addNotedCamera("fine");
    ASSERT_EQ(exportAll().code, 0);
    const QByteArray whole = fileText(kFile);
    ASSERT_TRUE(whole.contains("<Value>fine</Value>"));
    for (const char* note : {"a<b", "a&b", "a<b>c</b>", "a&lt;b", "]]>&", "<!-- x -->"}) {
        setText(camera, kNote, note);
        const Result run = exportAll();
        EXPECT_EQ(run.code, 1) << note;
        EXPECT_THAT(run.err, EndsWith("EMU-1 S1: " + kRefused + "\nEMU-1 S1: failed\n")) << note;
        EXPECT_EQ(fileText(kFile), whole) << note;
    }
    const tests::Json told = tests::lastObject(exportAll({"--json"}), "export");
    EXPECT_EQ(told["result"], "failed");
    EXPECT_EQ(told["remarks"], tests::Json::array({kRefused}));
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
}

TEST_F(UnreadableExport, LeavesOtherOddTextsAlone)
{
    emu::EmulatedCamera& camera = addNotedCamera("fine");
    for (const char* note :
         {"", "   ", " two  blanks ", "a>b", "\"quoted\"", "l'\xC3\xA9t\xC3\xA9", "a\tb\nc"}) {
        setText(camera, kNote, note);
        EXPECT_EQ(exportAll().code, 0) << note;
    }
}

TEST_F(UnreadableExport, CanLeaveTheFeatureOut)
{
    emu::EmulatedCamera& camera = addNotedCamera("fine");
    ASSERT_EQ(exportAll().code, 0);
    const QByteArray block = feature("Note", "StringReg", "fine");
    const QByteArray whole = fileText(kFile);
    ASSERT_TRUE(whole.contains(block));

    setText(camera, kNote, "a<b");
    const Result run = exportAll({"--skip-unreadable"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: left out, for an import could not read their texts again: Note.\n"));
    EXPECT_EQ(fileText(kFile), QByteArray(whole).replace(block, ""));
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
    camera.pokeWord(kSize, 16);
    EXPECT_EQ(import(kFile).code, 0);
    EXPECT_EQ(camera.peekWord(kSize), 480u);
}

// What the file has to prove cannot be left out.
TEST_F(UnreadableExport, IsAFailureForAFirmwareVersionThatNoFileCanHold)
{
    addNotedCamera("fine", "1<2");
    const Result run = exportAll({"--skip-unreadable"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: an import could not read the file again, for what the camera says of "
                          "itself; it is not kept.\n"));
    EXPECT_EQ(allInFolder(), QStringList());
}

TEST_F(UnreadableExport, MakesNoSnapshotAndNothingIsWrittenToTheCamera)
{
    emu::EmulatedCamera& camera = addNotedCamera("fine");
    ASSERT_EQ(exportAll().code, 0);
    setText(camera, kNote, "a<b");
    camera.pokeWord(kSize, 16);
    ASSERT_TRUE(QDir().mkdir(QString::fromStdString(path("snapshots"))));
    camera.resetCounters();
    const Result run = import(kFile, {"--all", "--snapshot", path("snapshots")});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(camera.counters().settingWrites, 0u);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: " + kRefused + "\n"));
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: there is no snapshot, so nothing was written to the camera.\n"));
    EXPECT_TRUE(QDir(QString::fromStdString(path("snapshots"))).isEmpty());

    const Result skipped = import(kFile, {"--all", "--snapshot", path("snapshots"), "--skip-unreadable"});
    EXPECT_EQ(skipped.code, 0) << skipped.err;
    EXPECT_EQ(camera.peekWord(kSize), 480u);
    EXPECT_THAT(skipped.err,
                HasSubstr("EMU-1 S1: left out, for an import could not read their texts again: Note.\n"));
}

TEST_F(UnreadableExport, CannotBeComparedUnlessTheFeatureIsLeftOut)
{
    emu::EmulatedCamera& camera = addNotedCamera("fine");
    ASSERT_EQ(exportAll().code, 0);
    setText(camera, kNote, "a<b");
    const Result run = runInProcess({"diff", path(kFile), "serial:S1"});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: " + kRefused + "\n"));
    const Result skipped = runInProcess({"diff", path(kFile), "serial:S1", "--skip-unreadable"});
    EXPECT_EQ(skipped.code, 1) << skipped.err;
    EXPECT_THAT(skipped.out, HasSubstr("only in A  Note"));
}
