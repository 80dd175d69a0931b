// A companion whose calls of the system fail, one at a time: what it leaves is whole, and it says what it
// did.
#include "companion/LineCompanion.h"

#include "gvcp/Gvcp.h"

#include <QDir>
#include <QDirIterator>
#include <QRegularExpression>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>

using nlohmann::json;
using tests::Arguments;
using tests::Program;
using tests::Result;

namespace
{

const std::vector<std::string> kKinds{"open",  "write",  "fsync",  "rename", "link",
                                      "mkdir", "unlink", "socket", "bind",   "connect",
                                      "send",  "thread", "new",    "malloc", "qt"};
const std::vector<int> kFileErrors{ENOSPC, EDQUOT, EACCES, EMFILE, EIO};
const std::vector<int> kLineErrors{ENETUNREACH, ENOBUFS, EPERM};
const std::vector<int> kThreadErrors{EAGAIN};
const std::vector<int> kMemoryErrors{ENOMEM};
constexpr size_t kFirstLineKind = 7;
constexpr size_t kFirstThreadKind = 11;
constexpr size_t kFirstMemoryKind = 12;
constexpr uint32_t kMostOfMemory = 300; // of hundreds of thousands, where all else is tried

const std::vector<int>& errorsOf(size_t kind)
{
    if (kind < kFirstLineKind)
        return kFileErrors;
    if (kind < kFirstThreadKind)
        return kLineErrors;
    return kind < kFirstMemoryKind ? kThreadErrors : kMemoryErrors;
}

bool isWholeSweep()
{
    const char* all = std::getenv("KX_SWEEP");
    return all != nullptr && std::string(all) == "all";
}

// One call that fails.
struct Failure
{
    size_t kind = 0;
    uint32_t number = 0;
    int error = 0;

    std::string text() const
    {
        return kKinds[kind] + " number " + std::to_string(number) + ": " + std::strerror(error);
    }
};

bool canLeaveRest(const Failure& failure)
{
    return failure.number != 0 && kKinds[failure.kind] == "unlink";
}

bool isLostPacket(const Failure& failure)
{
    return kKinds[failure.kind] == "send" && failure.error == ENOBUFS;
}

using Counts = std::vector<uint32_t>; // by kind

class FailingCalls : public tests::LineOfCameras
{
protected:
    FailingCalls() : m_camera(addNamed("S1", "Gate 1"))
    {
        m_right = fileText(exported("S1"));
        QDir(QString::fromStdString(folder())).mkpath("work");
    }

    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "SKIPPED: a sanitizer has to be the first library of a program";
#endif
    }

    std::string work(const std::string& name) const
    {
        return path("work/" + name);
    }
    QByteArray workText(const std::string& name) const
    {
        return fileText("work/" + name);
    }

    Result run(const Arguments& arguments, const Failure& failure, Counts& counts)
    {
        write("counts", QByteArray(int(kKinds.size() * sizeof(uint32_t)), '\0'));
        Program program(arguments,
                        QString("LD_PRELOAD='" FAILING_CALLS "' FAILING_FOLDER='%1' FAILING_CALL=%2 "
                                "FAILING_NUMBER=%3 FAILING_ERROR=%4 FAILING_COUNTS='%5'")
                            .arg(QString::fromStdString(path("work")))
                            .arg(QString::fromStdString(kKinds[failure.kind]))
                            .arg(failure.number)
                            .arg(failure.error)
                            .arg(QString::fromStdString(path("counts"))));
        program.start();
        const Result result = program.finish();
        const QByteArray bytes = fileText("counts");
        counts.resize(kKinds.size());
        std::memcpy(counts.data(), bytes.constData(), size_t(bytes.size()));
        m_camera.releaseControl();
        return result;
    }

    Result runAgainst(const QString& weather, const Arguments& arguments)
    {
        Program program(arguments, "LD_PRELOAD='" FAILING_CALLS "' " + weather);
        program.start();
        return program.finish();
    }

