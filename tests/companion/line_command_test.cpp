// iefeatures line, over emulated cameras.
#include "companion/LineCompanion.h"
#include "iefeatures/line/LineLock.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>
#include <cstdio>
#include <thread>

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::Arguments;
using tests::Json;
using tests::lastObject;
using tests::LineOfCameras;
using tests::objects;
using tests::Result;
using tests::runInProcess;

namespace
{

constexpr uint32_t kGainOfAll = 0x13000; // of the emulator's description

} // namespace

TEST_F(LineOfCameras, IsTakenAsItIsAndInOrderThen)
{
    const std::string first = addNamed("S1", "Gate 1").config().address;
    addNamed("S2", "Gate 2");
    const Result run = init();
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, "2 cameras in " + file() + '\n');
    const companion::Inventory line = inventory();
    EXPECT_EQ(line.name, "hall");
    ASSERT_EQ(line.cameras.size(), 2u);
    const companion::InventoryCamera& gate = line.cameras[0];
    EXPECT_EQ(gate.name, "Gate 1");
    EXPECT_EQ(gate.model, "EMU-1");
    EXPECT_EQ(gate.serial, "S1");
    EXPECT_EQ(gate.address.toStdString(), first);
    EXPECT_EQ(gate.mask, "255.0.0.0");
    EXPECT_EQ(gate.usesDhcp, false);
    EXPECT_EQ(gate.usesLla, true);
    EXPECT_EQ(gate.firmware, "1.2.3");
    EXPECT_EQ(gate.userSet, "UserSet1");
    EXPECT_EQ(gate.featuresFile, "hall-files/features/Gate 1.fpk");
    EXPECT_EQ(gate.bagFile, "hall-files/bags/Gate 1.fpk");
    EXPECT_EQ(gate.featuresHash.size(), 64);
    EXPECT_EQ(gate.bagHash.size(), 64);
    EXPECT_FALSE(gate.userName.has_value());
    EXPECT_TRUE(gate.ignored.isEmpty());
    EXPECT_TRUE(fileText("hall-files/bags/Gate 1.fpk").startsWith("#"));

    const Result checked = check();
    EXPECT_EQ(checked.code, 0);
    EXPECT_THAT(checked.out, EndsWith("2 cameras: 2 in order\n"));
    EXPECT_EQ(checked.err, "");
}

TEST_F(LineOfCameras, IsOnlyReadByACheck)
{
    addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    const uint64_t before = writes();
    for (emu::EmulatedCamera& camera : cameras())
        ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    EXPECT_EQ(check().code, 4);
    EXPECT_EQ(writes(), before);
    for (emu::EmulatedCamera& camera : cameras())
        EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(LineOfCameras, TellsWhatDiffersFromWhatASessionHasSet)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("GevSCPSPacketSize", int64_t(9000)), "");
    const Result streaming = check({"--json"});
    EXPECT_EQ(streaming.code, 0);
    EXPECT_EQ(lastObject(streaming, "line")["aside"]["session"], 1);
    EXPECT_EQ(check({"--strict"}).code, 4);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = check();
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(run.out, HasSubstr("Gate 1: differs\n"));
    EXPECT_THAT(run.out, HasSubstr("Height: camera 16, file 480"));
    EXPECT_THAT(run.out, Not(HasSubstr("PacketSize")));
}

TEST_F(LineOfCameras, IsInOrderWhileAnAutomaticFunctionMovesItsValue)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(camera.setNode("GainAuto", int64_t(2)), "");
    ASSERT_EQ(init().code, 0);
    camera.pokeWord(kGainOfAll, 7);
    const Result run = check({"--json"});
    EXPECT_EQ(run.code, 0) << run.out;
    EXPECT_GE(lastObject(run, "line")["aside"]["automatic"], 1);
}

