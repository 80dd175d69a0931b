// Cameras that are missing, late, busy or in places that nobody can search.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <thread>

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::Result;
using tests::runInProcess;

namespace
{

class CameraSearchTest : public tests::ImportCompanion
{
protected:
    void alsoAsk(const std::string& words) const
    {
        qputenv("KX_CAMERA_ADDRESSES",
                qgetenv("KX_CAMERA_ADDRESSES") + ',' + QByteArray::fromStdString(words));
    }

    Result exportAll(const tests::Arguments& more = {})
    {
        tests::Arguments arguments{"export", "--all", "--to", folder()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runInProcess(arguments);
    }
};

// Does something as soon as the camera has been asked once more.
class OnceAsked
{
public:
    OnceAsked(emu::EmulatedCamera& camera, std::function<void()> act)
        : m_thread([&camera, act = std::move(act), before = camera.counters().discovery] {
              camera.waitFor([=](const emu::Counters& now) { return now.discovery > before + 1; },
                             std::chrono::seconds(20));
              act();
          })
    {}
    ~OnceAsked() { m_thread.join(); }

private:
    std::thread m_thread;
};

} // namespace

TEST_F(CameraSearchTest, TellsAddressesThatDidNotAnswer)
{
    addCamera("S1");
    alsoAsk("127.200.0.1");
    const std::string sentence = "Nobody answers at 127.200.0.1, which KX_CAMERA_ADDRESSES names.\n";
    const Result all = exportAll();
    EXPECT_EQ(all.code, 0);
    EXPECT_THAT(all.err, HasSubstr(sentence));
    EXPECT_EQ(runInProcess({"list"}).err, sentence);
    const Result one = runInProcess({"export", "--serial", "S1", "--to", folder()});
    EXPECT_THAT(one.err, Not(HasSubstr("127.200.0.1")));
    const Result script = exportAll({"--json"});
    EXPECT_THAT(tests::lastObject(script, "end")["messages"].dump(),
                HasSubstr("Nobody answers at 127.200.0.1, "));
}

TEST_F(CameraSearchTest, DoesNothingWhenFewerAreThereThanExpected)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    alsoAsk("127.200.0.1");
    const Result run = exportAll({"--expect", "2", "--json"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(filesInFolder(), QStringList());
    EXPECT_THAT(run.err, HasSubstr("2 camera(s) were expected, 1 was found.\n"));
    EXPECT_THAT(tests::lastObject(run, "end")["messages"].dump(),
                HasSubstr("2 camera(s) were expected, 1 was"));
    EXPECT_EQ(camera.counters().writeReg, 0u);
    EXPECT_EQ(exportAll({"--expect", "1"}).code, 0);
}

TEST_F(CameraSearchTest, GoesOnWithTheOthersWhenAskedTo)
{
    addCamera("S1");
    const Result stopped = runInProcess({"export", "--serial", "S1", "S9", "--to", folder()});
    EXPECT_EQ(stopped.code, 3);
    EXPECT_EQ(filesInFolder(), QStringList());
    const Result run = runInProcess({"export", "--serial", "S1", "S9", "--to", folder(), "--keep-going"});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(filesInFolder(), QStringList{"EMU-1_S1.fpk"});
    EXPECT_THAT(run.err, HasSubstr("No camera has the serial number \"S9\".\n"));
    const Result plan = runInProcess({"plan", path("EMU-1_S1.fpk"), "--serial", "S1", "S9", "--keep-going"});
    EXPECT_EQ(plan.code, 3);
    EXPECT_THAT(plan.out, HasSubstr("EMU-1 S1: ready\n"));
    EXPECT_EQ(runInProcess({"plan", path("EMU-1_S1.fpk"), "--serial", "S9", "--keep-going"}).code, 3);
    // What failed is graver than who is missing.
    EXPECT_EQ(runInProcess({"import", path("missing"), "--serial", "S1", "S9", "--keep-going"}).code, 6);
}

TEST_F(CameraSearchTest, NamesPlacesThatNobodyCanSearch)
{
    addCamera("S1");
    const QByteArray good = qgetenv("KX_CAMERA_ADDRESSES");
    qputenv("KX_CAMERA_ADDRESSES", good + " 127.0.0.1");
    const std::string sentence = "KX_CAMERA_ADDRESSES: \"" + good.toStdString() +
                                 " 127.0.0.1\" is no address; several are separated by commas.\n";
    for (const tests::Arguments& arguments : {tests::Arguments{"list"},
                                              {"list", "--watch"},
                                              {"export", "--all", "--to", folder()},
                                              {"plan", "a.fpk", "--all"},
                                              {"diff", "serial:S1", "a.fpk"},
                                              {"clone", "--from", "S1", "--to", "S2"}}) {
        const Result run = runInProcess(arguments);
        EXPECT_EQ(run.code, 2) << arguments[0];
        EXPECT_EQ(run.err, sentence);
    }
    qputenv("KX_CAMERA_ADDRESSES", good);
    qputenv("KX_CAMERA_INTERFACES", "eth99");
    const Result run = runInProcess({"list"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "KX_CAMERA_INTERFACES: \"eth99\" is no network interface that this machine has now.\n");
}

TEST_F(CameraSearchTest, WaitsForACameraThatIsInUse)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    camera.stealControl();
    const OnceAsked later(camera, [&] { camera.releaseControl(); });
    const Result run = exportAll({"--wait", "20"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, StartsWith("Waiting for 20 s at most: EMU-1 S1 is in use.\n"));
}

TEST_F(CameraSearchTest, WaitsForACameraThatIsLate)
{
    emu::EmulatedCamera& first = addCamera("S1");
    emu::EmulatedCamera& late = addCamera("S2");
    late.stop();
    const OnceAsked later(first, [&] { EXPECT_TRUE(late.start()); });
    const Result run = runInProcess({"export", "--serial", "S2", "--to", folder(), "--wait", "20"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(filesInFolder(), QStringList{"EMU-1_S2.fpk"});
}

TEST_F(CameraSearchTest, GivesUpWhenTheTimeIsOver)
{
    addCamera("S1");
    const Result run = runInProcess({"export", "--serial", "S9", "--to", folder(), "--wait", "0.3"});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.err, HasSubstr("Waiting for 0.3 s at most: No camera has the serial number \"S9\".\n"));
}

// Readers need no control.
TEST_F(CameraSearchTest, DoesNotWaitForControlThatItDoesNotNeed)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    camera.stealControl();
    const Result run = runInProcess({"plan", path(file), "--all", "--wait", "3600"});
    EXPECT_EQ(run.code, 0) << run.err;
}

TEST_F(CameraSearchTest, TellsWhoHasTheCamera)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    camera.stealControl();
    EXPECT_THAT(runInProcess({"list"}).out, HasSubstr("  in use by 127.255.255.254:1\n"));
    EXPECT_EQ(tests::lastObject(runInProcess({"list", "--json"}), "camera")["controller"],
              "127.255.255.254:1");
    camera.stealControl(true); // then nobody may ask
    EXPECT_THAT(runInProcess({"list"}).out, HasSubstr("  in use\n"));
    EXPECT_TRUE(tests::lastObject(runInProcess({"list", "--json"}), "camera")["controller"].is_null());
}

TEST_F(CameraSearchTest, FindsOneCameraOfTwoWithTheSameNumber)
{
    emu::EmulatedCamera& first = addCamera("S1");
    emu::EmulatedCamera& second = addCamera("S1");
    const std::string a = first.config().address;
    const std::string b = second.config().address;
    ASSERT_EQ(second.setNode("Height", int64_t(16)), "");
    EXPECT_EQ(exportAll().code, 2);
    EXPECT_EQ(runInProcess({"export", "--address", a, "--to", folder()}).code, 0);
    EXPECT_EQ(runInProcess({"diff", path("EMU-1_S1.fpk"), "address:" + a}).code, 0);
    const Result other = runInProcess({"diff", path("EMU-1_S1.fpk"), "address:" + b});
    EXPECT_EQ(other.code, 1);
    EXPECT_THAT(other.out, HasSubstr("B: camera EMU-1 S1 at " + b + "\n"));
    const Result unclear = runInProcess({"diff", path("EMU-1_S1.fpk"), "serial:S1"});
    EXPECT_EQ(unclear.code, 2);
    EXPECT_THAT(unclear.err, HasSubstr("More than one camera has the serial number \"S1\": address:"));
    EXPECT_THAT(unclear.err, HasSubstr("address:" + b + " (mac:"));
}