    // The jobs under something that must not make them fail.
    void expectWell(const QString& weather)
    {
        emptyWork();
        const Result exported = runAgainst(weather, {"export", "--all", "--to", path("work")});
        EXPECT_EQ(exported.code, 0) << exported.err << exported.out;
        EXPECT_EQ(workText("EMU-1_S1.fpk"), m_right);
        write("a.fpk", m_right);
        ASSERT_EQ(m_camera.setNode("Height", int64_t(16)), "");
        const Result imported =
            runAgainst(weather, {"import", path("a.fpk"), "--all", "--verify", "--snapshot", path("work"),
                                 "--audit", work("log"), "--require-audit"});
        EXPECT_EQ(imported.code, 0) << imported.err << imported.out;
        EXPECT_EQ(std::get<int64_t>(*m_camera.node("Height")), 480);
        EXPECT_EQ(workText("log").count('\n'), 2);
        const Result taken =
            runAgainst(weather, {"line", "init", work("hall.toml"), "--all", "--pause", "0"});
        EXPECT_EQ(taken.code, 0) << taken.err << taken.out;
        EXPECT_EQ(runAgainst(weather, {"line", "check", work("hall.toml")}).code, 0);
        EXPECT_EQ(m_camera.counters().heartbeatsExpired, 0u);
        EXPECT_EQ(controlOf(m_camera), 0u);
    }

    // Every call fails once in each way that it can; else, as the whole takes long, some of them in one way.
    std::vector<Failure> failuresOf(const Counts& counts) const
    {
        std::vector<Failure> all;
        for (size_t kind = 0; kind < kKinds.size(); ++kind) {
            const std::vector<int>& errors = errorsOf(kind);
            const uint32_t most = kind < kFirstMemoryKind ? counts[kind] : kMostOfMemory;
            const uint32_t step = counts[kind] / (isWholeSweep() ? most + 1 : 6) + 1;
            for (uint32_t number = 1; number <= counts[kind]; number += step)
                for (size_t i = 0; i < errors.size(); ++i)
                    if (isWholeSweep() || i == number % errors.size())
                        all.push_back({kind, number, errors[i]});
        }
        return all;
    }

    // `judge` looks at what a run has left; `prepare` comes before each.
    void failEach(const Arguments& arguments, const std::function<void()>& prepare,
                  const std::function<void(const Result&, const Failure&)>& judge)
    {
        Counts counts;
        prepare();
        const Result good = run(arguments, {}, counts);
        ASSERT_EQ(good.code, 0) << good.err << good.out;
        judge(good, {});
        size_t failed = 0;
        const std::vector<Failure> failures = failuresOf(counts);
        for (const Failure& failure : failures) {
            SCOPED_TRACE(failure.text());
            prepare();
            Counts now;
            const Result result = run(arguments, failure, now);
            failed += result.code != 0;
            const bool isSignalled = result.out.find("\"failed\":true") != std::string::npos;
            EXPECT_GE(result.code, 0) << "it has crashed: " << result.err;
            EXPECT_TRUE(result.code == 0 || isSignalled || !result.err.empty()) << "silence" << result.out;
            judge(result, failure);
        }
        RecordProperty("runs", int(failures.size()));
        std::printf("%zu runs, of which %zu failed\n", failures.size(), failed);
        EXPECT_GT(failed, 0u);
    }

    QStringList allInWork() const
    {
        QStringList found;
        QDirIterator all(QString::fromStdString(path("work")),
                         QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext())
            found += QDir(QString::fromStdString(path("work"))).relativeFilePath(all.next());
        found.sort();
        return found;
    }

    // Of what an import with a snapshot leaves.
    void expectWholeFiles(const Failure& failure) const
    {
        for (const QString& name : allInWork().filter(QRegularExpression("[.]fpk$"))) {
            const bool isWhole =
                name.contains("/bag") || workText(name.toStdString()).trimmed().endsWith("</FeaturesFile>");
            EXPECT_TRUE(isWhole || canLeaveRest(failure)) << name.toStdString();
        }
        const QByteArray log = allInWork().contains("log") ? workText("log") : QByteArray();
        for (const QByteArray& line : log.split('\n'))
            EXPECT_TRUE(line.isEmpty() || !json::parse(line.toStdString(), nullptr, false).is_discarded())
                << line.toStdString();
    }

    void emptyWork() const
    {
        QDir(QString::fromStdString(path("work"))).removeRecursively();
        QDir(QString::fromStdString(folder())).mkpath("work");
    }

    emu::EmulatedCamera& m_camera;
    QByteArray m_right;
};

} // namespace

TEST_F(FailingCalls, LeaveTheOldFileOrTheNewOneBehindAnExport)
{
    const auto prepare = [this] {
        emptyWork();
        write("work/EMU-1_S1.fpk", "old");
    };
    const auto judge = [this](const Result& result, const Failure& failure) {
        EXPECT_TRUE(result.code == 0 || !isLostPacket(failure)) << result.err;
        const QByteArray text = workText("EMU-1_S1.fpk");
        EXPECT_EQ(text, result.code == 0 ? m_right : QByteArray("old")) << result.err << result.out;
        EXPECT_TRUE(allInWork() == QStringList{"EMU-1_S1.fpk"} || canLeaveRest(failure))
            << allInWork().join(' ').toStdString() << result.err;
    };
    failEach({"export", "--all", "--to", path("work")}, prepare, judge);
}