TEST_F(LineOfCameras, LacksWhoIsNotThereAndKnowsWhoIsNotItsOwn)
{
    addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init({"--name", "Gate 1"}).code, 0);
    EXPECT_THAT(states(), ElementsAre("Gate 1: in order", "-: not in the inventory"));
    EXPECT_EQ(check().code, 4);
    ASSERT_EQ(init({"--add", "--name", "Gate 2"}).code, 0);
    EXPECT_EQ(check().code, 0);
    cameras().front().stop();
    EXPECT_THAT(states(), ElementsAre("Gate 1: missing", "Gate 2: in order"));
    EXPECT_EQ(check().code, 3);
}

TEST_F(LineOfCameras, IsNotJudgedWhereAnotherHostForbidsToRead)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    camera.stealControl(true);
    const Result run = check({"--json"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(lastObject(run, "line")["state"], "not judged");
    EXPECT_THAT(lastObject(run, "line")["reason"].get<std::string>(),
                StartsWith("Another application controls the camera"));
    // One that others may read beside is judged.
    camera.stealControl(false);
    EXPECT_EQ(check().code, 0);
}

TEST_F(LineOfCameras, NeedsItsFiles)
{
    addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path("hall-files/features/Gate 1.fpk"))));
    EXPECT_THAT(states(), ElementsAre("Gate 1: bad files"));
    EXPECT_EQ(check().code, 6);
}

// Between the two looks; the bag is the last that is written before the second.
TEST_F(LineOfCameras, ProposesToIgnoreWhatMovesByItself)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    const QString bag = QString::fromStdString(path("hall-files/bags/Gate 1.fpk"));
    std::thread mover([&] {
        for (int i = 0; i < 600 && !QFile::exists(bag); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(camera.setNode("Height", int64_t(16)), "");
    });
    const Result run = line({"init"}, {"--all", "--pause", "6"});
    mover.join();
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: Height moved by itself from 480 to 16; it is proposed as ignored.\n"));
    EXPECT_THAT(fileText("hall.toml").toStdString(),
                HasSubstr("ignored = [\n    \"Height\", # moved by itself from 480 to 16\n]\n"));
    EXPECT_EQ(inventory().cameras[0].ignored, QStringList{"Height"});
    EXPECT_EQ(check().code, 0);
}

TEST_F(LineOfCameras, GivesNamesToThoseThatHaveNone)
{
    addCamera("S1");
    addNamed("S2", "Gate 2");
    const Result refused = init();
    EXPECT_EQ(refused.code, 2);
    EXPECT_EQ(refused.err, "EMU-1 S1: it has no name; --name-by gives it one.\nNothing was written.\n");
    EXPECT_FALSE(QFile::exists(QString::fromStdString(file())));
    ASSERT_EQ(init({"--all", "--name-by", "serial"}).code, 0);
    EXPECT_EQ(inventory().cameras[0].name, "S1");
    EXPECT_EQ(inventory().cameras[0].userName, QString(""));
    EXPECT_EQ(inventory().cameras[1].userName, QString("Gate 2"));
    EXPECT_EQ(check().code, 0);
}

TEST_F(LineOfCameras, RefusesTwoOfOneNameAndAnInventoryThatIsThere)
{
    addNamed("S1", "Gate");
    addNamed("S2", "Gate");
    const Result twice = init();
    EXPECT_EQ(twice.code, 2);
    EXPECT_THAT(twice.err, HasSubstr("EMU-1 S2: another camera is called \"Gate\" too.\n"));
    ASSERT_EQ(init({"--serial", "S1"}).code, 0);
    const QByteArray text = fileText("hall.toml");
    const Result there = init({"--serial", "S1"});
    EXPECT_EQ(there.code, 6);
    EXPECT_EQ(there.err, file() + " is there already; --add or --refresh change it.\n");
    const Result again = init({"--add", "--serial", "S1"});
    EXPECT_EQ(again.code, 2);
    EXPECT_THAT(again.err, HasSubstr("it is in the inventory, as \"Gate\"; --refresh takes it again.\n"));
    EXPECT_EQ(fileText("hall.toml"), text);
    EXPECT_EQ(init({}).code, 2);
    EXPECT_EQ(init({"--all", "--refresh", "Gate"}).code, 2);
}

