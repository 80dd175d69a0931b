#include "companion/CompanionFixture.h"
#include "support/RegisterByRegister.h"
#include "support/SystemTexts.h"

#include <nlohmann/json.hpp>

#include <QFile>

#include <thread>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::CompanionTest;
using tests::descriptionWithOneRegister;
using tests::Program;
using tests::Result;
using tests::runInProcess;

namespace
{

const std::string kNotOpened = "Failed to export features.Failed to open device.";
const std::string kNoFile = "Failed to export features.Failed to open File.";
const std::string kNotSaved = "Failed to save feature.";
const std::string kLastRegister = "the line failed at register 0x00010100: The camera does not answer.";
const std::string kLineFailed = "the line failed during the export; a file that lacks features is not kept.";

class ExportFailures : public CompanionTest
{
protected:
    // One camera that has a fault beside one that has none.
    Result exportBoth() { return runInProcess({"export", "--all", "--to", folder()}); }

    // Of a camera that one export has read: giving control back is one command more.
    static void loseTheLineAtTheLastRegisters(emu::EmulatedCamera& camera)
    {
        const emu::Counters counters = camera.counters();
        emu::Faults faults;
        faults.silence =
            emu::Silence{unsigned(counters.readReg + counters.readMem + counters.writeReg) - 2, std::nullopt};
        camera.setFaults(faults);
        camera.resetCounters();
    }

    void expectOnlyTheSoundOne(const Result& run, const std::string& message)
    {
        EXPECT_EQ(run.code, 1);
        EXPECT_EQ(filesInFolder(), QStringList{"EMU-1_Sound.fpk"});
        EXPECT_THAT(run.err, HasSubstr("EMU-1 Faulty: " + message + "\n"));
        EXPECT_THAT(run.err, HasSubstr("EMU-1 Faulty: failed\n"));
        EXPECT_THAT(run.err, HasSubstr("EMU-1 Sound: done\n"));
        EXPECT_THAT(run.out, HasSubstr("not written\n"));
        EXPECT_THAT(run.out, EndsWith("\n1 exported, 1 failed\n"));
    }
};

} // namespace

TEST_F(ExportFailures, LeaveACameraAloneThatAnotherHostControls)
{
    emu::EmulatedCamera& faulty = addCamera("Faulty");
    addCamera("Sound");
    faulty.stealControl();
    const uint32_t control = controlOf(faulty);
    const Result run = exportBoth();
    expectOnlyTheSoundOne(run, kNotOpened);
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 Faulty: the camera could not be opened: Another application controls "
                          "the camera (127.255.255.254:1).\n"));
    EXPECT_EQ(controlOf(faulty), control);
}

TEST_F(ExportFailures, ComeFromACameraThatAnswersNothingButTheSearch)
{
    emu::Faults faults;
    faults.discoveryOnly = true;
    addCamera("Faulty").setFaults(faults);
    addCamera("Sound");
    expectOnlyTheSoundOne(exportBoth(), kNotOpened);
}

TEST_F(ExportFailures, ComeFromACameraThatVanishesInTheMiddle)
{
    const tests::RegisterByRegister setting;
    emu::Faults faults;
    faults.silence = emu::Silence{150, std::nullopt};
    addCamera("Faulty").setFaults(faults);
    addCamera("Sound");
    const Result run = exportBoth();
    expectOnlyTheSoundOne(run, kNotSaved);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 Faulty: the line failed at "));
    EXPECT_THAT(run.err, HasSubstr(": The camera does not answer.\n"));
}

// The heartbeat finds out, or a read that is denied.
TEST_F(ExportFailures, SayThatAnotherHostHasTakenControl)
{
    const tests::RegisterByRegister setting;
    for (const bool isExclusive : {false, true}) {
        const std::string serial = isExclusive ? "Exclusive" : "Open";
        emu::EmulatedCamera& camera = addCamera(
            serial, [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(15); });
        std::thread other([&] {
            awaitRequests(camera, 100);
            camera.stealControl(isExclusive);
        });
        const Result run = runInProcess({"export", "--serial", serial, "--to", folder()});
        other.join();
        EXPECT_EQ(run.code, 1);
        EXPECT_THAT(run.err, HasSubstr("EMU-1 " + serial + ": the line failed at "));
        EXPECT_THAT(run.err, HasSubstr("nother host has taken control of the camera at " +
                                       camera.config().address + ".\n"));
        EXPECT_EQ(filesInFolder(), QStringList());
    }
}

// Without it there is no file; the job says no more than of any other failure.
TEST_F(ExportFailures, SayThatTheFirmwareCannotBeRead)
{
    emu::Faults faults;
    faults.refusals = {{0x10000, 32}};
    addCamera("Faulty", [](emu::CameraConfig& config) {
        config.description = tests::descriptionWithOneRegister();
    }).setFaults(faults);
    addCamera("Sound");
    const Result run = exportBoth();
    expectOnlyTheSoundOne(run, kNotSaved);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 Faulty: DeviceFirmwareVersion cannot be read: "));
}

