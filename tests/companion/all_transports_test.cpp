// Jobs over each transport.
#include "support/AllTransports.h"
#include "support/Cable.h"
#include "support/FileBytes.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"
#include "support/RunProgram.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

using tests::afterRequests;
using tests::Cable;
using tests::Ran;
using tests::Transport;
using tests::whenHeightIs;

namespace
{

// One camera as it hangs on lines that are used to its byte order; a features file has words as they are in
// the order of the transport.
emu::CameraConfig anyTransport(const std::string& serial, Transport transport)
{
    emu::CameraConfig config;
    const bool isLittle = transport != Transport::Gige;
    config.description = tests::bytesOf(IE_TEST_DATA "/any_transport.xml")
                             .replace("@ENDIANESS@", isLittle ? "LittleEndian" : "BigEndian")
                             .toStdString();
    config.seed =
        R"({"nodes": {"DeviceFirmwareVersion": "1.4.2", "DeviceLocation": "Line 4", "Width": 640,
        "TestPattern": "Ramp", "ReverseX": true, "ExposureTime": 5000.25, "GainRawReg": 75, "LineSelector": 1,
        "LineDelay0": 5, "LineDelay1": 70000, "LineDelay2": 4294967295, "Signature": 1234605616436508552}})";
    config.serial = serial;
    return config;
}

StructDeviceInfo jobRecord(const std::string& serial)
{
    StructDeviceInfo record;
    record.nDeviceID = 1;
    record.nStatus = 1;
    record.stDeviceInfo = tests::AllTransports::record(serial);
    return record;
}

// What the demonstration changes. The registers of GigE Vision's own features are no settings elsewhere.
std::string changesOver(Transport transport)
{
    QJsonObject changes = QJsonDocument::fromJson(tests::bytesOf(IE_DEMO_CHANGES)).object();
    QJsonObject nodes = changes["nodes"].toObject();
    for (const QString& name : nodes.keys())
        if (transport != Transport::Gige && name.startsWith("Gev"))
            nodes.remove(name);
    changes["nodes"] = nodes;
    return QJsonDocument(changes).toJson().toStdString();
}

const char* const kControlledByAnother =
    "the camera could not be opened: Another application controls the camera.";

// Holds the jobs of this process in the call of which `isTime` says so, until they are let go.
class HeldJob
{
public:
    HeldJob(std::function<bool(const KX_CallEvent&)> isTime, std::function<void()> job)
        : m_isTime(std::move(isTime))
    {
        KX_CC_SetCallObserver(nullptr, &HeldJob::observe, this);
        m_thread = std::thread(std::move(job));
        std::unique_lock lock(m_mutex);
        EXPECT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(30), [this] { return m_isHeld; }));
    }
    ~HeldJob() { letGo(); }
    HeldJob(const HeldJob&) = delete;
    HeldJob& operator=(const HeldJob&) = delete;

    // Returns when the job is over.
    void letGo()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        if (m_thread.joinable())
            m_thread.join();
        KX_CC_SetCallObserver(nullptr, nullptr, nullptr);
    }

private:
    static int observe(void* user, const KX_CallEvent* event)
    {
        auto* self = static_cast<HeldJob*>(user);
        std::unique_lock lock(self->m_mutex);
        if (!self->m_isHeld && self->m_isTime(*event)) {
            self->m_isHeld = true;
            self->m_changed.notify_all();
            self->m_changed.wait(lock, [self] { return self->m_isOver; });
        }
        return 0;
    }

    const std::function<bool(const KX_CallEvent&)> m_isTime;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isHeld = false;
    bool m_isOver = false;
    std::thread m_thread;
};

bool hasSetHeight(const KX_CallEvent& event)
{
    return event.operation == KX_OP_SET_INT && event.finished == 1 && event.nodeName == std::string("Height");
}

bool isAskedForHeight(const KX_CallEvent& event)
{
    return event.operation == KX_OP_GET_INT && event.finished == 0 && event.nodeName == std::string("Height");
}

class EachTransport : public testing::TestWithParam<Transport>
{
protected:
    EachTransport() { qputenv("KX_GENTL_TIMEOUT", "3000"); }
    ~EachTransport() override { qunsetenv("KX_GENTL_TIMEOUT"); }

    emu::Shell& add(emu::CameraConfig config = {})
    {
        config.serial = "CAMERA";
        return line.add(GetParam(), config);
    }
    static void expectAnotherProgramIsKeptOut(const QStringList& arguments)
    {
        const Ran list = tests::runProgram(IEFEATURES, {"list"});
        EXPECT_EQ(list.output.count(" in use\n"), 1) << list;
        const Ran ran = tests::runProgram(IEFEATURES, arguments);
        EXPECT_EQ(ran.code, 1) << ran;
        EXPECT_TRUE((ran.output + ran.errors).contains(kControlledByAnother)) << ran;
    }
    tests::ExportOutcome exported() const { return tests::exportCamera(jobRecord("CAMERA"), folder.path()); }