TEST_F(LineOfCameras, IsNotLeftByHostileNames)
{
    addNamed("S1", "../../x");
    const Result run = init();
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("its file would lie outside of the folder"));
    ASSERT_EQ(init({"--all", "--name-by", "order"}).code, 0);
    EXPECT_EQ(inventory().cameras[0].name, "Camera 1");
    EXPECT_EQ(check().code, 0);
}

// The camera library takes no such path for a bag.
TEST_F(LineOfCameras, HasOtherNamesForCamerasWhoseBagsCouldNotBeWritten)
{
    addNamed("S1", "\xE9\x95\x9C\xE5\xA4\xB4"); // two Chinese characters
    const Result run = init();
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("Latin-1"));
    EXPECT_THAT(run.err, EndsWith("The inventory was not written.\n"));
    EXPECT_EQ(init({"--all", "--name-by", "serial"}).code, 0);
    EXPECT_EQ(check().code, 0);
}

TEST_F(LineOfCameras, KeepsWhatPeopleWroteWhenACameraIsTakenAgain)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    QByteArray text =
        "# ours\r\n" + fileText("hall.toml").replace("firmware", "ignored = ['X']  # so\nfirmware");
    write("hall.toml", text);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    EXPECT_EQ(check().code, 4);
    const QString before = inventory().cameras[0].featuresHash;
    const Result run = init({"--refresh", "Gate 1"});
    ASSERT_EQ(run.code, 0) << run.err;
    const companion::Inventory line = inventory();
    EXPECT_NE(line.cameras[0].featuresHash, before);
    QByteArray back = fileText("hall.toml");
    back.replace(line.cameras[0].featuresHash.toUtf8(), before.toUtf8());
    const auto bagSpan = line.cameras[0].bagHash.toUtf8();
    EXPECT_EQ(
        back.replace(bagSpan, companion::parseInventory(text, "x").inventory.cameras[0].bagHash.toUtf8()),
        text);
    EXPECT_EQ(check().code, 0);
    EXPECT_EQ(init({"--refresh", "Gate 9"}).code, 2);
}

TEST_F(LineOfCameras, IsReportedInFiles)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run =
        check({"--junit", path("j.xml"), "--report", path("r.html"), "--metrics", path("m.prom")});
    EXPECT_EQ(run.code, 4);
    EXPECT_THAT(fileText("j.xml").toStdString(), HasSubstr("<failure message=\"differs\">"));
    EXPECT_THAT(fileText("r.html").toStdString(), HasSubstr("Height: camera 16, file 480"));
    EXPECT_THAT(
        fileText("m.prom").toStdString(),
        HasSubstr("iefeatures_line_camera_state{line=\"hall\",camera=\"Gate 1\",state=\"differs\"} 1\n"));
    EXPECT_EQ(check({"--report", path("none/r.html")}).code, 6);
    EXPECT_EQ(check({"--quiet"}).out, "1 camera: 1 differs\n");
    if (QStandardPaths::findExecutable("promtool").isEmpty())
        std::puts("SKIPPED: no promtool, so nobody else has looked at the metrics");
    else
        EXPECT_EQ(
            QProcess::execute("/bin/sh", {"-c", "promtool check metrics < \"$0\"", path("m.prom").c_str()}),
            0);
}

TEST_F(LineOfCameras, TellsWhereItsInventoryIsWrongAndThatTheRunHasFailed)
{
    write("hall.toml", "[line]\nname = 1\n");
    const Result run = check({"--metrics", path("m.prom"), "--json"});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.err, file() + ":2:8: name has to be a text.\n");
    EXPECT_THAT(fileText("m.prom").toStdString(), HasSubstr("iefeatures_line_check_success{line=\"\"} 0\n"));
}

