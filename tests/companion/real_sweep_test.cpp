// What is left when any one request of a job goes wrong with cameras that serve the descriptions of real
// ones, from the folder that KX_DESCRIPTIONS names. What a camera has is what an export of it says
// afterwards.
#include "companion/LineCompanion.h"
#include "companion/RealSeed.h"
#include "companion/Sweep.h"
#include "companion/Told.h"
#include "support/OwnDescription.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>

using tests::Names;
using tests::Result;
using tests::runInProcess;
using tests::Sweep;
using tests::SweptJob;
using tests::Told;

namespace
{

constexpr int kFewDescriptions = 2; // that are tried where not all are
constexpr size_t kFewRuns = 0;
constexpr qint64 kFirstOwnRegister = 0xB000; // below are control, heartbeat and addresses

// Firmware and model; `salt` other than 0: small numbers that hang on it in every register.
std::string seedOf(const QString& description, unsigned salt)
{
    QFile file(description);
    tests::OwnDescription own;
    EXPECT_TRUE(file.open(QIODevice::ReadOnly) && own.index.index(QString::fromUtf8(file.readAll())));
    const QJsonObject identity =
        QJsonDocument::fromJson(tests::seedFor(own.nodes)).object()["nodes"].toObject();
    QJsonObject nodes;
    for (auto it = own.nodes.cbegin(); it != own.nodes.cend() && salt != 0; ++it) {
        const qint64 address = it->firstChildElement("Address").text().toLongLong(nullptr, 0);
        if (it->tagName() == "IntReg" && address >= kFirstOwnRegister)
            nodes[it.key()] = int(qHash(it.key(), salt) % 3);
    }
    for (auto it = identity.begin(); it != identity.end(); ++it)
        nodes[it.key()] = it.value();
    return QJsonDocument(QJsonObject{{"nodes", nodes}}).toJson().toStdString();
}

using Blocks = std::map<std::string, QByteArray>; // of a features file, by the feature's name

Blocks blocksOf(const QByteArray& text)
{
    Blocks blocks;
    const QByteArray begin("<Feature>");
    for (int at = text.indexOf(begin); at >= 0;) {
        const int next = text.indexOf(begin, at + begin.size());
        const QByteArray block = text.mid(at, next < 0 ? -1 : next - at);
        const int name = block.indexOf("<Name>") + 6;
        blocks[block.mid(name, block.indexOf("</Name>") - name).toStdString()] += block;
        at = next;
    }
    return blocks;
}

Names differencesOf(const Blocks& a, const Blocks& b)
{
    Names names;
    for (const auto& [name, block] : a)
        if (b.count(name) == 0 || b.at(name) != block)
            names.insert(name);
    for (const auto& [name, block] : b)
        if (a.count(name) == 0)
            names.insert(name);
    return names;
}

// Without the comments of a bag, which say who has written it for which camera.
QByteArray settingsIn(const QByteArray& text)
{
    QByteArrayList lines;
    for (const QByteArray& line : text.split('\n'))
        if (!line.startsWith('#'))
            lines += line;
    return lines.join('\n');
}

class RealSweepStage : public tests::LineOfCameras
{
public:
    // False: no features file can be made of it, or its settings cannot be changed.
    bool tryDescription(const QString& description);

private:
    void TestBody() override {}

    // The settings of a camera with other contents of its memory, as far as this one takes them. False: it
    // does not take them twice.
    bool findGoals(const QString& description);
    SweptJob exportOf(const std::string& format);
    SweptJob importOf(const std::string& format);

    // As when its power comes.
    void switchOn()
    {
        m_camera->stop();
        m_camera->switchOff();
        ASSERT_TRUE(m_camera->start());
    }

    // Empty: it cannot be reached, or has no firmware version.
    QByteArray fileNow(const std::string& serial = "S1", const std::string& format = "xml")
    {
        QDir now(QString::fromStdString(path("now")));
        now.removeRecursively();
        now.mkpath(".");
        const Result run =
            runInProcess({"export", "--serial", serial, "--to", path("now"), "--format", format});
        m_name =
            now.entryList(QDir::Files).value(0).toStdString(); // the description may say the model's name
        return run.code == 0 ? fileText("now/" + m_name) : QByteArray();
    }

    Result importOfGoal(const std::string& format) const
    {
        return runInProcess({"import", path("goal." + format), "--serial", "S1", "--json", "--no-audit"});
    }

    std::vector<std::string> objections(const Result& run, const Blocks& goal);

