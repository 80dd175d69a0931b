// Exports and imports of cameras behind GenTL producers by the jobs and by the companion, with producers
// among them that fail.
#include "camera/GentlStage.h"
#include "camera_emulator/SerialCamera.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <QFile>
#include <QTemporaryDir>

#include <thread>

namespace
{

class GentlJobs : public testing::Test
{
protected:
    GentlJobs()
    {
        setenv("KX_GENTL_TIMEOUT", "3000", 1);
        unsetenv("KX_CAMERA_SERIAL_PORTS");
    }

    static StructDeviceInfo recordOf(const std::string& serial)
    {
        KX_DeviceEntry entries[16];
        uint32_t count = 0;
        EXPECT_EQ(KX_CC_EnumDevices(KX_TRANSPORT_ALL, entries, 16, &count), KX_OK);
        StructDeviceInfo record;
        record.nDeviceID = 1;
        record.nStatus = 1;
        for (uint32_t i = 0; i < count; ++i)
            if (reinterpret_cast<const char*>(entries[i].info.special.cameraLink.serialNumber) == serial)
                record.stDeviceInfo = entries[i].info;
        EXPECT_EQ(record.stDeviceInfo.transportType, uint32_t(KX_TRANSPORT_CAMERA_LINK)) << serial;
        return record;
    }

    GentlStage stage;
    QTemporaryDir folder;
};

TEST_F(GentlJobs, anExportIsThatOfTheSameCameraBehindASerialLine)
{
    stage.addProducer();
    stage.addCamera("GENTL");
    emu::CameraConfig config;
    config.serial = "LINE";
    emu::SerialConfig line;
    line.link = (stage.folder() / "tty").string();
    emu::SerialCamera serial(config, line);
    ASSERT_TRUE(serial.start());
    setenv("KX_CAMERA_SERIAL_PORTS", line.link.c_str(), 1);
    const tests::ExportOutcome wanted = tests::exportCamera(recordOf("LINE"), folder.path());
    ASSERT_FALSE(wanted.file.isEmpty());
    const tests::ExportOutcome outcome = tests::exportCamera(recordOf("GENTL"), folder.path());
    EXPECT_EQ(outcome.messages, QStringList());
    EXPECT_EQ(outcome.path, folder.path() + "/EMU-1_GENTL.fpk");
    EXPECT_EQ(QByteArray(outcome.file).replace("GENTL", "LINE"), wanted.file);
    unsetenv("KX_CAMERA_SERIAL_PORTS");
}

TEST_F(GentlJobs, anImportBringsTheSettingsBack)
{
    stage.addProducer();
    emu::GrabberCamera& camera = stage.addCamera("A");
    const StructDeviceInfo record = recordOf("A");
    const tests::ExportOutcome exported = tests::exportCamera(record, folder.path());
    ASSERT_FALSE(exported.file.isEmpty());
    const auto before = camera.node("Width");
    EXPECT_EQ(camera.change(R"({"nodes": {"Width": 320}})"), std::vector<std::string>());
    ASSERT_NE(camera.node("Width"), before);
    const tests::ImportOutcome imported = tests::importFile(record, exported.path);
    EXPECT_EQ(imported.errorCode, 0u);
    EXPECT_EQ(imported.messages, QStringList());
    EXPECT_EQ(camera.node("Width"), before);
}

TEST_F(GentlJobs, aProducerThatCrashesOrHangsInAnExportEndsItWithoutAFile)
{
    for (const char* kind : {"crash", "hang"}) {
        GentlStage own;
        setenv("KX_GENTL_TIMEOUT", "800", 1);
        own.setFaults(std::string("GCReadPort=") + kind + "@40");
        own.addProducer();
        own.addCamera("A");
        const tests::ExportOutcome outcome = tests::exportCamera(recordOf("A"), folder.path());
        EXPECT_TRUE(outcome.file.isNull()) << kind;
        EXPECT_FALSE(QFile::exists(folder.path() + "/EMU-1_A.fpk")) << kind;
    }
}

TEST_F(GentlJobs, aCablePulledInAnExportEndsItWithoutAFile)
{
    stage.addProducer();
    emu::CameraConfig config;
    config.latency = std::chrono::milliseconds(2);
    emu::GrabberCamera& camera = stage.addCamera("A", {}, {}, config);
    const StructDeviceInfo record = recordOf("A");
    std::thread cable([&] {
        while (camera.counters().readMem < 100)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        camera.stop();
    });
    const tests::ExportOutcome outcome = tests::exportCamera(record, folder.path());
    cable.join();
    EXPECT_TRUE(outcome.file.isNull());
    EXPECT_FALSE(QFile::exists(folder.path() + "/EMU-1_A.fpk"));
}

} // namespace