    tests::AllTransports line;
    QTemporaryDir folder;
};

} // namespace

TEST_P(EachTransport, anExportIsThatOfTheSameCameraOverGigE)
{
    line.add(Transport::Gige, anyTransport("OTHER", Transport::Gige));
    line.add(GetParam(), anyTransport("CAMERA", GetParam()));
    const tests::ExportOutcome wanted = tests::exportCamera(jobRecord("OTHER"), folder.path());
    ASSERT_TRUE(wanted.file.contains(">70000</RegValue>")) << wanted.file.toStdString();
    const tests::ExportOutcome outcome = exported();
    EXPECT_EQ(outcome.messages, QStringList());
    EXPECT_EQ(outcome.path, folder.path() + "/EMU-1_CAMERA.fpk");
    EXPECT_EQ(QByteArray(outcome.file).replace("CAMERA", "OTHER"), wanted.file);
}

TEST_P(EachTransport, anImportBringsTheSettingsBack)
{
    emu::Shell& camera = add();
    const tests::ExportOutcome first = exported();
    ASSERT_FALSE(first.file.isEmpty());
    QFile kept(folder.path() + "/kept");
    ASSERT_TRUE(kept.open(QIODevice::WriteOnly) && kept.write(first.file) == first.file.size());
    kept.close();
    EXPECT_EQ(camera.change(changesOver(GetParam())), std::vector<std::string>());
    EXPECT_NE(exported().file, first.file);
    const tests::ImportOutcome imported = tests::importFile(jobRecord("CAMERA"), kept.fileName());
    EXPECT_EQ(imported.errorCode, 0u);
    EXPECT_EQ(imported.messages, QStringList());
    EXPECT_EQ(exported().file, first.file);
}

TEST_P(EachTransport, aCameraThatLeavesInAnExportEndsItWithoutAFile)
{
    emu::CameraConfig config;
    config.latency = std::chrono::milliseconds(1); // time to leave in the middle
    emu::Shell& camera = add(config);
    QTemporaryDir whole;
    const StructDeviceInfo record = jobRecord("CAMERA");
    ASSERT_FALSE(tests::exportCamera(record, whole.path()).file.isNull());
    const uint64_t before = camera.counters().requests();
    ASSERT_FALSE(tests::exportCamera(record, whole.path()).file.isNull());
    const uint64_t needed = camera.counters().requests() - before; // the description is known by now
    {
        const Cable cable(camera, afterRequests(camera, needed / 2));
        EXPECT_TRUE(tests::exportCamera(record, folder.path()).file.isNull());
    }
    EXPECT_FALSE(QFile::exists(folder.path() + "/EMU-1_CAMERA.fpk"));
}

// The job ends as it always does when a camera leaves; the companion tells what it saw.
TEST_P(EachTransport, aCameraThatLeavesInAnImportIsToldAsAFailure)
{
    emu::CameraConfig config;
    config.latency = std::chrono::milliseconds(1);
    emu::Shell& camera = add(config);
    const tests::ExportOutcome first = exported();
    ASSERT_FALSE(first.file.isEmpty());
    EXPECT_EQ(camera.change(changesOver(GetParam())), std::vector<std::string>());
    const Cable cable(camera, whenHeightIs(camera, 480));
    const Ran ran = tests::runProgram(IEFEATURES, {"import", first.path, "--serial", "CAMERA", "--no-audit"});
    EXPECT_EQ(ran.code, 1) << ran;
    EXPECT_TRUE(ran.output.contains("0 applied")) << ran;
}

TEST_P(EachTransport, whatTheCameraRefusesInAnImportKeepsNothingElseBack)
{
    emu::Shell& camera = add();
    const tests::ExportOutcome first = exported();
    ASSERT_FALSE(first.file.isEmpty());
    const auto height = camera.node("Height");
    EXPECT_EQ(camera.change(R"({"nodes": {"Width": 320, "Height": 200}})"), std::vector<std::string>());
    ASSERT_NE(camera.node("Height"), height);
    emu::Faults faults;
    faults.refusals = {{0x11010, 4, gvcp::WriteProtect}}; // Width
    camera.setFaults(faults);
    tests::importFile(jobRecord("CAMERA"), first.path);
    EXPECT_EQ(camera.node("Width"), emu::NodeValue(int64_t(320)));
    EXPECT_EQ(camera.node("Height"), height);
}