    emu::EmulatedCamera* m_camera = nullptr;
    std::string m_name;                    // of the file that was exported last
    Blocks m_low;                          // what it has when its power comes
    std::map<std::string, Blocks> m_goals; // what it has behind an import of each format
    Names m_written;                       // what an import without trouble tells as changed
};

SweptJob RealSweepStage::exportOf(const std::string& format)
{
    switchOn();
    const QByteArray right = settingsIn(fileNow("S1", format));
    const std::string name = "to/" + m_name;
    return {"export of " + format,
            [this, name] {
                switchOn();
                write(name, "old");
            },
            [this, format] {
                return runInProcess(
                    {"export", "--serial", "S1", "--to", path("to"), "--format", format, "--json"});
            },
            [this, name, right](const Result& run) {
                const QByteArray now = settingsIn(fileText(name));
                std::vector<std::string> found;
                if (run.code == 0 && now != right)
                    found.push_back("a file that is not right was called good");
                if (run.code != 0 && run.code != 4 && now != right && now != "old")
                    found.push_back("a part of a file was left");
                return found;
            }};
}

SweptJob RealSweepStage::importOf(const std::string& format)
{
    return {"import of " + format, [this] { switchOn(); }, [this, format] { return importOfGoal(format); },
            [this, format](const Result& run) { return objections(run, m_goals.at(format)); }};
}

std::vector<std::string> RealSweepStage::objections(const Result& run, const Blocks& goal)
{
    m_camera->setFaults({});
    m_camera->releaseControl();
    const QByteArray text = fileNow();
    if (text.isEmpty())
        return {}; // it has moved
    const Blocks now = blocksOf(text);
    const Told told = tests::toldBy(run);
    std::vector<std::string> found;
    if (run.code == 0 && now != goal)
        found.push_back("called set, but for " + ::testing::PrintToString(differencesOf(now, goal)));
    const Names changed = differencesOf(now, m_low);
    for (const std::string& name : changed)
        if (m_written.count(name) != 0 && told.changed.count(name) + told.inDoubt.count(name) == 0)
            found.push_back(name + " was changed, and is not told");
    for (const std::string& name : told.changed) // of a camera that is lost nothing is known
        if (changed.count(name) + told.notApplied.count(name) == 0 && m_low.count(name) != 0 && run.code != 1)
            found.push_back(name + " was not changed, and is told");
    return found;
}

bool RealSweepStage::findGoals(const QString& description)
{
    addCamera("S2", [&](emu::CameraConfig& config) {
        config.descriptionFile = description.toStdString();
        config.seed = seedOf(description, 7);
    });
    const QByteArray other = fileNow("S2");
    write("goal.xml", other);
    importOfGoal("xml");
    write("goal.xml", fileNow());
    write("goal.bag", fileNow("S1", "bag"));
    bool areTaken = !other.isEmpty();
    for (const char* format : {"xml", "bag"}) {
        switchOn();
        const Result run = importOfGoal(format);
        areTaken = areTaken && run.code == 0;
        m_goals[format] = blocksOf(fileNow());
        m_written.merge(tests::toldBy(run).changed);
    }
    switchOn();
    return areTaken && !m_written.empty();
}

bool RealSweepStage::tryDescription(const QString& description)
{
    QDir().mkpath(QString::fromStdString(path("to")));
    m_camera = &addCamera("S1", [&](emu::CameraConfig& config) {
        config.descriptionFile = description.toStdString();
        config.seed = seedOf(description, 0);
    });
    switchOn();
    m_low = blocksOf(fileNow());
    if (m_low.empty() || !findGoals(description))
        return false;
    std::printf("%s: %zu changed\n", qPrintable(QFileInfo(description).fileName()), m_written.size());
    Sweep sweep(*m_camera);
    for (const char* format : {"xml", "bag"}) {
        sweep.over(exportOf(format), kFewRuns);
        sweep.over(importOf(format), kFewRuns);
    }
    sweep.printSums();
    return true;
}

} // namespace

TEST(RealSweep, LeavesWhatItTells)
{
    const QDir folder(qEnvironmentVariable("KX_DESCRIPTIONS"));
    if (!qEnvironmentVariableIsSet("KX_DESCRIPTIONS")) {
        std::puts("SKIPPED: KX_DESCRIPTIONS names no folder with descriptions.");
        GTEST_SKIP();
    }
    int tried = 0;
    for (const QString& name : folder.entryList({"*.xml"}, QDir::Files, QDir::Size | QDir::Reversed)) {
        SCOPED_TRACE(name.toStdString());
        if (qEnvironmentVariableIsSet("KX_SWEEP") || tried < kFewDescriptions)
            tried += RealSweepStage().tryDescription(folder.filePath(name));
    }
    EXPECT_GE(tried, kFewDescriptions)
        << "of the others no features file can be made, or none that is taken whole";
}
