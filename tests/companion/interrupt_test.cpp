#include "companion/CompanionFixture.h"
#include "iefeatures/console/Interrupt.h"
#include "support/RegisterByRegister.h"

#include <nlohmann/json.hpp>

#include <csignal>
#include <thread>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::CompanionTest;
using tests::Result;
using tests::runInProcess;

namespace
{

// Enough to be in the middle of an export; one is over after more than twice as many.
constexpr uint64_t kMiddle = 100;

class Interrupted : public CompanionTest
{
protected:
    emu::EmulatedCamera& addSlowCamera(const std::string& serial)
    {
        return addCamera(serial,
                         [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    }

    // One register, where a formula says that takes minutes.
    static std::string descriptionWithAMillionCombinations()
    {
        std::string description = tests::descriptionWithOneRegister();
        const std::string address = "<Address>0x10100</Address>";
        description.replace(description.find(address), address.size(), "<pAddress>Where</pAddress>");
        const std::string nodes =
            "<Integer Name=\"Selector\"><pValue>Thousand</pValue><Min>1</Min><Max>1000</Max>"
            "<pSelected>Zone</pSelected></Integer><Integer Name=\"Thousand\"><Value>1</Value></Integer>"
            "<IntSwissKnife Name=\"Where\">"
            "<pVariable Name=\"A\">Thousand</pVariable><pVariable Name=\"B\">Thousand</pVariable>"
            "<Formula>0x10100+A-A+B-B" +
            repeated("+(3*5-15)", 90) + "</Formula></IntSwissKnife>";
        description.insert(description.find("<Port "), nodes);
        return description.insert(description.find("<pFeature>Zone<"), "<pFeature>Selector</pFeature>");
    }

    static std::string repeated(const std::string& text, int times)
    {
        std::string all;
        for (int i = 0; i < times; ++i)
            all += text;
        return all;
    }

    // Until the camera has been asked, and is asked no more.
    static void awaitSilence(const emu::EmulatedCamera& camera)
    {
        awaitRequests(camera, 1);
        for (uint64_t last = 0; last != camera.counters().requests();) {
            last = camera.counters().requests();
            std::this_thread::sleep_for(std::chrono::milliseconds(400));
        }
    }

    // Runs the command and raises the signal when the camera has got so many requests.
    Result interruptAt(const emu::EmulatedCamera& camera, uint64_t requests, int signal,
                       const tests::Arguments& arguments)
    {
        return interruptWhen([&] { awaitRequests(camera, requests); }, signal, arguments);
    }
    Result interruptWhen(const std::function<void()>& isAwaited, int signal,
                         const tests::Arguments& arguments)
    {
        const tests::RegisterByRegister setting;
        std::thread person([&] {
            isAwaited();
            std::raise(signal);
        });
        const Result run = runInProcess(arguments);
        person.join();
        return run;
    }

    void awaitFile(const std::string& name) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!filesInFolder().contains(QString::fromStdString(name)) &&
               std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
};

} // namespace

class InterruptedBy : public Interrupted, public ::testing::WithParamInterface<int>
{
};

TEST_P(InterruptedBy, GivesTheCamerasBackAndLeavesNoFile)
{
    const emu::EmulatedCamera& one = addSlowCamera("S1");
    const emu::EmulatedCamera& other = addSlowCamera("S2");
    const Result run = interruptAt(one, kMiddle, GetParam(), {"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(filesInFolder(), QStringList());
    EXPECT_EQ(controlOf(one), 0u);
    EXPECT_EQ(controlOf(other), 0u);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: failed\n"));
    EXPECT_THAT(run.err, EndsWith("Interrupted.\n"));
    EXPECT_EQ(QString::fromStdString(run.out).count("  not written\n"), 2);
    EXPECT_THAT(run.out, EndsWith("\n0 exported, 2 failed\n"));
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedBy, ::testing::Values(SIGINT, SIGTERM));

TEST_F(Interrupted, KeepsWhatWasDoneAndSaysSo)
{
    addCamera("Fast");
    addCamera("Slow", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(50); });
    const Result run = interruptWhen([this] { awaitFile("EMU-1_Fast.fpk"); }, SIGINT,
                                     {"export", "--all", "--to", folder(), "--json"});
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(filesInFolder(), QStringList{"EMU-1_Fast.fpk"});
    EXPECT_TRUE(fileText("EMU-1_Fast.fpk").endsWith("</FeaturesFile>"));
    EXPECT_EQ(run.err, "EMU-1 Slow: interrupted; no file was written.\n"
                       "Interrupted.\n"
                       "EMU-1 Fast: " +
                           path("EMU-1_Fast.fpk") +
                           "\n"
                           "EMU-1 Slow: not written\n");
    EXPECT_THAT(run.out, HasSubstr("\"failed\":true,\"message\":\"Failed to save feature.\"}\n"));
    const tests::Json slowest = tests::lastObject(run, "export");
    EXPECT_EQ(slowest["camera"]["number"], 2);
    EXPECT_EQ(slowest["result"], "failed");
    EXPECT_TRUE(slowest["path"].is_null());
}

// The camera library says who has refused its call; nobody but the person at the keyboard has.
TEST_F(Interrupted, SaysSoOfAFeatureBag)
{
    const emu::EmulatedCamera& slow = addSlowCamera("Slow");
    const Result run = interruptAt(slow, kMiddle, SIGINT,
                                   {"export", "--all", "--to", folder(), "--format", "bag", "--json"});
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.out, HasSubstr("Interrupted."));
    EXPECT_THAT(run.out + run.err, Not(HasSubstr("observer")));
}

// The job goes on when the read of its last registers is refused, and writes a file that lacks them.
TEST_F(Interrupted, KeepsNoFileThatOnlyLooksWhole)
{
    const emu::EmulatedCamera& camera = addCamera("S1", [](emu::CameraConfig& config) {
        config.description = tests::descriptionWithOneRegister();
        config.latency = std::chrono::milliseconds(50); // answered before anything is sent again
    });
    ASSERT_EQ(runInProcess({"export", "--all", "--to", folder()}).code, 0);
    const QByteArray whole = fileText("EMU-1_S1.fpk");
    ASSERT_TRUE(whole.contains("Zone"));
    const uint64_t requests = camera.counters().requests();

    // While the answer before those registers is on its way; giving control back is one request more.
    const Result run =
        interruptAt(camera, 2 * requests - 2, SIGINT, {"export", "--all", "--to", folder(), "--json"});
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.out, Not(HasSubstr("\"info\"")));
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), whole);
    EXPECT_EQ(run.err, "EMU-1 S1: interrupted; no file was written.\nInterrupted.\nEMU-1 S1: not written\n");
    EXPECT_EQ(controlOf(camera), 0u);
}

