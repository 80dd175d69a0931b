// A companion that is killed at any moment of a batch leaves whole files, or none.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QDirIterator>

#include <csignal>
#include <cstdlib>
#include <random>
#include <thread>

using nlohmann::json;
using tests::Arguments;
using tests::Program;

namespace
{

// 200 with KX_SWEEP=all.
int runs()
{
    const char* all = std::getenv("KX_SWEEP");
    return all != nullptr && std::string(all) == "all" ? 200 : 20;
}

class Killed : public tests::ImportCompanion
{
protected:
    Killed()
    {
        for (const char* serial : {"S1", "S2"})
            addCamera(serial,
                      [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(1); });
        m_right = fileText(exported("S1"));
        QDir().mkdir(QString::fromStdString(path("to")));
        QDir().mkdir(QString::fromStdString(path("snapshots")));
    }

    // At any moment of the first third of a second, which is more than such a run takes.
    void runAndKill(const Arguments& arguments)
    {
        Program program(arguments);
        program.start();
        std::this_thread::sleep_for(std::chrono::microseconds(m_random() % 330000));
        program.signal(SIGKILL);
        program.process().waitForFinished();
        for (emu::EmulatedCamera& camera : cameras())
            camera.releaseControl();
    }

    // Files that look like results below the folder, and their contents.
    std::map<std::string, QByteArray> results(const std::string& name) const
    {
        std::map<std::string, QByteArray> found;
        QDirIterator files(QString::fromStdString(path(name)), {"*.fpk"}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            found[file.fileName().toStdString()] = file.readAll();
        }
        return found;
    }

    std::mt19937 m_random{20261122};
    QByteArray m_right;
};

} // namespace

TEST_F(Killed, AnExportLeavesTheOldFileOrTheNewOne)
{
    int written = 0;
    for (int run = 0; run < runs(); ++run) {
        write("to/EMU-1_S1.fpk", "old");
        runAndKill({"export", "--all", "--to", path("to")});
        for (const auto& [name, text] : results("to")) {
            EXPECT_TRUE(text == "old" || text == m_right)
                << name << ' ' << text.size() << " bytes, run " << run;
            written += text == m_right ? 1 : 0;
        }
    }
    EXPECT_GT(written, 0) << "none came to its end";
}

TEST_F(Killed, AnImportLeavesWholeSnapshotsAndAuditLines)
{
    write("a.fpk", m_right);
    for (int run = 0; run < runs(); ++run) {
        for (emu::EmulatedCamera& camera : cameras())
            ASSERT_EQ(camera.setNode("Height", int64_t(16 + run % 8)), "");
        runAndKill({"import", path("a.fpk"), "--all", "--snapshot", path("snapshots")});
    }
    for (const auto& [name, text] : results("snapshots"))
        EXPECT_TRUE(name.find("/bag/") != std::string::npos || text.endsWith("</FeaturesFile>")) << name;
    const QByteArray log = fileText("user-data/Audit/iefeatures.jsonl");
    EXPECT_FALSE(log.isEmpty());
    for (const QByteArray& line : log.trimmed().split('\n'))
        EXPECT_FALSE(json::parse(line.toStdString(), nullptr, false).is_discarded()) << line.toStdString();
}
