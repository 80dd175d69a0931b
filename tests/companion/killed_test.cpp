// A companion that is killed at any moment of a batch leaves whole files, or none.
#include "companion/ImportCompanion.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QDirIterator>

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

    void runAndKill(const Arguments& arguments)
    {
        Program program(arguments);
        program.start();
        std::this_thread::sleep_for(std::chrono::microseconds(m_random() % m_within.count()));
        program.process().kill();
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

    // Half of the moments lie before the result and half behind it, however quick the machine is.
    void learn(bool hadResult)
    {
        m_hadResult = m_hadResult || hadResult;
        m_within = hadResult ? m_within * 4 / 5 : m_within * 6 / 5;
    }

    // Of 20 runs on a busy machine the range may still be growing.
    bool goesOn(int run) const { return run < runs() || (!m_hadResult && run < 10 * runs()); }

    std::mt19937 m_random{20261122};
    std::chrono::microseconds m_within{330000};
    bool m_hadResult = false;
    QByteArray m_right;
};

} // namespace

TEST_F(Killed, AnExportLeavesTheOldFileOrTheNewOne)
{
    for (int run = 0; goesOn(run); ++run) {
        write("to/EMU-1_S1.fpk", "old");
        runAndKill({"export", "--all", "--to", path("to")});
        std::map<std::string, QByteArray> found = results("to");
        for (const auto& [name, text] : found)
            EXPECT_TRUE(text == "old" || text == m_right)
                << name << ' ' << text.size() << " bytes, run " << run;
        learn(found[path("to/EMU-1_S1.fpk")] == m_right);
    }
    EXPECT_TRUE(m_hadResult) << "none came to its end";
}

TEST_F(Killed, AnImportLeavesWholeSnapshotsAndAuditLines)
{
    write("a.fpk", m_right);
    const auto audit = [this] {
        QFile log(QString::fromStdString(path("user-data/Audit/iefeatures.jsonl")));
        return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    };
    for (int run = 0; goesOn(run); ++run) {
        const int before = audit().size();
        for (emu::EmulatedCamera& camera : cameras())
            ASSERT_EQ(camera.setNode("Height", int64_t(16 + run % 8)), "");
        runAndKill({"import", path("a.fpk"), "--all", "--snapshot", path("snapshots")});
        learn(audit().size() > before);
    }
    for (const auto& [name, text] : results("snapshots"))
        EXPECT_TRUE(name.find("/bag/") != std::string::npos || text.endsWith("</FeaturesFile>")) << name;
    EXPECT_TRUE(m_hadResult) << "none left an audit line";
    for (const QByteArray& line : audit().trimmed().split('\n'))
        EXPECT_FALSE(json::parse(line.toStdString(), nullptr, false).is_discarded()) << line.toStdString();
}