TEST_F(LineOfCameras, IsSetAsTheInventorySays)
{
    for (const char* serial : {"S1", "S2", "S3"})
        addNamed(serial, std::string("Gate ") + serial);
    ASSERT_EQ(init().code, 0);
    for (emu::EmulatedCamera& camera : cameras())
        ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(check().code, 4);
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 0) << run.err << run.out;
    EXPECT_THAT(run.err, HasSubstr("would change: Height: 16 -> 480"));
    EXPECT_EQ(check().code, 0);
    // Snapshots of what was there before, audit lines, the user set.
    const QDir snapshots(QString::fromStdString(path("hall-files/snapshots")));
    EXPECT_EQ(snapshots.entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 3);
    EXPECT_THAT(lastAuditLine(), HasSubstr("\"command\":\"line apply\""));
    EXPECT_THAT(lastAuditLine(), HasSubstr("\"user_set\":\"UserSet1\""));
    const Result again = line({"apply"}, {"--yes"});
    EXPECT_EQ(again.code, 0);
    EXPECT_THAT(again.err, HasSubstr("Gate S1: in order\n"));
}

TEST_F(LineOfCameras, IsNotSetWithoutAgreement)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const uint64_t before = writes();
    const Result dry = line({"apply"}, {"--dry-run"});
    EXPECT_EQ(dry.code, 0);
    EXPECT_THAT(dry.out, HasSubstr("would change: Height: 16 -> 480"));
    const Result asked = line({"apply"}); // nobody is there to be asked
    EXPECT_EQ(asked.code, 2);
    EXPECT_THAT(asked.err, HasSubstr("There is no terminal to ask on"));
    EXPECT_EQ(line({"apply"}, {"--camera", "Gate 9", "--yes"}).code, 2);
    EXPECT_EQ(writes(), before);
}

TEST_F(LineOfCameras, LeavesAloneWhoIsNotItsOwnAndTellsWhoIsMissing)
{
    emu::EmulatedCamera& gone = addNamed("S1", "Gate 1");
    emu::EmulatedCamera& here = addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    emu::EmulatedCamera& stranger = addNamed("S3", "Gate 3");
    gone.stop();
    ASSERT_EQ(here.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(stranger.setNode("Height", int64_t(16)), "");
    const uint64_t before = stranger.counters().settingWrites;
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S3: not in the inventory; it is left alone.\n"));
    EXPECT_THAT(run.err, HasSubstr("Gate 1: missing\n"));
    EXPECT_EQ(stranger.counters().settingWrites, before);
    EXPECT_THAT(states(), ElementsAre("Gate 1: missing", "Gate 2: in order", "-: not in the inventory"));
}

// Neither half an inventory nor a camera that is half set without being told.
TEST_F(LineOfCameras, IsLeftWithoutAnInventoryByAnInitThatIsInterrupted)
{
    addNamed("S1", "Gate 1");
    const Result run = runWatched({"line", "init", file(), "--all", "--pause", "60"}, "EMU-1 S1: done",
                                  [] { std::raise(SIGINT); });
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.err, HasSubstr("The inventory was not written.\n"));
    EXPECT_FALSE(QFile::exists(QString::fromStdString(file())));
    EXPECT_EQ(controlOf(cameras().front()), 0u);
    EXPECT_EQ(init().code, 0);
}

TEST_F(LineOfCameras, GoesOnWithAnApplyThatWasInterrupted)
{
    for (const char* serial : {"S1", "S2"})
        addNamed(serial, std::string("Gate ") + serial);
    ASSERT_EQ(init().code, 0);
    for (emu::EmulatedCamera& camera : cameras())
        ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const uint64_t before = cameras().back().counters().settingWrites;
    const Result run =
        runWatched({"line", "apply", file(), "--yes"}, "EMU-1 S1: importing", [] { std::raise(SIGINT); });
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.err, HasSubstr("Gate S2: not begun.\n"));
    EXPECT_EQ(cameras().back().counters().settingWrites, before);
    for (emu::EmulatedCamera& camera : cameras())
        EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 0);
    EXPECT_EQ(check().code, 0);
}

