#include "companion/CompanionFixture.h"
#include "iefeatures/running/JobBatch.h"

#include "jobs/worker/QOperateThread.h"

#include <SuiteTools/SuiteTools.h>
#include <nlohmann/json.hpp>

#include <QRegularExpression>
#include <QSet>

using ::testing::HasSubstr;
using tests::CompanionTest;
using tests::Result;
using tests::runInProcess;

namespace
{

class ExportCommand : public CompanionTest
{
};

// The line of a camera in the table, split at its blanks.
QStringList row(const Result& run, const QString& serial)
{
    for (const QString& line : QString::fromStdString(run.out).split('\n'))
        if (line.contains(' ' + serial + ' '))
            return line.split(QRegularExpression(" +"));
    return {};
}

} // namespace

TEST_F(ExportCommand, WritesAFileOfEachCameraAndPrintsALineForEach)
{
    for (const char* serial : {"S1", "S2", "S3", "S4"})
        addCamera(serial);
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(filesInFolder(), (QStringList{"EMU-1_S1.fpk", "EMU-1_S2.fpk", "EMU-1_S3.fpk", "EMU-1_S4.fpk"}));
    EXPECT_EQ(QString::fromStdString(run.out).count('\n'), 6);
    EXPECT_THAT(run.out, ::testing::StartsWith("MODEL  SERIAL  FEATURES  REQUESTS  SECONDS  PATH\n"));
    EXPECT_THAT(run.out, ::testing::EndsWith("\n4 exported, 0 failed\n"));
    for (const char* serial : {"S1", "S2", "S3", "S4"}) {
        const std::string file = "EMU-1_" + std::string(serial) + ".fpk";
        const QByteArray text = fileText(file);
        EXPECT_TRUE(text.endsWith("</FeaturesFile>"));
        const QStringList cells = row(run, serial);
        ASSERT_EQ(cells.size(), 6) << run.out;
        EXPECT_EQ(cells[0], "EMU-1");
        EXPECT_EQ(cells[2].toInt(), text.count("<Feature>") + text.count("<ComplexFeature "));
        EXPECT_GT(cells[2].toInt(), 50);
        EXPECT_EQ(cells[5].toStdString(), path(file));
        EXPECT_THAT(run.err, HasSubstr("EMU-1 " + std::string(serial) + ": exporting\n"));
        EXPECT_THAT(run.err, HasSubstr("EMU-1 " + std::string(serial) + ": done\n"));
    }
}

TEST_F(ExportCommand, CountsTheRequestsThatTheCameraGot)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    ASSERT_EQ(run.code, 0);
    // The search has asked two things as well: who is there, and whether it is in use. On a busy machine more
    // than once, since an answer may come late.
    const uint64_t told = row(run, "S1").value(3).toULongLong();
    EXPECT_GE(camera.counters().requests(), told + 2);
    EXPECT_LE(camera.counters().requests(), told + 6);
}

// Of the objects: signals by their own word.
static std::string kinds(const Result& run)
{
    std::string text;
    for (const tests::Json& object : tests::objects(run))
        text += (text.empty() ? "" : " ") + object.value("signal", object["kind"].get<std::string>());
    return text;
}

TEST_F(ExportCommand, PrintsTheSignalsAndAResultAsJsonLines)
{
    addCamera("S1");
    emu::EmulatedCamera& taken = addCamera("S2");
    taken.stealControl();
    const Result one = runInProcess({"export", "--serial", "S1", "--to", folder(), "--json"});
    EXPECT_EQ(one.code, 0);
    EXPECT_EQ(kinds(one), "begin end export end");
    EXPECT_EQ(tests::lastObject(one, "export")["result"], "exported");
    EXPECT_EQ(tests::lastObject(one, "export")["path"], path("EMU-1_S1.fpk"));
    EXPECT_EQ(one.err, "");

    const Result other = runInProcess({"export", "--serial", "S2", "--to", folder(), "--json"});
    EXPECT_EQ(other.code, 1);
    EXPECT_EQ(kinds(other), "begin info end export end");
    EXPECT_THAT(
        other.out,
        HasSubstr("\"failed\":true,\"message\":\"Failed to export features.Failed to open device.\"}"));
    const tests::Json told = tests::lastObject(other, "export");
    EXPECT_EQ(told["result"], "failed");
    EXPECT_EQ(told["camera"]["number"], 2);
    EXPECT_TRUE(told["path"].is_null()); // no such file is there
}