// The job says no more; a feature bag of it would even be good, and empty.
TEST_F(ExportFailures, SayThatTheDescriptionCannotBeUsed)
{
    addCamera("Faulty", [](emu::CameraConfig& config) {
        config.description = tests::descriptionWithOneRegister().substr(0, 500);
    });
    addCamera("Missing", [](emu::CameraConfig& config) {
        config.firstUrl = "Local:none.xml;0;0";
        config.secondUrl = "Local:none.xml;0;0";
    });
    for (const char* format : {"xml", "bag"}) {
        QFile earlier(QString::fromStdString(path("EMU-1_Faulty.fpk")));
        ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
        earlier.write("from yesterday");
        earlier.close();
        const Result run = runInProcess({"export", "--all", "--to", folder(), "--format", format});
        EXPECT_EQ(run.code, 1);
        for (const std::string camera : {"Faulty", "Missing"})
            EXPECT_THAT(run.err, HasSubstr("EMU-1 " + camera + ": The camera has no usable description.\n"));
        EXPECT_EQ(fileText("EMU-1_Faulty.fpk"), "from yesterday");
        EXPECT_EQ(filesInFolder(), QStringList{"EMU-1_Faulty.fpk"});
    }
}

TEST_F(ExportFailures, SayThatThereIsNoFirmwareVersion)
{
    addCamera("S1", [](emu::CameraConfig& config) {
        config.description = QString::fromStdString(tests::descriptionWithOneRegister())
                                 .replace("DeviceFirmwareVersion", "AnotherVersion")
                                 .toStdString();
    });
    EXPECT_THAT(runInProcess({"export", "--all", "--to", folder()}).err,
                HasSubstr("EMU-1 S1: the camera has no DeviceFirmwareVersion, without which there is no "
                          "features file.\n"));
}

TEST_F(ExportFailures, KeepTheFileOfAnEarlierExport)
{
    const tests::RegisterByRegister setting;
    QFile earlier(QString::fromStdString(path("EMU-1_Faulty.fpk")));
    ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
    earlier.write("from yesterday");
    earlier.close();
    emu::Faults faults;
    faults.silence = emu::Silence{150, std::nullopt};
    addCamera("Faulty").setFaults(faults);
    EXPECT_EQ(exportBoth().code, 1);
    EXPECT_EQ(fileText("EMU-1_Faulty.fpk"), "from yesterday");
}

// Before any camera is asked, the search included.
TEST_F(ExportFailures, NameAFolderThatIsMissing)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = runInProcess({"export", "--all", "--to", path("missing"), "--json"});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.err,
              "The folder " + path("missing") + " cannot be written to: " + tests::noSuchFolder() + ".\n");
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST_F(ExportFailures, NameAFolderThatIsAFile)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    ASSERT_TRUE(QFile(QString::fromStdString(path("plain"))).open(QIODevice::WriteOnly));
    const Result run = runInProcess({"export", "--all", "--to", path("plain")});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.err,
              "The folder " + path("plain") + " cannot be written to: " + tests::notAFolder() + ".\n");
    EXPECT_EQ(camera.counters().requests(), 0u);
}

TEST_F(ExportFailures, LeadNoFileOutOfTheFolder)
{
    addCamera("../../x");
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr(kNoFile));
    EXPECT_THAT(run.err, HasSubstr(": its file would lie outside of the folder: "));
    EXPECT_EQ(filesInFolder(), QStringList());
}

// A limit on the size of files ends the write in the middle, as a full disk does.
TEST_F(ExportFailures, LeaveNoPartOfAFileThatCouldNotBeWrittenWhole)
{
    addCamera("S1");
    Program program({"export", "--all", "--to", folder()}, "trap '' XFSZ; ulimit -f 8;");
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: " + kNoFile + "\nEMU-1 S1: " + kNotSaved + "\n"));
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: the file could not be written.\n"));
    EXPECT_EQ(filesInFolder(), QStringList());
}

// The job takes a register that cannot be read for one that does not apply, and writes the file without it.
// Meant; but such a file must not take a good one's place.
TEST_F(ExportFailures, KeepTheOlderFileWhenTheLineFailedWhileRegistersWereRead)
{
    for (const std::string serial : {"S1", "S2"})
        addCamera(serial,
                  [](emu::CameraConfig& config) { config.description = descriptionWithOneRegister(); });
    const Result sound = runInProcess({"export", "--all", "--to", folder()});
    ASSERT_EQ(sound.code, 0);
    EXPECT_THAT(sound.err, Not(HasSubstr("the line failed")));
    const QByteArray whole = fileText("EMU-1_S1.fpk");
    ASSERT_TRUE(whole.contains("<ComplexFeature name=\"Zone\" len=\"8\""));

    loseTheLineAtTheLastRegisters(cameras().front());
    const Result run = runInProcess({"export", "--serial", "S1", "--to", folder()});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: " + kLineFailed + "\nEMU-1 S1: failed\n"));
    EXPECT_THAT(run.err, EndsWith("EMU-1 S1: " + kLastRegister + '\n'));
    EXPECT_THAT(run.out, EndsWith("  not written\n0 exported, 1 failed\n"));

    cameras().back().resetCounters();
    ASSERT_EQ(runInProcess({"export", "--serial", "S2", "--to", folder()}).code, 0);
    loseTheLineAtTheLastRegisters(cameras().back()); // the first one is silent: there is one left
    const Result json = runInProcess({"export", "--serial", "S2", "--to", folder(), "--json"});
    EXPECT_EQ(json.code, 1);
    const tests::Json told = tests::lastObject(json, "export");
    EXPECT_EQ(told["result"], "failed");
    EXPECT_TRUE(told["path"].is_null());
    EXPECT_EQ(told["remarks"], tests::Json::array({kLineFailed, kLastRegister}));
    EXPECT_EQ(fileText("EMU-1_S1.fpk"), whole);
    EXPECT_EQ(fileText("EMU-1_S2.fpk"), whole);
    EXPECT_EQ(allInFolder(), (QStringList{"EMU-1_S1.fpk", "EMU-1_S2.fpk"}));
}
