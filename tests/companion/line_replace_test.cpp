// iefeatures line replace: a new camera in the place of one that is gone, over emulated cameras.
#include "companion/LineCompanion.h"
#include "iefeatures/line/LineLock.h"
#include "iefeatures/replace/Candidates.h"
#include "support/LoopbackAddress.h"

#include "gvcp/Gvcp.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <csignal>
#include <thread>

using companion::CandidateChoice;
using companion::CandidateRule;
using companion::Inventory;
using companion::InventoryCamera;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using tests::Arguments;
using tests::entries;
using tests::lastObject;
using tests::Result;

namespace
{

constexpr int kSteps = 8;
// Long enough to be seen off the line.
constexpr std::chrono::milliseconds kRestart{2500};

class LineReplacement : public tests::LineOfCameras
{
protected:
    // Two cameras whose state is not that of delivery; the first one is gone.
    void losesOne()
    {
        emu::EmulatedCamera& gone = addNamed("S1", "Gate 1");
        emu::EmulatedCamera& other = addNamed("S2", "Gate 2");
        m_address = gone.config().address;
        m_mac = macOf(gone);
        for (emu::EmulatedCamera* camera : {&gone, &other})
            ASSERT_EQ(camera->setNode("Height", int64_t(16)), "");
        ASSERT_EQ(init().code, 0);
        gone.stop();
    }

    // As delivered, at an address of its own.
    emu::EmulatedCamera& addNew(const std::string& serial, const Configure& configure = {})
    {
        return addCamera(serial, [&](emu::CameraConfig& config) {
            config.isPersistent = false;
            config.restartTime = kRestart;
            if (configure)
                configure(config);
        });
    }

    static std::string macOf(const emu::EmulatedCamera& camera)
    {
        const uint64_t mac =
            uint64_t(camera.peekWord(gvcp::RegMacHigh)) << 32 | camera.peekWord(gvcp::RegMacLow);
        std::string text;
        char byte[4];
        for (int shift = 40; shift >= 0; shift -= 8) {
            std::snprintf(byte, sizeof byte, "%02X%s", unsigned(mac >> shift & 0xFF), shift ? ":" : "");
            text += byte;
        }
        return text;
    }

    static Arguments replacing(const std::string& inventoryFile, const Arguments& more = {"--yes"})
    {
        Arguments arguments{"line", "replace", inventoryFile, "--camera", "Gate 1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    Result replace(const Arguments& more = {"--yes"}) const
    {
        return tests::runInProcess(replacing(file(), more));
    }

    Result replaceWatched(const std::string& text, const std::function<void()>& act) const
    {
        return runWatched(replacing(file()), text, act);
    }

    static std::string stepText(int step) { return std::to_string(step) + " of 8 done"; }

    QStringList journals() const
    {
        return QDir(QString::fromStdString(folder())).entryList({"*.replace-*"}, QDir::Files);
    }

    // The new camera is what the old one was, and will be when it is switched on again.
    void expectDone(emu::EmulatedCamera& camera)
    {
        EXPECT_EQ(journals(), QStringList());
        EXPECT_THAT(states(), ElementsAre("Gate 1: in order", "Gate 2: in order"));
        const InventoryCamera gate = inventory().cameras[0];
        EXPECT_EQ(gate.mac.toStdString(), macOf(camera));
        EXPECT_EQ(gate.retired, QStringList{QString::fromStdString(m_mac)});
        EXPECT_EQ(gate.address.toStdString(), m_address);
        EXPECT_EQ(gvcp::formatAddress(camera.peekWord(gvcp::RegPersistentAddress)), m_address);
        EXPECT_EQ(std::get<int64_t>(*camera.node("UserSetDefault")), 1);
        EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 16);
        EXPECT_EQ(controlOf(camera), 0u);
    }

    std::string m_address;
    std::string m_mac;
};

// A camera of the inventory and those that answer, without asking anybody.
class Candidate : public testing::Test
{
protected:
    Candidate()
    {
        line.path = "/x/hall.toml";
        InventoryCamera gate;
        gate.name = "Gate 1";
        gate.model = "EMU-1";
        gate.serial = "S1";
        gate.mac = "02:00:00:00:00:01";
        gate.retired += QString("02:00:00:00:00:FF");
        line.cameras = {gate};
    }
    static KX_DeviceEntry camera(const std::string& serial, uint32_t mac, const std::string& name = {},
                                 uint32_t availability = KX_AVAILABILITY_FREE,
                                 const std::string& model = "EMU-1")
    {
        KX_DeviceEntry entry = tests::gigeEntry(model, serial, name, 0x7F000000 + mac, availability);
        entry.info.special.gige.macHigh = 0x0200;
        entry.info.special.gige.macLow = mac;
        return entry;
    }
    CandidateChoice choose(const std::vector<KX_DeviceEntry>& found, const std::string& with = {},
                           bool takesNamed = false, bool isForced = false) const
    {
        CandidateRule rule{companion::cameraWord(with), takesNamed, isForced};
        return companion::chooseCandidate(line, neighbours, line.cameras.front(),
                                          companion::camerasFrom(found), rule);
    }
    static std::string serialOf(const CandidateChoice& choice)
    {
        return choice.camera ? choice.camera->serial.toStdString() : "";
    }

