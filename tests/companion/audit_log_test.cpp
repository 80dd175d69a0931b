#include "companion/ImportCompanion.h"
#include "iefeatures/console/OperatingSystem.h"
#include "iefeatures/imports/AuditLog.h"

#include "jobs/rules/JobMemory.h"

#include <nlohmann/json.hpp>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QSysInfo>

#include <new>
#include <sstream>
#include <thread>

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Result;

namespace
{

QString sha256(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

class Audit : public tests::ImportCompanion
{
protected:
    static QString logFile() { return companion::auditPath({}); }
    static QString logFolder() { return QFileInfo(logFile()).path(); }

    static QByteArray logText()
    {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static std::vector<json> lines(const QByteArray& log, const char* event)
    {
        std::vector<json> found;
        QByteArrayList texts = log.split('\n');
        EXPECT_EQ(texts.takeLast(), ""); // every line has its end
        for (const QByteArray& text : texts)
            if (json line = json::parse(text.toStdString()); line["event"] == event)
                found.push_back(line);
        return found;
    }
    // Of what has ended.
    static std::vector<json> lines() { return lines(logText(), "ends"); }
};

} // namespace

TEST_F(Audit, TellsWhenWhoWhatWhichCameraAndWhatChanged)
{
    emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.userName = "Gate 3"; });
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(camera.setNode("TestPattern", int64_t(1)), "");
    camera.pokeWord(77824, 7); // the gain of the first channel
    const QDateTime before = QDateTime::currentDateTimeUtc();
    ASSERT_EQ(import(file).code, 0);

    ASSERT_EQ(lines().size(), 1u);
    const json line = lines().front();
    const QString time = QString::fromStdString(line["time"]);
    EXPECT_TRUE(time.endsWith('Z')) << time.toStdString();
    const QDateTime told = QDateTime::fromString(time, Qt::ISODateWithMs);
    EXPECT_GE(told, before.addMSecs(-1));
    EXPECT_LE(told, QDateTime::currentDateTimeUtc());
    EXPECT_EQ(line["user"], companion::loginName().toStdString());
    EXPECT_NE(line["user"], "");
    EXPECT_EQ(line["host"], QSysInfo::machineHostName().toStdString());
    EXPECT_EQ(line["command"], "import");
    EXPECT_EQ(line["files"],
              (json{{{"path", path(file)}, {"sha256", sha256(fileText(file)).toStdString()}}}));
    const std::string description = sha256(QByteArray::fromStdString(camera.description())).toStdString();
    EXPECT_EQ(line["camera"], (json{{"transport", "GigE"},
                                    {"model", "EMU-1"},
                                    {"serial", "S1"},
                                    {"name", "Gate 3"},
                                    {"address", camera.config().address},
                                    {"firmware", "1.2.3"},
                                    {"description_sha256", description}}));
    EXPECT_EQ(line["changes"],
              (json{{{"feature", "TestPattern"}, {"from", "1"}, {"to", "2"}},
                    {{"feature", "Height"}, {"from", "16"}, {"to", "480"}},
                    {{"feature", "Gain"}, {"register", 77824}, {"from", "00000007"}, {"to", "00000064"}}}));
    EXPECT_EQ(line["not_applied"], json::array());
    EXPECT_EQ(line["snapshot"], nullptr);
    EXPECT_EQ(line["outcome"], "applied");
    EXPECT_EQ(line["exit"], 0);
}

TEST_F(Audit, HasALineForEachCameraAndKeepsTheOldOnes)
{
    addCamera("S1");
    addCamera("S2", [](emu::CameraConfig& config) { config.model = "Other"; });
    const std::string file =
        altered(exported("S1"), feature("Width", "Integer", "640"), feature("Width", "Integer", "64000"));
    EXPECT_EQ(import(file).code, 5);
    EXPECT_EQ(import(file, {"--serial", "S1"}).code, 4);
    const std::vector<json> all = lines();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0]["camera"]["serial"], "S1");
    EXPECT_EQ(all[0]["outcome"], "incomplete");
    EXPECT_EQ(all[0]["not_applied"], json{"Width"});
    EXPECT_EQ(all[0]["exit"], 4);
    EXPECT_EQ(all[1]["camera"]["serial"], "S2");
    EXPECT_EQ(all[1]["outcome"], "incompatible");
    EXPECT_EQ(all[1]["exit"], 5);
    EXPECT_EQ(all[2]["exit"], 4);
}

