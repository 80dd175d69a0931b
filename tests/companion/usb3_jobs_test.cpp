// USB3 Vision cameras in the hands of the companion, and of a host that is not ours.
#include "camera/UsbFixture.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"
#include "support/RunProgram.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>

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

    QTemporaryDir folder;
};

TEST_F(Usb3Jobs, theCompanionListsCamerasWithWhatBecomesOfThem)
{
    emu::Usb3Camera& free = add("A");
    emu::Usb3Camera& taken = add("B");
    const KX_DeviceInfo info = recordOf(taken).stDeviceInfo;
    KX_HANDLE handle = nullptr;
    ASSERT_EQ(KX_CC_CreateHandle(&handle, &info), KX_OK);
    ASSERT_EQ(KX_CC_OpenDevice(handle, KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    const tests::Ran ran = tests::runProgram(IEFEATURES, {"list"});
    EXPECT_EQ(ran.code, 0) << ran.errors.toStdString();
    const QStringList lines = ran.output.split('\n', Qt::SkipEmptyParts).filter("U3V");
    ASSERT_EQ(lines.size(), 2) << ran.output.toStdString();
    EXPECT_TRUE(lines[0].contains("EMU-1")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains(" A ")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains("free")) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].contains(" B ")) << lines[1].toStdString();
    EXPECT_TRUE(lines[1].contains("in use")) << lines[1].toStdString();
    QList<QJsonObject> listed;
    for (const QString& line :
         tests::runProgram(IEFEATURES, {"list", "--json"}).output.split('\n', Qt::SkipEmptyParts)) {
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
    tests::Ran ran = tests::runProgram(IEFEATURES, {"export", "--to", folder.path(), "--serial", "EMU0001"});
    ASSERT_EQ(ran.code, 0) << ran.errors.toStdString();
    ASSERT_TRUE(QFile::exists(file));
    camera.change(R"({"nodes": {"Width": 320}})");
    ran = tests::runProgram(IEFEATURES, {"plan", file, "--serial", "EMU0001"});
    EXPECT_TRUE(ran.output.contains("Width")) << ran.output.toStdString() << ran.errors.toStdString();
    const auto changed = camera.node("Width");
    ran = tests::runProgram(IEFEATURES, {"import", file, "--serial", "EMU0001", "--verify"});
    EXPECT_EQ(ran.code, 0) << ran.output.toStdString() << ran.errors.toStdString();
    EXPECT_NE(camera.node("Width"), changed);
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
    tests::Ran ran = tests::runProgram(tool, {});
    EXPECT_TRUE(ran.output.contains(name + " (USB3)"))
        << ran.output.toStdString() << ran.errors.toStdString();
    ran = tests::runProgram(tool, chosen + QStringList{"genicam"});
    EXPECT_TRUE(ran.output.contains("<RegisterDescription"))
        << ran.output.left(500).toStdString() << ran.errors.toStdString();
    ran = tests::runProgram(tool,
                            chosen + QStringList{"control", "DeviceFirmwareVersion", "Width=320", "Width"});
    EXPECT_TRUE(ran.output.contains("DeviceFirmwareVersion = 1.2.3"))
        << ran.output.toStdString() << ran.errors.toStdString();
    EXPECT_TRUE(ran.output.contains("Width = 320 ")) << ran.output.toStdString() << ran.errors.toStdString();
    const auto width = camera.node("Width");
    ASSERT_TRUE(width);
    EXPECT_EQ(std::get<int64_t>(*width), 320);
}

} // namespace
