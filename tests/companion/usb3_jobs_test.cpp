// Exports and imports over USB3 Vision by the jobs and by the companion, and the emulated camera in the hands
// of a host that is not ours.
#include "camera/UsbFixture.h"
#include "camera_emulator/EmulatedCamera.h"
#include "camera_emulator/SerialCamera.h"
#include "support/LoopbackAddress.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <atomic>
#include <thread>

namespace
{

class Usb3Jobs : public tests::UsbFixture
{
protected:
    static StructDeviceInfo recordOf(const emu::Usb3Camera& camera)
    {
        StructDeviceInfo record;
        record.nDeviceID = 1;
        record.nStatus = 1;
        for (const KX_DeviceEntry& entry : list())
            if (text(entry.info.special.usb3.guid) == camera.guid())
                record.stDeviceInfo = entry.info;
        EXPECT_EQ(record.stDeviceInfo.transportType, uint32_t(KX_TRANSPORT_USB3));
        return record;
    }

    // One camera as it hangs on lines that are used to this byte order; the features file has words as they
    // are in the order of its transport.
    static emu::CameraConfig anyTransport(const char* endianess)
    {
        emu::CameraConfig config;
        const QByteArray text = bytesOf(IE_TEST_DATA "/any_transport.xml");
        config.description = QByteArray(text).replace("@ENDIANESS@", endianess).toStdString();
        config.seed =
            R"({"nodes": {"DeviceFirmwareVersion": "1.4.2", "DeviceLocation": "Line 4", "Width": 640,
            "TestPattern": "Ramp", "ReverseX": true, "ExposureTime": 5000.25, "GainRawReg": 75, "LineSelector": 1,
            "LineDelay0": 5, "LineDelay1": 70000, "LineDelay2": 4294967295, "Signature": 1234605616436508552}})";
        return config;
    }

    struct Ran
    {
        int code = -1;
        QString output;
        QString errors;
    };
    static Ran run(const QString& program, const QStringList& arguments)
    {
        QProcess process;
        process.start(program, arguments);
        EXPECT_TRUE(process.waitForFinished(60000)) << program.toStdString();
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    static QByteArray bytesOf(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    QTemporaryDir folder;
};

TEST_F(Usb3Jobs, anExportIsThatOfTheSameCameraOverGigE)
{
    emu::CameraConfig config = anyTransport("BigEndian");
    config.address = tests::freshLoopbackAddress();
    emu::EmulatedCamera gige(config);
    ASSERT_TRUE(gige.start());
    ASSERT_EQ(gige.seedProblems(), std::vector<std::string>());
    QTemporaryDir gigeFolder;
    const tests::ExportOutcome wanted = tests::exportCamera(config, gigeFolder.path());
    ASSERT_TRUE(wanted.file.contains(">70000</RegValue>")) << wanted.file.toStdString();
    emu::Usb3Camera& usb = add("EMU0001", {}, anyTransport("LittleEndian"));
    ASSERT_EQ(usb.seedProblems(), std::vector<std::string>());
    const tests::ExportOutcome outcome = tests::exportCamera(recordOf(usb), folder.path());
    EXPECT_EQ(outcome.messages, QStringList());
    EXPECT_EQ(outcome.path, folder.path() + "/EMU-1_EMU0001.fpk");
    EXPECT_EQ(outcome.file, wanted.file);
}

TEST_F(Usb3Jobs, anImportBringsTheSettingsBack)
{
    emu::Usb3Camera& camera = add();
    const StructDeviceInfo record = recordOf(camera);
    const tests::ExportOutcome exported = tests::exportCamera(record, folder.path());
    ASSERT_FALSE(exported.file.isEmpty());
    const auto before = camera.node("Width");
    ASSERT_TRUE(before);
    EXPECT_EQ(camera.change(R"({"nodes": {"Width": 320}})"), std::vector<std::string>());
    EXPECT_NE(camera.node("Width"), before);
    const tests::ImportOutcome imported = tests::importFile(record, exported.path);
    EXPECT_EQ(imported.errorCode, 0u);
    EXPECT_EQ(imported.messages, QStringList());
    EXPECT_EQ(camera.node("Width"), before);
}

TEST_F(Usb3Jobs, aCablePulledInAnExportEndsItWithoutAFile)
{
    emu::CameraConfig config;
    config.latency = std::chrono::milliseconds(2); // time to pull it in the middle
    QTemporaryDir wholeFolder;
    emu::Usb3Camera& camera = add("EMU0001", {}, config);
    const StructDeviceInfo record = recordOf(camera);
    ASSERT_FALSE(tests::exportCamera(record, wholeFolder.path()).file.isNull());
    const auto whole = camera.counters().readMem;
    ASSERT_GT(whole, 8u);
    std::atomic<bool> isOver{false};
    std::thread cable([&] {
        while (!isOver && camera.counters().readMem < whole + whole / 2)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        camera.stop();
    });
    const tests::ExportOutcome outcome = tests::exportCamera(record, folder.path());
    isOver = true;
    cable.join();
    EXPECT_TRUE(outcome.file.isNull());
    EXPECT_FALSE(QFile::exists(folder.path() + "/EMU-1_EMU0001.fpk"));
}

// ---- the companion ----

TEST_F(Usb3Jobs, theCompanionListsCamerasWithWhatBecomesOfThem)
{
    emu::Usb3Camera& free = add("A");
    emu::Usb3Camera& taken = add("B");
    const KX_DeviceInfo info = recordOf(taken).stDeviceInfo;
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    const Ran ran = run(IEFEATURES, {"list"});
    EXPECT_EQ(ran.code, 0) << ran.errors.toStdString();
    const QStringList lines = ran.output.split('\n', Qt::SkipEmptyParts).filter("U3V");
    ASSERT_EQ(lines.size(), 2) << ran.output.toStdString();
    EXPECT_TRUE(lines[0].contains("EMU-1")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains(" A ")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains("free")) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].contains(" B ")) << lines[1].toStdString();
    EXPECT_TRUE(lines[1].contains("in use")) << lines[1].toStdString();
    QList<QJsonObject> listed;
    for (const QString& line : run(IEFEATURES, {"list", "--json"}).output.split('\n', Qt::SkipEmptyParts)) {
        const QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
        if (object["kind"] == "camera")
            listed += object["camera"].toObject();
    }
    ASSERT_EQ(listed.size(), 2);
    EXPECT_EQ(listed[0]["transport"].toString(), QString("U3V"));
    EXPECT_EQ(listed[0]["serial"].toString(), QString("A"));
    EXPECT_EQ(KX_CC_DestroyHandle(handle), KX_OK);
    EXPECT_EQ(free.counters().requests(), 0u);
}