    Inventory line;
    std::vector<Inventory> neighbours;
};

} // namespace

TEST_F(Candidate, IsTheOnlyOneThatNobodyKnows)
{
    EXPECT_EQ(serialOf(choose({camera("N1", 9)})), "N1");
    EXPECT_EQ(choose({}).refusal, 3);
    EXPECT_EQ(serialOf(choose({camera("N1", 9, {}, KX_AVAILABILITY_UNREACHABLE)})), "N1");
}

TEST_F(Candidate, IsNotOneOfTwo)
{
    const CandidateChoice two = choose({camera("N1", 9), camera("N2", 10)});
    EXPECT_EQ(two.refusal, 3);
    EXPECT_EQ(two.told.size(), 3) << "both are listed";
    EXPECT_EQ(serialOf(choose({camera("N1", 9), camera("N2", 10)}, "serial:N2")), "N2");
    EXPECT_EQ(serialOf(choose({camera("N1", 9), camera("N2", 10)}, "mac:02:00:00:00:00:09")), "N1");
    EXPECT_EQ(serialOf(choose({camera("N1", 9), camera("N2", 10)}, "address:127.0.0.10")), "N2");
    EXPECT_EQ(choose({camera("N1", 9)}, "serial:N7").refusal, 3);
    EXPECT_EQ(choose({camera("N1", 9), camera("N1", 10)}, "serial:N1").refusal, 3);
}

TEST_F(Candidate, IsNoNamedStrangerButForWhoSaysSo)
{
    const std::vector<KX_DeviceEntry> found{camera("N1", 9, "Somebody's")};
    EXPECT_EQ(choose(found).refusal, 1);
    EXPECT_EQ(choose(found, "serial:N1").refusal, 1);
    EXPECT_EQ(serialOf(choose(found, "serial:N1", true)), "N1");
    // Also where it has the very name.
    EXPECT_EQ(choose({camera("N1", 9, "Gate 1")}).refusal, 1);
}

TEST_F(Candidate, IsNeverOneThatSomebodyControls)
{
    const std::vector<KX_DeviceEntry> found{camera("N1", 9, {}, KX_AVAILABILITY_IN_USE)};
    EXPECT_EQ(choose(found).refusal, 1);
    EXPECT_EQ(choose(found, "serial:N1", true, true).refusal, 1);
}

TEST_F(Candidate, IsOfTheSameModel)
{
    const std::vector<KX_DeviceEntry> found{camera("N1", 9, {}, KX_AVAILABILITY_FREE, "EMU-2")};
    EXPECT_EQ(choose(found).refusal, 5);
    EXPECT_EQ(choose(found, "serial:N1", true, true).refusal, 5);
}

TEST_F(Candidate, IsNoneOfTheNeighboursNorRetired)
{
    EXPECT_EQ(choose({camera("OLD", 0xFF)}).refusal, 3) << "it was taken out for a reason";
    EXPECT_EQ(serialOf(choose({camera("OLD", 0xFF)}, "serial:OLD")), "OLD");
    Inventory next;
    next.path = "/x/next.toml";
    InventoryCamera gate;
    gate.name = "Door";
    gate.model = "EMU-1";
    gate.mac = "02:00:00:00:00:09";
    next.cameras = {gate};
    EXPECT_EQ(serialOf(choose({camera("N1", 9)})), "N1");
    neighbours = {next};
    EXPECT_EQ(choose({camera("N1", 9)}).refusal, 3);
    const CandidateChoice chosen = choose({camera("N1", 9)}, "serial:N1", true, true);
    EXPECT_EQ(chosen.refusal, 1);
    EXPECT_THAT(chosen.told.join(' ').toStdString(), HasSubstr("\"Door\" of /x/next.toml"));
}

TEST_F(Candidate, IsNoneWhileTheOldOneAnswers)
{
    const std::vector<KX_DeviceEntry> found{camera("S1", 1), camera("N1", 9)};
    EXPECT_EQ(choose(found).refusal, 1);
    EXPECT_EQ(serialOf(choose(found, {}, false, true)), "N1");
}

TEST_F(LineReplacement, PutsANewCameraInThePlaceOfOneThatIsGone)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    const Result run = replace();
    ASSERT_EQ(run.code, 0) << run.err << run.out;
    EXPECT_THAT(run.err, HasSubstr(" takes the place of \"Gate 1\" (EMU-1 S1, " + m_mac + "), and gets\n"));
    EXPECT_THAT(run.err, HasSubstr("  the address " + m_address + "/8 at once\n"));
    EXPECT_THAT(run.err, HasSubstr("  UserSet1 as what it starts with, proven by a restart\n"));
    EXPECT_THAT(run.err,
                HasSubstr("Gate 1: it is EMU-1 N1 (" + macOf(camera) + ") now, proven over a restart."));
    EXPECT_EQ(camera.counters().restarts, 1u);
    expectDone(camera);
    EXPECT_THAT(lastAuditLine(), HasSubstr("\"command\":\"line replace\""));
    EXPECT_THAT(lastAuditLine(), HasSubstr("inventory: Gate 1"));
    // A power cut.
    camera.switchOff();
    ASSERT_TRUE(camera.start());
    expectDone(camera);
    // The old one comes back from the repair shop.
    emu::CameraConfig old = cameras().front().config();
    old.address = tests::freshLoopbackAddress();
    old.mac = m_mac;
    emu::EmulatedCamera back(old);
    ASSERT_TRUE(back.start());
    qputenv("KX_CAMERA_ADDRESSES",
            qgetenv("KX_CAMERA_ADDRESSES") + ',' + QByteArray::fromStdString(old.address));
    EXPECT_THAT(states(), testing::Contains("-: retired, and back"));
}