TEST_F(Audit, TellsWhatAFeatureBagChanged)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1", {"--format", "bag"});
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_EQ(import(file, {"--all", "--format", "bag"}).code, 0);
    const json line = lines().front();
    const json height{{"feature", "Height"}, {"from", "16"}, {"to", "480"}};
    EXPECT_THAT(line["changes"].get<std::vector<json>>(), ::testing::Contains(height));
    EXPECT_EQ(line["files"][0]["path"], path(file));
}

TEST_F(Audit, KnowsNoFirmwareOfACameraThatCannotBeOpened)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    camera.stealControl();
    EXPECT_EQ(import(file).code, 1);
    const json line = lines().front();
    EXPECT_EQ(line["camera"]["firmware"], nullptr);
    EXPECT_EQ(line["camera"]["description_sha256"], nullptr);
    EXPECT_EQ(line["outcome"], "failed");
    EXPECT_EQ(line["exit"], 1);
}

TEST_F(Audit, TellsOfAFileThatCannotBeRead)
{
    addCamera("S1");
    EXPECT_EQ(import("missing.fpk").code, 6);
    const json line = lines().front();
    EXPECT_EQ(line["files"], (json{{{"path", path("missing.fpk")}, {"sha256", nullptr}}}));
    EXPECT_EQ(line["outcome"], "unreadable file");
    EXPECT_EQ(line["exit"], 6);
}

TEST_F(Audit, IsSwitchedOff)
{
    addCamera("S1");
    EXPECT_EQ(import(exported("S1"), {"--all", "--no-audit"}).code, 0);
    EXPECT_EQ(import(exported("S1"), {"--all", "--audit", "off"}).code, 0);
    EXPECT_FALSE(QFile::exists(logFile()));
}

TEST_F(Audit, GoesIntoTheFileThatIsNamed)
{
    addCamera("S1");
    EXPECT_EQ(import(exported("S1"), {"--all", "--audit", path("own/log.jsonl")}).code, 0);
    EXPECT_FALSE(QFile::exists(logFile()));
    EXPECT_EQ(lines(fileText("own/log.jsonl"), "begins").size(), 1u);
    EXPECT_EQ(lines(fileText("own/log.jsonl"), "ends").size(), 1u);
}

TEST_F(Audit, TellsOfTheBeginningWhatIsKnownThen)
{
    addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(import(file).code, 0);
    const std::vector<json> begun = lines(logText(), "begins");
    ASSERT_EQ(begun.size(), 1u);
    EXPECT_EQ(begun[0]["command"], "import");
    EXPECT_EQ(begun[0]["camera"]["serial"], "S1");
    EXPECT_EQ(begun[0]["files"][0]["path"], path(file));
    EXPECT_FALSE(begun[0].contains("outcome"));
    EXPECT_FALSE(begun[0].contains("changes"));
    EXPECT_TRUE(logText().startsWith("{\"time\":\"") &&
                logText().indexOf("begins") < logText().indexOf("ends"));
}

// The machine that loses its power, the process that is killed.
TEST_F(Audit, HasATraceOfAnImportThatNeverEnded)
{
    emu::EmulatedCamera& camera =
        addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(5); });
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    camera.resetCounters();
    tests::Program program({"import", path(file), "--all"});
    program.start();
    ASSERT_TRUE(camera.waitFor([](const emu::Counters& now) { return now.settingWrites > 0; },
                               std::chrono::seconds(20)));
    program.process().kill();
    program.finish();
    EXPECT_EQ(lines(logText(), "begins").size(), 1u);
    EXPECT_EQ(lines().size(), 0u);
}

