// The export of the emulator's own camera, byte for byte and line for line, against what was worked out from
// its description (tests/data/emulator_export.md).
#include "camera_emulator/EmulatedCamera.h"
#include "support/FileBytes.h"
#include "support/LoopbackAddress.h"
#include "support/QtPrinting.h"
#include "support/RealExport.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace
{

QByteArray expected(const char* name)
{
    return tests::bytesOf(QString(IE_TEST_DATA) + "/" + name);
}

// The first line that differs with the three before it; empty when the bytes are the same.
QByteArray difference(const QByteArray& actual, const QByteArray& wanted)
{
    if (actual == wanted)
        return {};
    const QList<QByteArray> is = actual.split('\n');
    const QList<QByteArray> shouldBe = wanted.split('\n');
    int line = 0;
    while (line < is.size() && line < shouldBe.size() && is[line] == shouldBe[line])
        ++line;
    QByteArray text = "line " + QByteArray::number(line + 1) + ", after\n";
    for (int before = std::max(0, line - 3); before < line; ++before)
        text += "    " + is[before] + "\n";
    return text + "  is        " + is.value(line, "(nothing)") + "\n  should be " +
           shouldBe.value(line, "(nothing)");
}

class EmulatorExport : public testing::Test
{
protected:
    EmulatorExport()
    {
        config.address = tests::freshLoopbackAddress();
        camera = std::make_unique<emu::EmulatedCamera>(config);
        const auto started = camera->start();
        EXPECT_TRUE(started) << started.message;
        EXPECT_EQ(camera->seedProblems(), std::vector<std::string>());
    }

    emu::CameraConfig config;
    std::unique_ptr<emu::EmulatedCamera> camera;
    QTemporaryDir folder;
};

} // namespace

TEST_F(EmulatorExport, writesTheFileThatWasWorkedOut)
{
    const tests::ExportOutcome outcome = tests::exportCamera(config, folder.path());
    EXPECT_EQ(outcome.messages, QStringList());
    EXPECT_EQ(outcome.path, folder.path() + "/EMU-1_EMU0001.fpk");
    EXPECT_EQ(difference(outcome.file, expected("emulator_export.fpk")), QByteArray());
}

TEST_F(EmulatorExport, logsWhatKeepsFeaturesOutInTheOrderOfTheVisit)
{
    const tests::ExportOutcome outcome = tests::exportCamera(config, folder.path());
    EXPECT_EQ(difference(outcome.log.join('\n').toUtf8() + '\n', expected("emulator_export.log")),
              QByteArray());
}

TEST_F(EmulatorExport, isTheSameFromTheCompanion)
{
    qputenv("KX_CAMERA_ADDRESSES", config.address.c_str());
    qputenv("VELA_PROGRAM_DATA", folder.path().toLocal8Bit());
    const QString logFile = folder.path() + "/log";
    QProcess companion;
    companion.start(IEFEATURES,
                    {"export", "--to", folder.path(), "--address", config.address.c_str(), "--log", logFile});
    ASSERT_TRUE(companion.waitForFinished());
    EXPECT_EQ(companion.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(companion.exitCode(), 0) << companion.readAllStandardError().toStdString();
    EXPECT_EQ(
        difference(tests::bytesOf(folder.path() + "/EMU-1_EMU0001.fpk"), expected("emulator_export.fpk")),
        QByteArray());

    // A line is a time, a level and, in quotes, the text.
    QString messages = tests::bytesOf(logFile);
    messages.replace(QRegularExpression("^\\S+ critical \"(.*)\"$", QRegularExpression::MultilineOption),
                     "\\1");
    EXPECT_EQ(difference(messages.toUtf8(), expected("emulator_export.log")), QByteArray());
}

TEST_F(EmulatorExport, leavesTheCameraFreeAndAsItWas)
{
    const emu::Bytes before = camera->peek(0x10000, 0x10000);
    tests::exportCamera(config, folder.path());
    EXPECT_FALSE(camera->isControlled());
    EXPECT_EQ(camera->counters().settingWrites, 0u);
    EXPECT_TRUE(camera->peek(0x10000, 0x10000) == before);
}