TEST_F(LineReplacement, AsksOnceAndLooksAgainBehindTheAnswer)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    int questions = 0;
    std::string answer = "n";
    const auto ask = [&](companion::Console&, const std::string& question) {
        ++questions;
        EXPECT_EQ(question, "Let it? [y/N] ");
        return std::optional<std::string>(answer);
    };
    EXPECT_EQ(runAsked(replacing(file(), {}), ask).code, 1);
    EXPECT_EQ(journals(), QStringList());
    EXPECT_EQ(camera.counters().settingWrites, 0u);
    // Somebody plugs in another one while the question stands.
    const emu::CameraConfig config = camera.config();
    std::unique_ptr<emu::EmulatedCamera> other;
    const auto swap = [&](companion::Console&, const std::string&) {
        camera.stop();
        emu::CameraConfig next = config;
        next.mac = "02:00:00:00:00:55";
        other = std::make_unique<emu::EmulatedCamera>(next);
        EXPECT_TRUE(other->start());
        return std::optional<std::string>("y");
    };
    const Result swapped = runAsked(replacing(file(), {}), swap);
    EXPECT_EQ(swapped.code, 1);
    EXPECT_THAT(swapped.err, HasSubstr("It is not what it was any more; nothing was written.\n"));
    EXPECT_EQ(other->counters().settingWrites, 0u);
    EXPECT_EQ(journals(), QStringList());
    other.reset();
    ASSERT_TRUE(camera.start());
    answer = "y";
    questions = 0;
    EXPECT_EQ(runAsked(replacing(file(), {}), ask).code, 0);
    EXPECT_EQ(questions, 1);
    expectDone(camera);
}