// No call to the camera follows that could be refused.
TEST_F(Interrupted, EndsAnExportThatComputesFormulas)
{
    const emu::EmulatedCamera& camera = addCamera(
        "S1", [](emu::CameraConfig& config) { config.description = descriptionWithAMillionCombinations(); });
    std::thread person([&] {
        awaitSilence(camera);
        std::raise(SIGINT);
    });
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    person.join();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(allInFolder(), QStringList());
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: interrupted; no file was written.\n"));
    EXPECT_EQ(controlOf(camera), 0u);
}

// Height has been read when the signal comes: it is still written. The registers behind it are not reached.
TEST_F(Interrupted, EndsAnImportBehindTheFeatureInHand)
{
    emu::EmulatedCamera& camera = addSlowCamera("S1");
    ASSERT_EQ(runInProcess({"export", "--all", "--to", folder()}).code, 0);
    const std::string file = path("EMU-1_S1.fpk");
    ASSERT_EQ(camera.setNode("ReverseY", int64_t(1)), "");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.pokeWord(77824, 7); // a gain, in a register block

    std::thread person([&] {
        while (std::get<int64_t>(camera.node("Height").value()) == 16)
            std::this_thread::yield();
        std::raise(SIGINT);
    });
    const Result run = runInProcess({"import", file, "--all"});
    person.join();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(camera.peekWord(77824), 7u);
    EXPECT_THAT(run.err, HasSubstr("Interrupted.\nEMU-1 S1: written: ReverseY, Height\n"
                                   "EMU-1 S1: not reached: "));
    EXPECT_THAT(run.err, HasSubstr("Gain"));
    EXPECT_THAT(
        run.out,
        EndsWith("  interrupted\n0 applied, 0 incomplete, 0 incompatible, 0 failed, 1 interrupted\n"));
}