TEST_F(Audit, ThatIsRequiredRefusesToWriteWithoutALine)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    write("user-data", "a file where the folder should be");
    camera.resetCounters();
    const Result run = import(file, {"--all", "--require-audit", "--snapshot", folder()});
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err,
                HasSubstr("Nothing was written to a camera, since --require-audit wants a line of it.\n"));
    EXPECT_EQ(camera.counters().settingWrites, 0u);
    EXPECT_EQ(std::get<int64_t>(camera.node("Height").value()), 16);
    EXPECT_EQ(import(file, {"--all", "--require-audit", "--audit", path("log.jsonl")}).code, 0);
    EXPECT_EQ(import(file, {"--all", "--require-audit", "--audit", "off"}).code, 2);
}

// Not into "/VELA".
TEST_F(Audit, HasNoPlaceWithoutAHomeFolder)
{
    addCamera("S1");
    const std::string file = exported("S1");
    const bool wasThere = QFile::exists("/VELA");
    tests::Program program({"import", path(file), "--all"}, "unset HOME VELA_USER_DATA;");
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err,
                HasSubstr("The audit log has no place, since neither HOME nor VELA_USER_DATA is set;"));
    EXPECT_EQ(QFile::exists("/VELA"), wasThere);
}

TEST_F(Audit, KeepsWhatAClonedCameraWasSetTo)
{
    emu::EmulatedCamera& source = addCamera("S1");
    addCamera("S2");
    ASSERT_EQ(source.setNode("Height", int64_t(16)), "");
    const Result run = tests::runInProcess({"clone", "--from", "S1", "--to", "S2", "--yes"});
    ASSERT_EQ(run.code, 0) << run.err;
    const json line = lines().front();
    EXPECT_EQ(line["source"], (json{{"transport", "GigE"},
                                    {"model", "EMU-1"},
                                    {"serial", "S1"},
                                    {"name", ""},
                                    {"address", source.config().address}}));
    const std::string sum = line["files"][0]["sha256"];
    const std::string kept = "user-data/Audit/files/" + sum + ".fpk";
    EXPECT_EQ(line["files"][0]["path"], path(kept));
    EXPECT_EQ(sha256(fileText(kept)).toStdString(), sum);
    EXPECT_EQ(fileText(kept), fileText(exported("S1")));
}

TEST_F(Audit, ThatCannotBeWrittenFailsNoImport)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    write("user-data", "a file where the folder should be");
    const Result run = import(file);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(std::get<int64_t>(camera.node("Height").value()), 480);
    EXPECT_EQ(QString::fromStdString(run.err).count("The audit log cannot be written"), 1);
    EXPECT_THAT(run.err, HasSubstr("The audit log cannot be written: " + path("user-data") +
                                   "/Audit/iefeatures.jsonl\n"));
}

// A limit on the size of files ends the write, as a full disk does.
TEST_F(Audit, OnAFullDiskFailsNoImport)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    ASSERT_TRUE(QDir().mkpath(logFolder()));
    write("user-data/Audit/iefeatures.jsonl", QByteArray(64 * 512 - 1, 'x') + '\n');
    tests::Program program({"import", path(file), "--all"}, "trap '' XFSZ; ulimit -f 64;");
    program.start();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(std::get<int64_t>(camera.node("Height").value()), 480);
    EXPECT_EQ(QString::fromStdString(run.err).count("The audit log cannot be written: "), 1);
    EXPECT_EQ(logText().size(), 64 * 512);
}

TEST_F(Audit, BeginsANewLineBehindOneThatWasCut)
{
    addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_TRUE(QDir().mkpath(logFolder()));
    write("user-data/Audit/iefeatures.jsonl", "{\"time\":\"20");
    ASSERT_EQ(import(file).code, 0);
    const QByteArrayList texts = logText().split('\n');
    ASSERT_EQ(texts.size(), 4);
    EXPECT_EQ(texts[0], "{\"time\":\"20");
    EXPECT_EQ(json::parse(texts[2].toStdString())["outcome"], "applied");
}

