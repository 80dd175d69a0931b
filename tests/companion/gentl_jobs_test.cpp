// Exports of cameras behind GenTL producers by the jobs, with producers among them that fail.
#include "camera/GentlStage.h"
#include "camera_emulator/SerialCamera.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"
#include "support/RegisterByRegister.h"

#include <QFile>
#include <QTemporaryDir>

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

TEST_F(GentlJobs, aProducerThatCrashesOrHangsInAnExportEndsItWithoutAFile)
{
    const tests::RegisterByRegister oneByOne;
    for (const char* kind : {"crash", "hang"}) {
        GentlStage own;
        setenv("KX_GENTL_TIMEOUT", "800", 1);
        own.setFaults(std::string("GCReadPort=") + kind + "@60");
        own.addProducer();
        own.addCamera("A");
        const tests::ExportOutcome outcome = tests::exportCamera(recordOf("A"), folder.path());
        EXPECT_TRUE(outcome.file.isNull()) << kind;
        EXPECT_FALSE(QFile::exists(folder.path() + "/EMU-1_A.fpk")) << kind;
    }
}

} // namespace
