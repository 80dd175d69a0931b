// Batches of the companion over cameras of every transport at once.
#include "support/AllTransports.h"
#include "support/Cable.h"
#include "support/FileBytes.h"
#include "support/QtPrinting.h"
#include "support/RunProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using tests::afterRequests;
using tests::Cable;
using tests::Ran;
using tests::Transport;
using tests::whenHeightIs;

namespace
{

Ran run(const QStringList& arguments)
{
    return tests::runProgram(IEFEATURES, arguments);
}

const Transport kPairs[] = {Transport::Gige,  Transport::Gige,  Transport::Serial, Transport::Clser,
                            Transport::GenTl, Transport::GenTl, Transport::Usb3,   Transport::Usb3};

// Two of each kind; of the serial ones one hangs on a terminal and one on a grabber's port.
class EightCameras : public testing::Test
{
protected:
    explicit EightCameras(std::chrono::milliseconds latency = {})
    {
        qputenv("VELA_PROGRAM_DATA", folder.path().toLocal8Bit());
        qputenv("KX_GENTL_TIMEOUT", "3000");
        for (size_t i = 0; i < std::size(kPairs); ++i) {
            emu::CameraConfig config;
            config.serial = "CAM" + std::to_string(i + 1);
            config.latency = latency;
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

// Slow enough for one to leave in the middle.
class EightSlowCameras : public EightCameras
{
protected:
    EightSlowCameras() : EightCameras(std::chrono::milliseconds(1)) {}
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
        EXPECT_EQ(tests::bytesOf(fileOf(again, i)), tests::bytesOf(fileOf(first, i))) << i + 1;
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

// Words of registers would be turned, and GigE Vision's own features have no meaning elsewhere.
TEST_F(EightCameras, areClonedFromToThoseOfTheirKindOnly)
{
    for (const size_t from : {size_t(0), size_t(3), size_t(6)}) {
        cameras[from]->change(R"({"nodes": {"Width": 480}})");
        const Ran ran =
            run({"clone", "--from", QString("CAM%1").arg(from + 1), "--all", "--yes", "--no-audit"});
        EXPECT_EQ(ran.code, 5) << ran;
        cameras[from]->change(R"({"nodes": {"Width": 640}})");
        const QString alike = withWidth(480);
        EXPECT_EQ(alike, from == 0 ? "2" : from == 3 ? "356" : "8") << ran;
        EXPECT_EQ(ran.output.count("registers are in the order of their transport."), 7 - alike.size())
            << ran;
        EXPECT_EQ(ran.errors.count("registers are in the order of their transport."), 7 - alike.size())
            << ran;
        for (emu::Shell* camera : cameras)
            camera->change(R"({"nodes": {"Width": 640}})");
    }
}

TEST_F(EightSlowCameras, oneThatLeavesInTheMiddleCostsNoOther)
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
        cameras[leaving]->setFaults({});
        ASSERT_TRUE(cameras[leaving]->start());
    }
}

TEST_F(EightSlowCameras, oneThatLeavesDuringTheImportsCostsNoOther)
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