TEST_F(Audit, TakesLinesOfManyAtOnce)
{
    companion::AuditEntry entry;
    entry.command = "import";
    entry.changes.assign(300, {"Feature", false, 0, "from", QString(100, 'x')});
    std::ostringstream out;
    std::ostringstream err;
    companion::Console console(out, err, false, false);
    std::vector<std::thread> writers;
    for (int i = 0; i < 8; ++i)
        writers.emplace_back([&] {
            companion::AuditTrail trail(console, {});
            for (int n = 0; n < 20; ++n)
                trail.end({entry});
        });
    for (std::thread& writer : writers)
        writer.join();
    EXPECT_EQ(err.str(), "");
    const std::vector<json> all = lines();
    EXPECT_EQ(all.size(), 160u);
    for (const json& line : all)
        EXPECT_EQ(line["changes"].size(), 300u);
}

TEST_F(Audit, CountsWhatItDoesNotTell)
{
    companion::AuditEntry entry;
    entry.changes.assign(5001, {"Feature", false, 0, {}, "1"});
    const json line = json::parse(companion::auditLine(entry, companion::AuditMoment::Ends).toStdString());
    EXPECT_EQ(line["changes"].size(), 5000u);
    EXPECT_EQ(line["changes"][0], (json{{"feature", "Feature"}, {"from", nullptr}, {"to", "1"}}));
    EXPECT_EQ(line["more_changes"], 1);
}

namespace
{

// While one lives, jobs find no memory for their large buffers: the export that a snapshot begins with ends.
struct NoMemory
{
    NoMemory()
    {
        ie::setAllocateHook([](std::size_t) -> void* { throw std::bad_alloc(); });
    }
    ~NoMemory() { ie::setAllocateHook(nullptr); }
};

} // namespace

TEST_F(Audit, EndsWhatRanOutOfMemory)
{
    addCamera("S1");
    const std::string file = exported("S1");
    {
        const NoMemory none;
        EXPECT_EQ(import(file, {"--all", "--snapshot", folder()}).code, 1);
    }
    EXPECT_EQ(lines(logText(), "begins").size(), 1u);
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines().front()["camera"]["serial"], "S1");
    EXPECT_EQ(lines().front()["exit"], 1);
}

TEST_F(Audit, ClaimsNothingOfWhatAnExceptionHasEnded)
{
    std::ostringstream out, err;
    companion::Console console(out, err, false, false);
    try {
        const companion::AuditRule rule{true, QString::fromStdString(path("log"))};
        companion::AuditTrail trail(console, rule);
        companion::AuditEntry entry;
        entry.camera.model = "EMU-1";
        entry.camera.serial = "S1";
        trail.begin({entry});
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
    }
    EXPECT_THAT(err.str(), HasSubstr(" S1: what was written to it is not known.\n"));
    const json line = lines(fileText("log"), "ends").front();
    EXPECT_EQ(line["outcome"], "failed");
    EXPECT_TRUE(line["changes"].is_null());
    EXPECT_TRUE(line["not_applied"].is_null());
}

TEST_F(Audit, HasItsLinesWhereAFileCannotBeKept)
{
    addCamera("S1");
    emu::EmulatedCamera& target = addCamera("S2");
    ASSERT_EQ(target.setNode("Height", int64_t(16)), "");
    ASSERT_TRUE(QDir().mkpath(logFolder()));
    write("user-data/Audit/files", "a file where the folder should be");
    const Result run = tests::runInProcess({"clone", "--from", "S1", "--to", "S2", "--yes"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.err, HasSubstr("The file cannot be kept for the audit log: "));
    EXPECT_EQ(lines(logText(), "begins").size(), 1u);
    EXPECT_EQ(lines().size(), 1u);
    ASSERT_EQ(target.setNode("Height", int64_t(16)), "");
    EXPECT_EQ(tests::runInProcess({"clone", "--from", "S1", "--to", "S2", "--yes", "--require-audit"}).code,
              6);
    EXPECT_EQ(std::get<int64_t>(target.node("Height").value()), 16);
    EXPECT_EQ(lines().back()["outcome"], "not started");
}
