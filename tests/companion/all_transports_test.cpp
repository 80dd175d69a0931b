// Jobs over each transport, and batches of the companion over all of them at once.
#include "support/AllTransports.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"
#include "support/RunProgram.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <atomic>
#include <functional>
#include <thread>

using tests::Ran;
using tests::Transport;

namespace
{

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

// One camera as it hangs on lines that are used to its byte order; a features file has words as they are in
// the order of the transport.
emu::CameraConfig anyTransport(const std::string& serial, Transport transport)
{
    emu::CameraConfig config;
    const bool isLittle = transport != Transport::Gige;
    config.description = bytesOf(IE_TEST_DATA "/any_transport.xml")
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

// Stops the camera as soon as that is so.
class Cable
{
public:
    Cable(emu::Shell& camera, std::function<bool()> isTime)
        : m_thread([this, &camera, isTime = std::move(isTime)] {
              while (!m_isOver && !isTime())
                  std::this_thread::sleep_for(std::chrono::microseconds(200));
              camera.stop();
          })
    {}
    ~Cable()
    {
        m_isOver = true;
        m_thread.join();
    }
    Cable(const Cable&) = delete;
    Cable& operator=(const Cable&) = delete;

private:
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

Ran run(const QStringList& arguments)
{
    return tests::runProgram(IEFEATURES, arguments);
}

// What the demonstration changes. The registers of GigE Vision's own features are no settings elsewhere.
std::string changesOver(Transport transport)
{
    QJsonObject changes = QJsonDocument::fromJson(bytesOf(IE_DEMO_CHANGES)).object();
    QJsonObject nodes = changes["nodes"].toObject();
    for (const QString& name : nodes.keys())
        if (transport != Transport::Gige && name.startsWith("Gev"))
            nodes.remove(name);
    changes["nodes"] = nodes;
    return QJsonDocument(changes).toJson().toStdString();
}

// So many requests from now on.
std::function<bool()> afterRequests(const emu::Shell& camera, uint64_t count)
{
    return
        [&camera, end = camera.counters().requests() + count] { return camera.counters().requests() >= end; };
}

// An import has set it.
std::function<bool()> whenHeightIs(const emu::Shell& camera, int64_t height)
{
    return [&camera, height] { return camera.node("Height") == emu::NodeValue(height); };
}

class EachTransport : public testing::TestWithParam<Transport>
{
protected:
    emu::Shell& add(emu::CameraConfig config = {})
    {
        config.serial = "CAMERA";
        return line.add(GetParam(), config);
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
    const Ran ran = run({"import", first.path, "--serial", "CAMERA", "--no-audit"});
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

INSTANTIATE_TEST_SUITE_P(Over, EachTransport, tests::everyTransport(), tests::transportName);

// ---- all of them at once ----

namespace
{

const Transport kPairs[] = {Transport::Gige,  Transport::Gige,  Transport::Serial, Transport::Clser,
                            Transport::GenTl, Transport::GenTl, Transport::Usb3,   Transport::Usb3};

// Two of each kind; of the serial ones one hangs on a terminal and one on a grabber's port.
class EightCameras : public testing::Test
{
protected:
    EightCameras()
    {
        qputenv("VELA_PROGRAM_DATA", folder.path().toLocal8Bit());
        qputenv("KX_GENTL_TIMEOUT", "3000");
        for (size_t i = 0; i < std::size(kPairs); ++i) {
            emu::CameraConfig config;
            config.serial = "CAM" + std::to_string(i + 1);
            config.latency = std::chrono::milliseconds(1); // time to leave in the middle
            cameras.push_back(&line.add(kPairs[i], config));
        }
    }
    ~EightCameras() override { qunsetenv("KX_GENTL_TIMEOUT"); }

    QString filesIn(const char* name)
    {
        QDir(folder.path()).mkpath(name);
        return folder.path() + "/" + name;
    }
    static QString fileOf(const QString& in, size_t index)
    {
        return in + QString("/EMU-1_CAM%1.fpk").arg(index + 1);
    }
    void changeAll()
    {
        for (emu::Shell* camera : cameras)
            EXPECT_EQ(camera->change(R"({"nodes": {"Width": 320, "Height": 200}})"),
                      std::vector<std::string>());
    }
    // The cameras whose width is this, as their numbers.
    QString withWidth(int64_t width) const
    {
        QString numbers;
        for (size_t i = 0; i < cameras.size(); ++i)
            if (cameras[i]->node("Width") == emu::NodeValue(width))
                numbers += QString::number(i + 1);
        return numbers;
    }

    tests::AllTransports line;
    std::vector<emu::Shell*> cameras;
    QTemporaryDir folder;
};

} // namespace

TEST_F(EightCameras, areListedExportedPlannedImportedRolledBackAndCloned)
{
    Ran ran = run({"list"});
    EXPECT_EQ(ran.code, 0) << ran;
    EXPECT_EQ(ran.output.count(" free\n"), 8) << ran;
    const QString first = filesIn("first");
    ran = run({"export", "--to", first, "--all", "--expect", "8"});
    ASSERT_EQ(ran.code, 0) << ran;
    changeAll();
    EXPECT_EQ(withWidth(320), "12345678");
    ran = run({"plan", first, "--all"});
    EXPECT_EQ(ran.output.count("would change: Width: 320 -> 640"), 8) << ran;
    const QString snapshots = filesIn("snapshots");
    ran = run({"import", first, "--all", "--verify", "--snapshot", snapshots, "--no-audit"});
    EXPECT_EQ(ran.code, 0) << ran;
    EXPECT_EQ(withWidth(640), "12345678");
    const QString again = filesIn("again");
    ASSERT_EQ(run({"export", "--to", again, "--all"}).code, 0);
    for (size_t i = 0; i < cameras.size(); ++i)
        EXPECT_EQ(bytesOf(fileOf(again, i)), bytesOf(fileOf(first, i))) << i + 1;
    ran = run({"rollback", snapshots, "--all", "--no-audit"});
    EXPECT_EQ(ran.code, 0) << ran;
    EXPECT_EQ(withWidth(320), "12345678");
    // From one to the other of a kind: words of registers are in the order of their transport.
    for (size_t i = 0; i < cameras.size(); i += 2) {
        const QString from = QString("CAM%1").arg(i + 1);
        const QString to = QString("CAM%1").arg(i + 2);
        cameras[i]->change(R"({"nodes": {"Width": 480}})");
        ran = run({"clone", "--from", from, "--to", to, "--yes", "--no-audit"});
        EXPECT_EQ(ran.code, 0) << ran;
    }
    EXPECT_EQ(withWidth(480), "12345678");
}

TEST_F(EightCameras, oneThatLeavesInTheMiddleCostsNoOther)
{
    const QString whole = filesIn("whole");
    std::vector<uint64_t> needed;
    for (const emu::Shell* camera : cameras)
        needed.push_back(camera->counters().requests());
    ASSERT_EQ(run({"export", "--to", whole, "--all"}).code, 0);
    for (size_t i = 0; i < cameras.size(); ++i)
        needed[i] = cameras[i]->counters().requests() - needed[i];
    for (const size_t leaving : {size_t(0), size_t(2), size_t(3), size_t(4), size_t(6)}) {
        const QString folderName = filesIn(("export" + std::to_string(leaving)).c_str());
        {
            const Cable cable(*cameras[leaving], afterRequests(*cameras[leaving], needed[leaving] / 2));
            const Ran ran = run({"export", "--to", folderName, "--all"});
            EXPECT_EQ(ran.code, 1) << leaving + 1 << ran;
            EXPECT_TRUE(ran.output.contains("7 exported, 1 failed")) << leaving + 1 << ran;
        }
        for (size_t i = 0; i < cameras.size(); ++i)
            EXPECT_EQ(QFile::exists(fileOf(folderName, i)), i != leaving) << i + 1;
        ASSERT_TRUE(cameras[leaving]->start());
    }
}

TEST_F(EightCameras, oneThatLeavesDuringTheImportsCostsNoOther)
{
    const QString first = filesIn("first");
    ASSERT_EQ(run({"export", "--to", first, "--all"}).code, 0);
    changeAll();
    const size_t leaving = 6; // on the USB
    {
        const Cable cable(*cameras[leaving], whenHeightIs(*cameras[leaving], 480));
        const Ran ran = run({"import", first, "--all", "--verify", "--no-audit"});
        EXPECT_EQ(ran.code, 1) << ran;
    }
    EXPECT_TRUE(withWidth(640).contains("123456")) << withWidth(640).toStdString();
    EXPECT_TRUE(withWidth(640).endsWith("8")) << withWidth(640).toStdString();
}