TEST_F(LineReplacement, RefusesWhatShouldNotBeTaken)
{
    losesOne();
    EXPECT_EQ(replace().code, 3);
    emu::EmulatedCamera& first = addNew("N1");
    emu::EmulatedCamera& second = addNew("N2");
    const Result two = replace();
    EXPECT_EQ(two.code, 3);
    EXPECT_THAT(two.err, HasSubstr("EMU-1 N1 (" + macOf(first)));
    EXPECT_THAT(two.err, HasSubstr("EMU-1 N2 (" + macOf(second)));
    EXPECT_THAT(two.err, HasSubstr("There are 2; --with chooses one.\n"));
    EXPECT_EQ(replace({"--yes", "--take-named"}).code, 2);
    EXPECT_EQ(replace({"--yes", "--with", "N1"}).code, 2);
    EXPECT_EQ(tests::runInProcess({"line", "replace", file(), "--camera", "Gate 9", "--yes"}).code, 2);
    EXPECT_EQ(tests::runInProcess({"line", "replace", file(), "--camera", "Gate 2", "--yes"}).code, 1)
        << "it is there";
    EXPECT_EQ(journals(), QStringList());
    for (const emu::EmulatedCamera* camera : {&first, &second})
        EXPECT_EQ(camera->counters().settingWrites, 0u);
}

TEST_F(LineReplacement, LeavesAnAddressToWhoHasIt)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    emu::CameraConfig config;
    config.address = m_address;
    config.model = "EMU-2";
    config.serial = "X";
    config.mac = "02:00:00:00:00:77";
    {
        emu::EmulatedCamera squatter(config);
        ASSERT_TRUE(squatter.start());
        const Result run = replace();
        EXPECT_EQ(run.code, 1);
        EXPECT_THAT(run.err,
                    HasSubstr("the address " + m_address + " is somebody else's (02:00:00:00:00:77)"));
    }
    EXPECT_EQ(camera.counters().forceIp, 0u);
    EXPECT_EQ(camera.counters().settingWrites, 0u);
    EXPECT_EQ(replace().code, 0);
    expectDone(camera);
}

TEST_F(LineReplacement, StopsAtAnotherFirmwareUnlessItIsAccepted)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1", [](emu::CameraConfig& config) {
        config.seed = R"({"nodes": {"DeviceFirmwareVersion": "9.9.9"}})";
    });
    const Result run = replace();
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.err, HasSubstr("9.9.9"));
    EXPECT_THAT(run.err, HasSubstr("--accept-firmware"));
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 480);
    const Result accepted = replace({"--yes", "--accept-firmware"});
    EXPECT_EQ(accepted.code, 4) << accepted.err;
    EXPECT_THAT(accepted.err, HasSubstr("\"iefeatures line adopt\" makes right what it has.\n"));
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 16);
    EXPECT_EQ(check().code, 5);
    const Result adopted =
        tests::runInProcess({"line", "adopt", file(), "--camera", "Gate 1", "--yes", "--pause", "0"});
    EXPECT_EQ(adopted.code, 0) << adopted.err;
    EXPECT_EQ(check().code, 0);
}

TEST_F(LineReplacement, DoesNotTrustASetThatKeepsLessThanItSays)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    emu::Faults faults;
    // The register of Height.
    for (uint32_t word = 0x10000; word < 0x16000; word += 4)
        faults.unsaved.push_back(word);
    camera.setFaults(faults);
    const Result run = replace();
    EXPECT_EQ(run.code, 4) << run.err;
    EXPECT_THAT(run.err, HasSubstr("UserSet1 keeps less than it should; it does not start with it.\n"));
    EXPECT_THAT(run.err, HasSubstr("Height: camera 480, file 16 behind loading UserSet1"));
    EXPECT_EQ(std::get<int64_t>(*camera.node("UserSetDefault")), 0);
    EXPECT_EQ(camera.counters().restarts, 0u);
    camera.setFaults({});
    EXPECT_EQ(replace().code, 0);
    expectDone(camera);
}

TEST_F(LineReplacement, SaysWhatIsNotProven)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    const Result run = replace({"--yes", "--no-reset", "--json"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("; not proven over a restart.\n"));
    EXPECT_EQ(lastObject(run, "replacement")["step"], "inventory");
    EXPECT_EQ(lastObject(run, "replacement")["proven"], false);
    EXPECT_EQ(camera.counters().restarts, 0u);
    expectDone(camera);
}

// What a bag has set is compared with nothing.
TEST_F(LineReplacement, ProvesNoFeaturesWithoutAFeaturesFile)
{
    losesOne();
    const QString text = QString::fromUtf8(fileText("hall.toml"));
    write("hall.toml", QString(text).remove(QRegularExpression("features(_sha256)? = [^\n]*\n")).toUtf8());
    emu::EmulatedCamera& camera = addNew("N1");
    const Result run = replace();
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 16);
    EXPECT_EQ(camera.counters().restarts, 1u);
    EXPECT_THAT(run.err, HasSubstr("there is no features file to compare its features with"));
    EXPECT_THAT(run.err, HasSubstr("; not proven over a restart.\n"));
}

