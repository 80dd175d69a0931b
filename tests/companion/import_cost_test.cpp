// What an import costs on the camera library.
#include "camera_emulator/EmulatedCamera.h"
#include "support/LoopbackAddress.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{

// Calls that are over, on all handles made while this lives.
struct Calls
{
    Calls() { KX_CC_SetCallObserver(nullptr, &Calls::take, this); }
    ~Calls() { KX_CC_SetCallObserver(nullptr, nullptr, nullptr); }

    int values = 0; // features read
    int registers = 0;
    int writes = 0;

private:
    static int take(void* user, const KX_CallEvent* event)
    {
        auto& calls = *static_cast<Calls*>(user);
        const uint32_t operation = event->operation;
        if (event->finished) {
            calls.values += operation >= KX_OP_GET_BOOL && operation <= KX_OP_GET_STRING;
            calls.registers += operation == KX_OP_READ_MEMORY;
            calls.writes += operation == KX_OP_WRITE_MEMORY ||
                            (operation >= KX_OP_SET_BOOL && operation <= KX_OP_EXECUTE);
        }
        return 0;
    }
};

// DeviceScanType, BoardDeviceType and DeviceFirmwareVersion.
constexpr int kReadsOfChecks = 3;

// The emulated camera's export without what no import settles or even reads.
class ImportCost : public testing::Test
{
protected:
    ImportCost()
    {
        config.address = tests::freshLoopbackAddress();
        camera = std::make_unique<emu::EmulatedCamera>(config);
        const auto started = camera->start();
        EXPECT_TRUE(started) << started.message;
        QString text = QString::fromUtf8(tests::exportCamera(config, folder.path()).file);
        const char* const left[] = {
            "BoardTemperature",  "ChannelNoise",   "ExposureTimeRaw", "ImageBitDepth", // nobody may write
            "UnalignedPosition", "UnalignedScale", "UnalignedShort",                   // addresses
            "StatusOfCounter", // its register is a structure's, which is no node
            "WideScale",       // several words behind a converter never compare equal
        };
        for (const char* name : left)
            remove(text, QString("<ComplexFeature name=\"%1\".*?</ComplexFeature>\r\n").arg(name));
        plain = text.count("<Feature>");
        entries = text.count("<RegValue ");
        file = folder.path() + "/file";
        QFile out(file);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly) && out.write(text.toUtf8()) > 0);
    }

    static void remove(QString& text, const QString& pattern)
    {
        const QRegularExpression form(pattern, QRegularExpression::DotMatchesEverythingOption);
        EXPECT_EQ(text.count(form), 1) << pattern.toStdString();
        text.remove(form);
    }

    emu::CameraConfig config;
    std::unique_ptr<emu::EmulatedCamera> camera;
    QTemporaryDir folder;
    QString file;
    int plain = 0;
    int entries = 0;
};

} // namespace

TEST_F(ImportCost, IsOneReadAFeatureOrEntryAndNoWriteWhenNothingDiffers)
{
    ASSERT_GT(plain, 50);
    ASSERT_GT(entries, 50);
    const Calls calls;
    tests::importFile(config, file);
    EXPECT_EQ(calls.values, plain + kReadsOfChecks);
    EXPECT_EQ(calls.registers, entries);
    EXPECT_EQ(calls.writes, 0);
    EXPECT_EQ(camera->counters().settingWrites, 0u);
}

// Plain features of which none hinders another, and every register entry.
TEST_F(ImportCost, IsTheReadsOfTwoCyclesWhenEverythingThatIsIndependentDiffers)
{
    QFile out(file);
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(out.readAll());
    auto addresses = QRegularExpression("address=\"(\\d+)\"").globalMatch(text);
    QSet<uint32_t> changed;
    while (addresses.hasNext())
        changed.insert(addresses.next().captured(1).toUInt());
    for (const uint32_t address : changed)
        camera->pokeWord(address, camera->peekWord(address) ^ 1);
    for (const char* name : {"AcquisitionFrameCount", "Height", "TestPattern", "TestPatternSeed"})
        ASSERT_EQ(camera->setNode(name, std::get<int64_t>(*camera->node(name)) ^ 1), "");

    const Calls calls;
    tests::importFile(config, file);
    EXPECT_EQ(calls.values, 2 * plain + kReadsOfChecks);
    EXPECT_EQ(calls.registers, 2 * entries);
    EXPECT_EQ(calls.writes, changed.size() + 4);
}
