// The program itself, as scripts meet it.
#include "companion/CompanionFixture.h"
#include "support/Processes.h"

#include <QProcessEnvironment>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using tests::CompanionTest;
using tests::Program;
using tests::Result;

namespace
{

class ProgramTest : public CompanionTest
{
protected:
    static Result runProgram(const tests::Arguments& arguments, const QString& wrapper = {})
    {
        Program program(arguments, wrapper);
        program.start();
        return program.finish();
    }

    emu::EmulatedCamera& addSlowCamera(const std::string& serial)
    {
        return addCamera(serial,
                         [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    }
};

} // namespace

TEST_F(ProgramTest, ListsAndExports)
{
    const emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.userName = "门 1"; });
    for (const char* serial : {"S2", "S3", "S4"})
        addCamera(serial);
    const Result list = runProgram({"list"});
    EXPECT_EQ(list.code, 0);
    EXPECT_THAT(list.out, HasSubstr(" 1  GigE       EMU-1  S1      门 1  " + camera.config().address + "  "));
    EXPECT_EQ(list.err, "");

    const Result all = runProgram({"export", "--all", "--to", folder()});
    EXPECT_EQ(all.code, 0);
    EXPECT_THAT(all.out, EndsWith("\n4 exported, 0 failed\n"));
    EXPECT_EQ(filesInFolder().size(), 4);
    EXPECT_EQ(all.err.find('\033'), std::string::npos);
}

TEST_F(ProgramTest, ExitsByTheTable)
{
    addCamera("S1");
    EXPECT_EQ(runProgram({"--version"}).code, 0);
    EXPECT_EQ(runProgram({"export", "--all", "--to", path("missing")}).code, 6);
    EXPECT_EQ(runProgram({"exprot"}).code, 2);
    EXPECT_EQ(runProgram({"export", "--serial", "S9", "--to", folder()}).code, 3);
    EXPECT_EQ(runProgram({"export", "--all", "--to", folder(), "--log", path("missing/log")}).code, 6);
}

TEST_F(ProgramTest, ImportsAndExitsByTheTable)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    addCamera("S2", [](emu::CameraConfig& config) { config.model = "Other"; });
    const std::string file = path("EMU-1_S1.fpk");
    ASSERT_EQ(runProgram({"export", "--serial", "S1", "--to", folder()}).code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const Result run = runProgram({"import", file, "--serial", "S1"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(std::get<int64_t>(*camera.node("Height")), 480);
    EXPECT_THAT(run.out, EndsWith("  applied\n1 applied, 0 incomplete, 0 incompatible, 0 failed\n"));

    EXPECT_EQ(runProgram({"import", "--all"}).code, 2);
    EXPECT_EQ(runProgram({"import", file, "--serial", "S9"}).code, 3);
    EXPECT_EQ(runProgram({"import", file, "--serial", "S2"}).code, 5);
    EXPECT_EQ(runProgram({"import", path("missing"), "--all"}).code, 6);
    camera.pokeWord(0x10000, 0); // another firmware
    EXPECT_EQ(runProgram({"import", file, "--all"}).code, 5);
    camera.stealControl();
    EXPECT_EQ(runProgram({"import", file, "--all"}).code, 1);
    EXPECT_EQ(runProgram({"import", file, "--serial", "S1", "--format", "bag"}).code, 5);
}

TEST_F(ProgramTest, NoticesThatItsResultsCannotBeWritten)
{
    addCamera("S1");
    const Result run = runProgram({"list"}, "exec >/dev/full;");
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.err, "The standard output cannot be written.\n");
}

TEST_F(ProgramTest, FinishesItsJobsQuietlyWhenTheReaderOfItsResultsIsGone)
{
    const emu::EmulatedCamera& camera = addSlowCamera("S1");
    Program program({"export", "--all", "--to", folder(), "--json"});
    QProcess reader;
    program.process().setStandardOutputProcess(&reader);
    reader.start(Program::path(), {"--version"}); // which reads nothing
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
    reader.waitForFinished();
    EXPECT_EQ(filesInFolder(), QStringList{"EMU-1_S1.fpk"});
    EXPECT_EQ(controlOf(camera), 0u);
}

TEST_F(ProgramTest, EndsProperlyOnCtrlC)
{
    const emu::EmulatedCamera& camera = addSlowCamera("S1");
    Program program({"export", "--all", "--to", folder()});
    program.start();
    awaitRequests(camera, 100);
    EXPECT_NE(controlOf(camera), 0u);
    program.interrupt();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(controlOf(camera), 0u);
    EXPECT_EQ(allInFolder(), QStringList());
    EXPECT_THAT(run.out, EndsWith("  not written\n0 exported, 1 failed\n"));
}

// Nobody else sees a file before it is whole.
TEST_F(ProgramTest, ExportsIntoAFolderOfItsOwnUntilAllIsThere)
{
    const emu::EmulatedCamera& camera = addSlowCamera("S1");
    Program program({"export", "--all", "--to", folder()});
    program.start();
    awaitRequests(camera, 100);
    const QStringList during = allInFolder();
    ASSERT_EQ(during.size(), 1) << during.join(' ').toStdString();
    EXPECT_THAT(during.first().toStdString(), ::testing::StartsWith(".iefeatures-"));
    EXPECT_EQ(program.finish().code, 0);
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
}

TEST_F(ProgramTest, EndsAtOnceOnTheSecondCtrlC)
{
    emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(1); });
    Program program({"export", "--all", "--to", folder()});
    program.start();
    awaitRequests(camera, 100);
    emu::Faults faults; // a call that takes long: its answer is promised for later
    faults.pending = emu::kAlways;
    faults.pendingTime = std::chrono::seconds(20);
    camera.setFaults(faults);
    ASSERT_TRUE(camera.waitFor([](const emu::Counters& counters) { return counters.pending > 0; }));
    program.interrupt();
    do // a wish that comes too soon behind the first one is the same wish, where both are told in one way
        tests::endProgram(program.process());
    while (!program.process().waitForFinished(500) && program.process().state() == QProcess::Running);
    const Result run = program.finish();
    EXPECT_EQ(run.code, 130);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(allInFolder(), QStringList());
}

TEST_F(ProgramTest, WritesUtf8WithoutALocale)
{
    addCamera("S1", [](emu::CameraConfig& config) { config.model = "相机"; });
    Program program({"export", "--model", "相机", "--to", folder()});
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C");
    program.process().setProcessEnvironment(environment);
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(filesInFolder(), QStringList{QString::fromUtf8("相机_S1.fpk")});
    EXPECT_TRUE(fileText("相机_S1.fpk").contains("<DeviceModelName>相机</DeviceModelName>\r\n"));
}