TEST_F(FailingCalls, AreToldByAnImportThatSaysWhatTheCameraHas)
{
    write("a.fpk", m_right);
    const auto prepare = [this] {
        emptyWork();
        ASSERT_EQ(m_camera.setNode("Height", int64_t(16)), "");
    };
    const auto judge = [this](const Result& result, const Failure& failure) {
        const bool isSet = std::get<int64_t>(*m_camera.node("Height")) == 480;
        EXPECT_TRUE(isSet || result.code != 0) << result.out;
        const json told = tests::lastObject(result, "result");
        const bool isToldSet = told.is_object() && told.contains("changed") &&
                               told["changed"].dump().find("Height") != std::string::npos;
        const bool isInDoubt = told.is_object() && told.contains("in_doubt");
        const bool isOpen = result.err.find("what was written to it is not known.") != std::string::npos ||
                            result.out.find("and not all of it told.") != std::string::npos;
        EXPECT_TRUE(isInDoubt || isOpen || isToldSet == isSet) << isSet << result.out << result.err;
        EXPECT_TRUE(!isSet || allInWork().contains("log")) << result.err;
        expectWholeFiles(failure);
    };
    failEach({"import", path("a.fpk"), "--all", "--verify", "--snapshot", path("work"), "--audit",
              work("log"), "--require-audit", "--json"},
             prepare, judge);
}

TEST_F(FailingCalls, LeaveAWholeLineOrNone)
{
    const Arguments init{"line", "init", work("hall.toml"), "--all", "--pause", "0"};
    const auto judge = [this, init](const Result& result, const Failure& failure) {
        const bool isThere = allInWork().contains("hall.toml");
        EXPECT_EQ(isThere, result.code == 0) << result.err;
        EXPECT_TRUE(!isThere || tests::runInProcess({"line", "check", work("hall.toml")}).code == 0);
        expectWholeFiles(failure);
        EXPECT_TRUE(!isThere || workText("hall.toml").count("_sha256 = ") == 2);
        EXPECT_EQ(result.err.find("another model"), std::string::npos) << result.err;
        // What was left does not stand in the way of the next try.
        EXPECT_TRUE(isThere || tests::runInProcess(init).code == 0) << result.err;
    };
    failEach(
        init, [this] { emptyWork(); }, judge);
}

// A try that nobody has made costs no time either: a request whose answer is waited for takes 200 ms.
TEST_F(FailingCalls, AreNoFaultsWhereASignalHasInterruptedThem)
{
    const uint64_t lost = m_camera.counters().requests();
    const auto begin = std::chrono::steady_clock::now();
    expectWell(
        "KX_CAMERA_USB=none INTERRUPTED_CALLS=1"); // libusb has a thread of its own, which ends by writing
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_LT(took, std::chrono::milliseconds(20) * (m_camera.counters().requests() - lost));
}

TEST_F(FailingCalls, AreNotMisledByAClockThatJumps)
{
    m_camera.pokeWord(gvcp::RegHeartbeatTimeout, 500);
    m_right = fileText(exported("S1"));
    expectWell("JUMPING_CLOCK=1");
}

// As a terminal's Ctrl-Z and fg do.
TEST_F(FailingCalls, GoOnWhereTheProgramWasStoppedAndContinued)
{
    write("a.fpk", m_right);
    ASSERT_EQ(m_camera.setNode("Height", int64_t(16)), "");
    Program program({"import", path("a.fpk"), "--all", "--verify", "--snapshot", path("work"), "--no-audit"});
    program.start();
    const auto process = static_cast<pid_t>(program.process().processId());
    bool isOver = false;
    for (int i = 0; i < 40 && !isOver; ++i) {
        ::kill(process, SIGSTOP);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ::kill(process, SIGCONT);
        isOver = program.process().waitForFinished(10);
    }
    EXPECT_TRUE(isOver || program.process().waitForFinished());
    EXPECT_EQ(program.process().exitCode(), 0) << program.process().readAllStandardError().toStdString();
    EXPECT_EQ(std::get<int64_t>(*m_camera.node("Height")), 480);
}
