#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <QDir>

#include <sstream>

#include <map>
#include <set>

using nlohmann::json;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;
using tests::runInProcess;

namespace
{

constexpr uint32_t kGainOfAll = 77824;

int64_t heightOf(const emu::EmulatedCamera& camera)
{
    return std::get<int64_t>(camera.node("Height").value());
}

class Clone : public tests::ImportCompanion
{
protected:
    // With a person at the terminal who answers so; without one when there is no answer.
    static Result clone(const tests::Arguments& more, std::optional<std::string> answer = {})
    {
        std::ostringstream out;
        std::ostringstream err;
        companion::Console console(out, err, false, false);
        companion::World world{console};
        world.ask = [answer](companion::Console& asked, const std::string& question) {
            if (answer)
                asked.err(question + '\n');
            return answer;
        };
        tests::Arguments arguments{"clone"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const int code = companion::runCompanion(arguments, world);
        return {code, out.str(), err.str()};
    }
};

} // namespace

TEST_F(Clone, SetsSixteenCamerasOfWhichThreeFail)
{
    emu::EmulatedCamera& source = addCamera("Source");
    ASSERT_EQ(source.setNode("Height", int64_t(240)), "");
    source.pokeWord(kGainOfAll, 77);
    std::vector<emu::EmulatedCamera*> targets;
    tests::Arguments arguments{"--from", "Source", "--yes", "--json", "--to"};
    for (int i = 10; i < 26; ++i) {
        const std::string serial = "T" + std::to_string(i);
        targets.push_back(&addCamera(
            serial, [i](emu::CameraConfig& config) { config.model = i == 12 ? "Other" : "EMU-1"; }));
        arguments.push_back(serial);
    }
    targets[5]->stealControl(); // of another host
    emu::Faults faults;         // cannot take its gain
    faults.refusals = {{kGainOfAll, 4}};
    targets[9]->setFaults(faults);

    const Result run = clone(arguments);
    EXPECT_EQ(run.code, 1);
    for (size_t i = 0; i < targets.size(); ++i) {
        const bool fails = i == 2 || i == 5;
        EXPECT_EQ(heightOf(*targets[i]), fails ? 480 : 240) << i;
        EXPECT_EQ(targets[i]->peekWord(kGainOfAll), fails || i == 9 ? 100u : 77u) << i;
    }
    std::map<std::string, int> results;
    std::set<std::string> serials; // an object each
    int plans = 0;
    for (const tests::Json& object : tests::objects(run)) {
        plans += object["kind"] == "plan";
        if (object["kind"] != "result")
            continue;
        ++results[object["result"]];
        serials.insert(object["camera"]["serial"].get<std::string>());
    }
    EXPECT_EQ(results, (std::map<std::string, int>{
                           {"applied", 13}, {"incompatible", 1}, {"failed", 1}, {"incomplete", 1}}));
    EXPECT_EQ(serials.size(), 16u);
    EXPECT_EQ(plans, 16);
    EXPECT_EQ(heightOf(source), 240);
}

TEST_F(Clone, ShowsThePlanAndAsks)
{
    emu::EmulatedCamera& source = addCamera("S1");
    emu::EmulatedCamera& target = addCamera("S2");
    ASSERT_EQ(source.setNode("Height", int64_t(240)), "");
    target.resetCounters();
    const Result no = clone({"--from", "S1", "--to", "S2"}, "");
    EXPECT_EQ(no.code, 1);
    EXPECT_EQ(target.counters().writeReg, 0u);
    EXPECT_THAT(no.err, HasSubstr("  would change: Height: 480 -> 240\n"));
    EXPECT_THAT(no.err, EndsWith("Set 1 camera(s) as EMU-1 S1 is set? [y/N] \nNothing was written.\n"));

    const Result yes = clone({"--from", "S1", "--to", "S2"}, "y");
    EXPECT_EQ(yes.code, 0);
    EXPECT_EQ(heightOf(target), 240);
    EXPECT_THAT(yes.out,
                HasSubstr("\n1 applied, 0 incomplete, 0 incompatible, 0 failed\nEMU-1 S2: applied\n"));
}

TEST_F(Clone, AsksNobodyWhereThereIsNoTerminal)
{
    addCamera("S1");
    emu::EmulatedCamera& target = addCamera("S2");
    tests::Program program({"clone", "--from", "S1", "--to", "S2"});
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, EndsWith("There is no terminal to ask on; --yes goes on without.\n"));
    EXPECT_EQ(target.counters().writeReg, 0u);
}