TEST_F(Usb3Jobs, theCompanionExportsPlansImportsAndVerifies)
{
    emu::Usb3Camera& camera = add("EMU0001");
    const QString file = folder.path() + "/EMU-1_EMU0001.fpk";
    Ran ran = run(IEFEATURES, {"export", "--to", folder.path(), "--serial", "EMU0001"});
    ASSERT_EQ(ran.code, 0) << ran.errors.toStdString();
    ASSERT_TRUE(QFile::exists(file));
    camera.change(R"({"nodes": {"Width": 320}})");
    ran = run(IEFEATURES, {"plan", file, "--serial", "EMU0001"});
    EXPECT_TRUE(ran.output.contains("Width")) << ran.output.toStdString() << ran.errors.toStdString();
    const auto changed = camera.node("Width");
    ran = run(IEFEATURES, {"import", file, "--serial", "EMU0001", "--verify"});
    EXPECT_EQ(ran.code, 0) << ran.output.toStdString() << ran.errors.toStdString();
    EXPECT_NE(camera.node("Width"), changed);
}

TEST_F(Usb3Jobs, oneBatchTakesCamerasOfAllKindsAndOneDescriptionGivesOneFile)
{
    emu::CameraConfig config = anyTransport("BigEndian");
    config.serial = "GIGE";
    config.address = tests::freshLoopbackAddress();
    emu::EmulatedCamera gige(config);
    ASSERT_TRUE(gige.start());
    qputenv("KX_CAMERA_ADDRESSES", config.address.c_str());
    config = anyTransport("LittleEndian");
    config.serial = "SERIAL";
    emu::SerialConfig line;
    line.link = (folder.path() + "/tty").toStdString(); // umockdev has a /dev of its own
    emu::SerialCamera serial(config, line);
    ASSERT_TRUE(serial.start());
    add("USB", {}, config);
    qputenv("KX_CAMERA_SERIAL_PORTS", line.link.c_str());
    const Ran ran = run(IEFEATURES, {"export", "--to", folder.path(), "--all"});
    EXPECT_EQ(ran.code, 0) << ran.output.toStdString() << ran.errors.toStdString();
    const auto fileOf = [&](const QByteArray& serialNumber) {
        return bytesOf(folder.path() + "/EMU-1_" + serialNumber + ".fpk").replace(serialNumber, "ONE");
    };
    const QByteArray usb = fileOf("USB");
    EXPECT_FALSE(usb.isEmpty());
    EXPECT_EQ(fileOf("GIGE"), usb);
    EXPECT_EQ(fileOf("SERIAL"), usb);
}

// ---- another host ----

TEST_F(Usb3Jobs, anotherHostListsReadsAndWritesTheCamera)
{
    const QString tool = QStandardPaths::findExecutable("arv-tool-0.8");
    if (tool.isEmpty())
        GTEST_SKIP() << "SKIPPED: arv-tool-0.8 is not installed";
    emu::Usb3Camera& camera = add("EMU0001");
    const QString name = QString("Emulated cameras-%1-EMU0001").arg(camera.guid().c_str());
    const QStringList chosen = {"-n", name};
    Ran ran = run(tool, {});
    EXPECT_TRUE(ran.output.contains(name + " (USB3)"))
        << ran.output.toStdString() << ran.errors.toStdString();
    ran = run(tool, chosen + QStringList{"genicam"});
    EXPECT_TRUE(ran.output.contains("<RegisterDescription"))
        << ran.output.left(500).toStdString() << ran.errors.toStdString();
    ran = run(tool, chosen + QStringList{"control", "DeviceFirmwareVersion", "Width=320", "Width"});
    EXPECT_TRUE(ran.output.contains("DeviceFirmwareVersion = 1.2.3"))
        << ran.output.toStdString() << ran.errors.toStdString();
    EXPECT_TRUE(ran.output.contains("Width = 320 ")) << ran.output.toStdString() << ran.errors.toStdString();
    const auto width = camera.node("Width");
    ASSERT_TRUE(width);
    EXPECT_EQ(std::get<int64_t>(*width), 320);
}

} // namespace