TEST_F(ExportCommand, GivesDevicesTheNumbersOfTheList)
{
    addCamera("S2");
    addCamera("S1");
    const Result run = runInProcess({"export", "--all", "--to", folder(), "--json"});
    for (const tests::Json& object : tests::objects(run)) {
        if (object["kind"] != "export")
            continue;
        const std::string number = object["camera"]["number"].dump();
        EXPECT_EQ(object["camera"]["serial"], "S" + number);
        EXPECT_EQ(object["path"], path("EMU-1_S" + number + ".fpk"));
    }
    EXPECT_EQ(tests::lastObject(run, "export")["camera"]["number"], 2);
}

TEST_F(ExportCommand, ChoosesByEverySelector)
{
    const emu::EmulatedCamera& byAddress = addCamera("S1");
    addCamera("S2", [](emu::CameraConfig& config) { config.userName = "门 2"; });
    addCamera("S3", [](emu::CameraConfig& config) { config.model = "Other"; });
    addCamera("S4");
    addCamera("S5");
    const Result run = runInProcess({"export", "--address", byAddress.config().address, "--name", "门 2",
                                     "--model", "Other", "--serial", "S4", "--to", folder()});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(filesInFolder(), (QStringList{"EMU-1_S1.fpk", "EMU-1_S2.fpk", "EMU-1_S4.fpk", "Other_S3.fpk"}));
}

TEST_F(ExportCommand, DoesNothingWhenASelectorFitsNobody)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const Result run = runInProcess({"export", "--serial", "S1", "S9", "--to", folder()});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "No camera has the serial number \"S9\".\n");
    EXPECT_EQ(filesInFolder(), QStringList());
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

TEST_F(ExportCommand, FindsNoCameraAtAll)
{
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 3);
    EXPECT_EQ(run.err, "No camera was found.\n");
}

TEST_F(ExportCommand, RefusesTwoCamerasThatWouldWriteOneFile)
{
    const emu::EmulatedCamera& one = addCamera("S1");
    const emu::EmulatedCamera& other = addCamera("S1");
    addCamera("S2");
    const Result run = runInProcess({"export", "--all", "--to", folder()});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "The cameras 1 and 2 would write one file, EMU-1_S1.fpk.\n");
    EXPECT_EQ(filesInFolder(), QStringList());
    EXPECT_EQ(one.counters().writeReg + other.counters().writeReg, 0u);

    EXPECT_EQ(runInProcess({"export", "--address", other.config().address, "--to", folder()}).code, 0);
}

TEST_F(ExportCommand, TakesACutFolderNameAsItIs)
{
    addCamera("S1");
    const Result run = runInProcess({"export", "--all", "--to", folder() + "/.", "--json"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr(folder() + "/./EMU-1_S1.fpk"));
}

TEST_F(ExportCommand, RunsAsManyJobsAtOnceAsTheSuiteSupports)
{
    struct Counter : companion::JobListener
    {
        void begin(const companion::ListedCamera&, unsigned) override { most = std::max(most, ++running); }
        void info(const companion::ListedCamera&, const QString&, bool) override {}
        void end(const companion::ListedCamera&, unsigned, const QString&) override
        {
            --running;
            ++ended;
        }
        int running = 0;
        int most = 0;
        int ended = 0;
    };
    const int limit = int(VELAInterface::toolsSupportNum());
    for (int i = 0; i < limit + 3; ++i)
        addCamera("S" + std::to_string(100 + i),
                  [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(1); });
    std::vector<KX_DeviceEntry> entries;
    ASSERT_EQ(companion::enumerateCameras(entries), KX_OK);
    const auto cameras = companion::camerasFrom(entries);
    ASSERT_EQ(int(cameras.size()), limit + 3);

    Counter counter;
    const QString target = QString::fromStdString(folder());
    companion::JobBatch batch(
        cameras,
        [&](QOperateThread& worker, const StructDeviceInfo& device) {
            worker.SetXmlExportJob(device, target);
        },
        counter);
    const auto outcomes = batch.run([] { return true; });
    EXPECT_EQ(counter.ended, limit + 3);
    EXPECT_EQ(counter.most, limit);
    EXPECT_EQ(filesInFolder().size(), limit + 3);
    for (const companion::JobOutcome& outcome : outcomes)
        EXPECT_TRUE(outcome.hasStarted && !outcome.hasFailed);
}