TEST_F(LineOfCameras, IsWrittenByOneCommandAtATime)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    {
        companion::LineLock other(QString::fromStdString(file()));
        ASSERT_EQ(other.take(), "");
        for (const Arguments& arguments :
             {Arguments{"apply", "--yes"}, Arguments{"adopt", "--camera", "Gate 1"}}) {
            const Result run = line({arguments[0]}, {arguments.begin() + 1, arguments.end()});
            EXPECT_EQ(run.code, 1);
            EXPECT_THAT(run.err, StartsWith(file() + " is worked on by "));
            EXPECT_THAT(run.err, HasSubstr(" since 20"));
        }
        EXPECT_EQ(line({"apply"}, {"--dry-run"}).code, 0) << "who only looks needs none";
    }
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 0);
    EXPECT_FALSE(QFile::exists(QString::fromStdString(file() + ".lock")));
}

// The first one proves the files.
TEST_F(LineOfCameras, StopsWhatHasNotBegunWhenTheFirstOneFails)
{
    emu::EmulatedCamera& first = addNamed("S1", "Gate 1");
    emu::EmulatedCamera& second = addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    for (emu::EmulatedCamera& camera : cameras())
        ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    first.stealControl(false); // it can be read, and not written to
    const uint64_t before = second.counters().settingWrites;
    const Result run = line({"apply"}, {"--yes"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("Gate 2: not begun.\n"));
    EXPECT_EQ(second.counters().settingWrites, before);
    // Also where all begin at once: what is to be judged otherwise is written behind the others.
    const QByteArray whole = fileText("hall.toml");
    write("hall.toml", QByteArray(whole).replace("[camera.\"Gate 2\"]\n",
                                                 "[camera.\"Gate 2\"]\nignored = [\"Nothing\"]\n"));
    const Result atOnce = line({"apply"}, {"--yes", "--all-at-once"});
    EXPECT_EQ(atOnce.code, 1);
    EXPECT_THAT(atOnce.err, HasSubstr("Gate 2: not begun.\n"));
    EXPECT_EQ(second.counters().settingWrites, before);
    write("hall.toml", whole);
    first.releaseControl();
    EXPECT_EQ(line({"apply"}, {"--yes", "--all-at-once"}).code, 0);
    EXPECT_EQ(check().code, 0);
}

// Somebody sets a camera while the question is asked.
TEST_F(LineOfCameras, IsLookedAtAgainBeforeTheFirstWrite)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const auto meddle = [&](companion::Console&, const std::string&) {
        EXPECT_EQ(camera.setNode("Height", int64_t(32)), "");
        return std::optional<std::string>("y");
    };
    const uint64_t before = writes();
    const Result run = runAsked({"line", "apply", file()}, meddle);
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("Gate 1: it has changed since it was planned; nothing was written.\n"));
    EXPECT_EQ(writes(), before);
}

TEST_F(LineOfCameras, LetsWhatACameraHasNowBecomeRight)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    const QByteArray old = fileText("hall-files/features/Gate 1.fpk");
    EXPECT_THAT(line({"adopt"}, {"--camera", "Gate 1", "--yes"}).err,
                HasSubstr("Gate 1 is as the inventory says.\n"));
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = line({"adopt"}, {"--camera", "Gate 1", "--yes", "--pause", "0"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("Height: camera 16, file 480"));
    EXPECT_EQ(check().code, 0);
    const QDir files(QString::fromStdString(path("hall-files/features")));
    const QStringList kept = files.entryList({"Gate 1.2*Z.fpk"});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(fileText("hall-files/features/" + kept.front().toStdString()), old);
    EXPECT_EQ(line({"adopt"}, {"--camera", "Gate 9", "--yes"}).code, 2);
    cameras().front().stop();
    EXPECT_EQ(line({"adopt"}, {"--camera", "Gate 1", "--yes"}).code, 3);
}