TEST_F(Clone, TakesSnapshotsAndSavesUserSets)
{
    emu::EmulatedCamera& source = addCamera("S1");
    emu::EmulatedCamera& target = addCamera("S2");
    ASSERT_EQ(source.setNode("Height", int64_t(240)), "");
    QDir().mkdir(QString::fromStdString(path("snapshots")));
    const Result run = clone({"--from", "S1", "--to", "S2", "--yes", "--snapshot", path("snapshots"),
                              "--persist", "UserSet1", "--start-up"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(target.peekWord(0x1600C), 1u);
    EXPECT_EQ(source.peekWord(0x1600C), 0u);
    const QStringList names = QDir(QString::fromStdString(path("snapshots"))).entryList({"*_S*"});
    ASSERT_EQ(names.size(), 1);
    EXPECT_TRUE(names.first().endsWith("_S2"));

    const Result back =
        runInProcess({"rollback", path("snapshots/" + names.first().toStdString()), "--serial", "S2"});
    EXPECT_EQ(back.code, 0);
    EXPECT_EQ(heightOf(target), 480);
}

TEST_F(Clone, NamesTheSourceInTheAuditLog)
{
    addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(clone({"--from", "S1", "--to", "S2", "--yes"}).code, 0);
    const json line = json::parse(lastAuditLine());
    EXPECT_EQ(line["command"], "clone");
    EXPECT_EQ(line["source"]["serial"], "S1");
    EXPECT_EQ(line["camera"]["serial"], "S2");
}

TEST_F(Clone, SetsNobodyWhenTheSourceCannotBeExported)
{
    emu::EmulatedCamera& source = addCamera("S1");
    emu::EmulatedCamera& target = addCamera("S2");
    source.stealControl();
    const Result run = clone({"--from", "S1", "--to", "S2", "--yes"});
    EXPECT_EQ(run.code, 1);
    EXPECT_EQ(target.counters().writeReg, 0u);
    EXPECT_THAT(
        run.err,
        EndsWith("EMU-1 S1: the camera could not be opened: Another application controls the "
                 "camera (127.255.255.254:1).\nEMU-1 S1: could not be exported, so no camera was set.\n"));
}

TEST_F(Clone, WantsTheCamerasNamed)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const Result same = clone({"--from", "S1", "--to", "S1", "--yes"});
    EXPECT_EQ(same.code, 2);
    EXPECT_EQ(same.err, "--from and --to name one camera: S1\n");
    const Result missing = clone({"--from", "S8", "--to", "S1", "S9", "--yes"});
    EXPECT_EQ(missing.code, 3);
    EXPECT_EQ(missing.err,
              "No camera has the serial number \"S8\".\nNo camera has the serial number \"S9\".\n");
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

// Two companions at once: the other one has the camera open all the while.
TEST_F(Clone, IsRefusedByACameraThatAnotherCompanionSets)
{
    emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    const std::string file = exported("S1");
    camera.resetCounters();
    tests::Program first({"import", path(file), "--all", "--no-audit"});
    first.start();
    ASSERT_TRUE(camera.waitFor([&](const emu::Counters&) { return camera.isControlled(); },
                               std::chrono::seconds(20)));
    const Result second = import(file);
    EXPECT_EQ(second.code, 1);
    EXPECT_THAT(second.err,
                HasSubstr("EMU-1 S1: the camera could not be opened: Another application controls "
                          "the camera.\n"));
    EXPECT_EQ(first.finish().code, 0);
}
