#include "companion/CompanionFixture.h"
#include "support/RegisterByRegister.h"

#include <nlohmann/json.hpp>

#include <QFile>

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

class ExportFailures : public CompanionTest
{
protected:
    // One camera that has a fault beside one that has none.
    Result exportBoth() { return runInProcess({"export", "--all", "--to", folder()}); }

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
    expectOnlyTheSoundOne(exportBoth(), kNotOpened);
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
    expectOnlyTheSoundOne(exportBoth(), kNotSaved);
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

TEST_F(ExportFailures, NameAFolderThatIsMissing)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = runInProcess({"export", "--all", "--to", path("missing"), "--json"});
    EXPECT_EQ(run.code, 1);
    std::vector<std::string> messages;
    for (const tests::Json& object : tests::objects(run))
        if (object.value("failed", false))
            messages.push_back(object["message"]);
    EXPECT_EQ(messages, (std::vector<std::string>{kNoFile, kNotSaved}));
    EXPECT_EQ(tests::lastObject(run, "export")["result"], "failed");
    EXPECT_TRUE(tests::lastObject(run, "export")["path"].is_null());
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(ExportFailures, NameAFolderThatIsAFile)
{
    addCamera("S1");
    ASSERT_TRUE(QFile(QString::fromStdString(path("plain"))).open(QIODevice::WriteOnly));
    const Result run = runInProcess({"export", "--all", "--to", path("plain")});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: " + kNoFile + "\nEMU-1 S1: " + kNotSaved + "\n"));
    EXPECT_THAT(run.out, EndsWith("\n0 exported, 1 failed\n"));
}

TEST_F(ExportFailures, LeadNoFileOutOfTheFolder)
{
    addCamera("../../x");
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr(kNoFile));
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
    EXPECT_EQ(filesInFolder(), QStringList());
}

// The job takes a register that cannot be read for one that does not apply, and writes the file without it.
// Meant; but a person should know.
TEST_F(ExportFailures, WarnWhenTheLineFailedAndAFileWasWrittenAllTheSame)
{
    emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.description = descriptionWithOneRegister(); });
    const Result sound = runInProcess({"export", "--all", "--to", folder()});
    ASSERT_EQ(sound.code, 0);
    EXPECT_THAT(sound.err, Not(HasSubstr("the line failed")));
    ASSERT_TRUE(fileText("EMU-1_S1.fpk").contains("<ComplexFeature name=\"Zone\" len=\"8\""));

    const emu::Counters counters = camera.counters();
    emu::Faults faults; // silent from the read of the registers on; giving control back is one command more
    faults.silence =
        emu::Silence{unsigned(counters.readReg + counters.readMem + counters.writeReg) - 2, std::nullopt};
    camera.setFaults(faults);
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 0);
    EXPECT_FALSE(fileText("EMU-1_S1.fpk").contains("Zone"));
    EXPECT_THAT(run.err,
                HasSubstr("EMU-1 S1: the line failed during the export; the file may lack features.\n"));
}