TEST_P(EachTransport, anotherProgramInTheMiddleOfAnExportIsKeptOutAndCostsNothing)
{
    add();
    const tests::ExportOutcome wanted = exported();
    ASSERT_FALSE(wanted.file.isEmpty());
    tests::ExportOutcome outcome;
    HeldJob job(isAskedForHeight, [&] { outcome = exported(); });
    expectAnotherProgramIsKeptOut({"set", "Width=320", "--all", "--no-audit"});
    QTemporaryDir others;
    expectAnotherProgramIsKeptOut({"export", "--to", others.path(), "--all"});
    EXPECT_TRUE(QDir(others.path()).isEmpty());
    job.letGo();
    EXPECT_EQ(outcome.messages, QStringList());
    EXPECT_EQ(outcome.file, wanted.file);
}

TEST_P(EachTransport, anotherProgramInTheMiddleOfAnImportIsKeptOutAndCostsNothing)
{
    emu::Shell& camera = add();
    const tests::ExportOutcome first = exported();
    ASSERT_FALSE(first.file.isEmpty());
    EXPECT_EQ(camera.change(changesOver(GetParam())), std::vector<std::string>());
    tests::ImportOutcome imported;
    HeldJob job(hasSetHeight, [&] { imported = tests::importFile(jobRecord("CAMERA"), first.path); });
    expectAnotherProgramIsKeptOut({"set", "Height=200", "--all", "--no-audit"});
    expectAnotherProgramIsKeptOut({"import", first.path, "--all", "--no-audit"});
    job.letGo();
    EXPECT_EQ(imported.errorCode, 0u);
    EXPECT_EQ(imported.messages, QStringList());
    EXPECT_EQ(exported().file, first.file);
}

// It cannot be asked who it is while somebody else has its line.
TEST_P(EachTransport, whoWantsACameraInUseByItsNumberIsTold)
{
    add();
    HeldJob job(isAskedForHeight, [&] { exported(); });
    const Ran ran = tests::runProgram(IEFEATURES, {"set", "Width=320", "--serial", "CAMERA", "--no-audit"});
    const bool isNameless = GetParam() == Transport::Serial || GetParam() == Transport::Clser;
    EXPECT_EQ(ran.code, isNameless ? 3 : 1) << ran;
    EXPECT_TRUE(
        (ran.output + ran.errors)
            .contains(isNameless ? "is in use, and tells nobody else which one it is" : kControlledByAnother))
        << ran;
}

TEST_P(EachTransport, aLineIsInOrderUntilSomebodySetsItsCamera)
{
    emu::Shell& camera = add();
    const QString inventory = folder.filePath("hall.toml");
    const auto run = [&](const QStringList& arguments) {
        return tests::runProgram(IEFEATURES,
                                 QStringList{"line", arguments.first(), inventory} + arguments.mid(1));
    };
    const Ran taken = run({"init", "--all", "--name-by", "serial", "--pause", "0"});
    ASSERT_EQ(taken.code, 0) << taken;
    EXPECT_EQ(run({"check"}).code, 0);
    ASSERT_EQ(camera.change(R"({"nodes": {"Height": 16}})"), std::vector<std::string>());
    EXPECT_EQ(run({"check"}).code, 4);
    const Ran applied = run({"apply", "--yes", "--no-audit"});
    EXPECT_EQ(applied.code, 0) << applied;
    const Ran checked = run({"check"});
    EXPECT_EQ(checked.code, 0) << checked;
    const Ran replaced = run({"replace", "--camera", "CAMERA", "--yes", "--no-audit"});
    EXPECT_EQ(replaced.code, 1) << replaced;
    EXPECT_TRUE(replaced.errors.startsWith("The camera \"CAMERA\" is there: ")) << replaced;
}

// The only transport on which a camera gives control to another host while the first one has it.
TEST(ControlOverGigE, thatAnotherHostTakesInTheMiddleOfAJobIsTold)
{
    tests::AllTransports line;
    QTemporaryDir folder;
    emu::CameraConfig config;
    config.serial = "CAMERA";
    config.latency = std::chrono::milliseconds(1);
    emu::Shell& camera = line.add(Transport::Gige, config);
    const tests::ExportOutcome first = tests::exportCamera(jobRecord("CAMERA"), folder.path());
    ASSERT_FALSE(first.file.isEmpty());
    EXPECT_EQ(camera.change(changesOver(Transport::Gige)), std::vector<std::string>());
    const Cable another(whenHeightIs(camera, 480), [&camera] {
        emu::Faults faults;
        faults.stealControlAfter = 1;
        camera.setFaults(faults);
    });
    const Ran ran = tests::runProgram(IEFEATURES, {"import", first.path, "--all", "--no-audit"});
    EXPECT_EQ(ran.code, 1) << ran;
    EXPECT_TRUE(ran.errors.contains("another host has taken control of the camera at ", Qt::CaseInsensitive))
        << ran;
    EXPECT_TRUE(ran.errors.contains("A part of the file may have been applied.")) << ran;
}

INSTANTIATE_TEST_SUITE_P(Over, EachTransport, tests::everyTransport(), tests::transportName);