TEST_F(LineReplacement, IsOneAtATime)
{
    losesOne();
    addNew("N1");
    companion::LineLock other(QString::fromStdString(file()));
    ASSERT_EQ(other.take(), "");
    const Result run = replace();
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, StartsWith(file() + " is worked on by "));
}

TEST_F(LineReplacement, WaitsForTheControlOfACommandThatDied)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    const Result stopped = replaceWatched(stepText(2), [] { std::raise(SIGINT); });
    ASSERT_EQ(stopped.code, 130);
    camera.stealControl();
    EXPECT_EQ(replace({"--yes", "--wait", "0"}).code, 3);
    std::thread heartbeat([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        camera.releaseControl();
    });
    const Result run = replace();
    heartbeat.join();
    EXPECT_EQ(run.code, 0) << run.err;
    expectDone(camera);
}

// What it was set to is gone, and so is the address that was forced.
TEST_F(LineReplacement, GoesOnWithACameraThatWasSwitchedOff)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    const Result stopped = replaceWatched(stepText(3), [] { std::raise(SIGINT); });
    ASSERT_EQ(stopped.code, 130);
    camera.switchOff();
    ASSERT_TRUE(camera.start());
    ASSERT_EQ(std::get<int64_t>(*camera.node("Height")), 480);
    const Result run = replace();
    EXPECT_EQ(run.code, 0) << run.err;
    expectDone(camera);
}

TEST_F(LineReplacement, ProvesNothingByARestartThatNobodyHasSeen)
{
    losesOne();
    addNew("N1", [](emu::CameraConfig& config) { config.restartTime = std::chrono::milliseconds(0); });
    const Result run = replace();
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("Gate 1: it was told to restart, and is still there.\n"));
    EXPECT_EQ(journals().size(), 1);
}

// Each step but the last, which is the end.
class LineReplacementStopped : public LineReplacement, public testing::WithParamInterface<int>
{
};
INSTANTIATE_TEST_SUITE_P(BehindStep, LineReplacementStopped, testing::Range(1, kSteps));

TEST_P(LineReplacementStopped, GoesOnWhenItWasInterrupted)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    const Result stopped = replaceWatched(stepText(GetParam()), [] { std::raise(SIGINT); });
    EXPECT_EQ(stopped.code, 130) << stopped.err;
    EXPECT_THAT(stopped.err, HasSubstr("the same command goes on from there."));
    EXPECT_EQ(journals().size(), 1);
    EXPECT_EQ(controlOf(camera), 0u);
    const Result run = replace();
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_THAT(run.err, HasSubstr("A replacement with EMU-1 N1 (" + macOf(camera) + ") was begun at 20"));
    EXPECT_EQ(camera.counters().restarts, 1u);
    expectDone(camera);
}

// The camera falls silent; where the step behind asks nobody, the inventory is another one by then.
TEST_P(LineReplacementStopped, GoesOnWhenItHasFailed)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    const Result failed = replaceWatched(stepText(GetParam()), [&] {
        emu::Faults faults;
        faults.silence = emu::Silence{};
        if (GetParam() < kSteps - 1)
            camera.setFaults(faults);
        else
            write("hall.toml", fileText("hall.toml") + "# somebody was here\n");
    });
    EXPECT_NE(failed.code, 0) << failed.err;
    EXPECT_NE(failed.code, 130);
    EXPECT_EQ(journals().size(), 1);
    camera.setFaults({});
    const Result run = replace();
    EXPECT_EQ(run.code, 0) << run.err;
    expectDone(camera);
}

// Not even the lock is given back.
TEST_F(LineReplacement, GoesOnWhenItWasKilled)
{
    losesOne();
    emu::EmulatedCamera& camera = addNew("N1");
    tests::Program program(replacing(file()));
    program.start();
    for (int left = 3000; left > 0; --left) {
        const QStringList found = journals();
        if (!found.isEmpty() && fileText(found.first().toStdString()).contains("\"features\""))
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    program.process().kill();
    program.process().waitForFinished(-1);
    ASSERT_EQ(journals().size(), 1);
    EXPECT_TRUE(QFile::exists(QString::fromStdString(file() + ".lock")));
    const Result run = replace();
    EXPECT_EQ(run.code, 0) << run.err;
    expectDone(camera);
}