// --line and --camera of the other commands.
TEST_F(LineOfCameras, ChoosesCamerasForOtherCommands)
{
    addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    emu::EmulatedCamera& stranger = addNamed("S3", "Gate 3");
    const std::string features = path("hall-files/features");
    EXPECT_EQ(objects(runInProcess({"list", "--line", file(), "--json"})).size(), 3u); // and the end
    const Result verified = runInProcess({"verify", features, "--by", "name", "--line", file()});
    EXPECT_EQ(verified.code, 0) << verified.err;
    EXPECT_THAT(verified.out, EndsWith("2 applied\n"));
    const Result one =
        runInProcess({"verify", features, "--by", "name", "--line", file(), "--camera", "Gate 2"});
    EXPECT_EQ(one.code, 0);
    EXPECT_THAT(one.out, EndsWith("1 applied\n"));
    EXPECT_EQ(runInProcess({"diff", features, "--by", "name", "--line", file()}).code, 0);
    EXPECT_EQ(runInProcess({"export", "--to", folder(), "--line", file(), "--camera", "Gate 1"}).code, 0);
    EXPECT_EQ(filesInFolder(), (QStringList{"EMU-1_S1.fpk", "hall.toml"}));
    EXPECT_EQ(runInProcess({"import", path("EMU-1_S1.fpk"), "--line", file()}).code, 0);
    EXPECT_EQ(stranger.counters().settingWrites, 0u);
}

TEST_F(LineOfCameras, ChoosesNobodyWhoIsNotThere)
{
    addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    cameras().front().stop();
    const Result run = runInProcess({"export", "--to", folder(), "--line", file()});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, EndsWith("The camera \"Gate 1\" of the inventory is not there.\n"));
    EXPECT_EQ(runInProcess({"list", "--line", file()}).code, 3);
    EXPECT_EQ(runInProcess({"export", "--to", folder(), "--line", file(), "--keep-going"}).code, 3);
    EXPECT_TRUE(filesInFolder().contains("EMU-1_S2.fpk"));
    EXPECT_EQ(runInProcess({"list", "--line", file(), "--camera", "Gate 9"}).code, 2);
    EXPECT_EQ(runInProcess({"list", "--camera", "Gate 1"}).code, 2);
    EXPECT_EQ(runInProcess({"export", "--to", folder(), "--line", file(), "--all"}).code, 2);
    EXPECT_EQ(runInProcess({"list", "--line", path("none.toml")}).code, 6);
}

TEST_F(LineOfCameras, HasCommandsOfItsOwn)
{
    EXPECT_EQ(runInProcess({"line"}).code, 2);
    EXPECT_EQ(runInProcess({"line", "nonsense"}).code, 2);
    const Result help = runInProcess({"line", "check", "--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.out, HasSubstr("  0    all is in order\n"));
}

// An answer that got lost is no camera that is gone.
TEST_F(LineOfCameras, LooksAgainForWhoSeemsToBeMissing)
{
    addNamed("S1", "Gate 1");
    addNamed("S2", "Gate 2");
    ASSERT_EQ(init().code, 0);
    std::ostringstream out, err;
    companion::Console console(out, err, false, false);
    companion::World world{console};
    int looks = 0;
    const companion::Enumerate all = world.enumerate;
    world.enumerate = [&looks, all](std::vector<KX_DeviceEntry>& found) {
        const KX_Status status = all(found);
        if (++looks == 1 && !found.empty())
            found.pop_back();
        return status;
    };
    EXPECT_EQ(companion::runCompanion({"line", "check", file()}, world), 0) << out.str() << err.str();
    EXPECT_EQ(looks, 2);
    EXPECT_EQ(companion::runCompanion({"line", "check", file()}, world), 0);
    EXPECT_EQ(looks, 3);
    // Each look without another one.
    looks = 0;
    world.enumerate = [&looks, all](std::vector<KX_DeviceEntry>& found) {
        const KX_Status status = all(found);
        if (found.size() == 2)
            found.erase(found.begin() + looks++ % 2);
        return status;
    };
    EXPECT_EQ(companion::runCompanion({"line", "check", file()}, world), 0) << out.str() << err.str();
    EXPECT_EQ(looks, 2);
    looks = 0;
    EXPECT_EQ(companion::runCompanion({"line", "apply", file(), "--dry-run"}, world), 0) << err.str();
    EXPECT_EQ(looks, 2);
    looks = 0;
    EXPECT_EQ(companion::runCompanion({"line", "replace", file(), "--camera", "Gate 2", "--yes"}, world), 1);
    EXPECT_EQ(looks, 2);
    EXPECT_THAT(err.str(), HasSubstr("The camera \"Gate 2\" is there: "));
}