TEST_F(Interrupted, StartsNoJobThatStillWaits)
{
    for (int i = 0; i < 34; ++i)
        addSlowCamera("S" + std::to_string(100 + i));
    const emu::EmulatedCamera& first = addSlowCamera("S000");
    const Result run = interruptAt(first, kMiddle, SIGINT, {"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 130);
    EXPECT_THAT(run.out, EndsWith("\n0 exported, 32 failed, 3 not started\n"));
    EXPECT_EQ(filesInFolder(), QStringList());
}

TEST_F(Interrupted, GivesTheCameraBackInTheMiddleOfAnImport)
{
    emu::EmulatedCamera& camera = addSlowCamera("S1");
    ASSERT_EQ(runInProcess({"export", "--all", "--to", folder()}).code, 0);
    camera.setNode("AcquisitionFrameCount", int64_t(99)); // first in the pass of the numbers
    camera.setNode("Width", int64_t(16));                 // among the last
    const uint64_t settings = camera.counters().settingWrites;
    std::thread person([&] {
        EXPECT_TRUE(
            camera.waitFor([&](const emu::Counters& counters) { return counters.settingWrites > settings; },
                           std::chrono::seconds(20)));
        std::raise(SIGINT);
    });
    const Result run = runInProcess({"import", path("EMU-1_S1.fpk"), "--all"});
    person.join();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(std::get<int64_t>(*camera.node("AcquisitionFrameCount")), 10);
    EXPECT_EQ(std::get<int64_t>(*camera.node("Width")), 16);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: interrupted; a part of the file may have been applied.\n"
                                   "Interrupted.\n"
                                   "EMU-1 S1: written: AcquisitionFrameCount\n"
                                   "EMU-1 S1: not reached: AccessKey, "));
    EXPECT_THAT(
        run.out,
        EndsWith("  interrupted\n0 applied, 0 incomplete, 0 incompatible, 0 failed, 1 interrupted\n"));
}

TEST_F(Interrupted, OnlyWhileAnExportRuns)
{
    addCamera("S1");
    const auto before = std::signal(SIGINT, SIG_DFL);
    EXPECT_EQ(runInProcess({"export", "--all", "--to", folder()}).code, 0);
    EXPECT_EQ(std::signal(SIGINT, before), SIG_DFL);
}

TEST(Interrupt, ForgetsTheOneBefore)
{
    {
        const companion::Interrupt interrupt;
        EXPECT_FALSE(companion::Interrupt::isRequested());
        std::raise(SIGINT);
        EXPECT_TRUE(companion::Interrupt::isRequested());
    }
    const companion::Interrupt next;
    EXPECT_FALSE(companion::Interrupt::isRequested());
}

TEST(Interrupt, LetsAProcessIgnoreCtrlCThatWasStartedSo)
{
    const auto before = std::signal(SIGINT, SIG_IGN);
    {
        const companion::Interrupt interrupt;
        std::raise(SIGINT);
        EXPECT_FALSE(companion::Interrupt::isRequested());
    }
    EXPECT_EQ(std::signal(SIGINT, before), SIG_IGN);
}

TEST(InterruptDeathTest, EndsAtOnceTheSecondTime)
{
    EXPECT_EXIT(
        {
            const companion::Interrupt interrupt;
            std::raise(SIGINT);
            std::raise(SIGTERM);
        },
        ::testing::ExitedWithCode(130), "");
}
