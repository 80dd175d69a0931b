// Several users on one machine: what one may not read or write, and what one has left where another works.
#include "companion/LineCompanion.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>

#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using tests::Arguments;
using tests::Program;
using tests::Result;

namespace
{

constexpr uid_t kOther = 65534;

// In front of the program; what follows is never come to.
const char kAsOther[] =
    "exec setpriv --reuid=65534 --regid=65534 --clear-groups --no-new-privs \"$0\" \"$@\";";

class OtherUsers : public tests::LineOfCameras
{
protected:
    OtherUsers()
    {
        ::chmod(folder().c_str(), 0755);
        makeFolder("others", kOther, 0755);
        qputenv("VELA_USER_DATA", QByteArray::fromStdString(path("others/user-data")));
        qputenv("HOME", QByteArray::fromStdString(path("others")));
    }

    static Result run(const Arguments& arguments, const char* wrapper)
    {
        Program program(arguments, wrapper);
        program.start();
        return program.finish();
    }
    static Result asOther(const Arguments& arguments) { return run(arguments, kAsOther); }

    // Why the tests cannot be made here; empty: they can.
    static std::string obstacle()
    {
        if (geteuid() != 0)
            return "only root can become another user";
        if (asOther({"--version"}).code != 0)
            return "there is no setpriv, or another user may not run the program where it lies";
        return {};
    }

    void makeFolder(const std::string& name, uid_t owner, mode_t mode) const
    {
        EXPECT_TRUE(QDir().mkpath(QString::fromStdString(path(name))));
        EXPECT_EQ(::chmod(path(name).c_str(), mode), 0);
        EXPECT_TRUE(geteuid() != 0 || ::chown(path(name).c_str(), owner, owner) == 0);
    }

    // Everything that others may write to.
    QStringList openToOthers() const
    {
        QStringList found;
        QDirIterator it(QString::fromStdString(folder()),
                        QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            struct stat about = {};
            const QString name = it.next();
            if (::lstat(QFile::encodeName(name).constData(), &about) == 0 && !S_ISLNK(about.st_mode) &&
                (about.st_mode & S_IWOTH) != 0)
                found += name;
        }
        return found;
    }
};

#define SKIP_UNLESS_ROOT()                                                                                   \
    const std::string why = obstacle();                                                                      \
    if (!why.empty())                                                                                        \
    GTEST_SKIP() << "Skipped: " << why

} // namespace

TEST_F(OtherUsers, AreToldWhatTheyMayNotReadOrWrite)
{
    SKIP_UNLESS_ROOT();
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    const Result into = asOther({"export", "--all", "--to", folder()});
    EXPECT_EQ(into.code, 6);
    EXPECT_THAT(into.err, HasSubstr("The folder " + folder() + " cannot be written to: "));
    EXPECT_THAT(into.err, HasSubstr("Permission denied"));
    ASSERT_EQ(::chmod(path(file).c_str(), 0600), 0);
    for (const Arguments& arguments :
         {Arguments{"import", path(file), "--all"}, Arguments{"show", path(file)},
          Arguments{"import", path(file), "--all", "--format", "bag"}}) {
        const Result refused = asOther(arguments);
        EXPECT_EQ(refused.code, 6) << arguments[0];
        EXPECT_THAT(refused.err, HasSubstr(path(file))) << arguments[0];
        EXPECT_THAT(refused.err, HasSubstr("Permission denied")) << arguments[0];
    }
    EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(OtherUsers, AreToldWhichSettingsTheyMayNotRead)
{
    SKIP_UNLESS_ROOT();
    addCamera("S1");
    makeFolder("shared/Streamable", 0, 0755);
    const std::string filter = "shared/Streamable/GigE.filter";
    write(filter, "Width");
    ASSERT_EQ(::chmod(path(filter).c_str(), 0600), 0);
    qputenv("VELA_PROGRAM_DATA", QByteArray::fromStdString(path("shared")));
    const Result refused = asOther({"export", "--all", "--to", path("others")});
    EXPECT_EQ(refused.code, 6);
    EXPECT_EQ(refused.err, "The filter " + path(filter) + " cannot be read: Permission denied.\n");
}

TEST_F(OtherUsers, AreToldWhichSerialLineTheyMayNotOpen)
{
    SKIP_UNLESS_ROOT();
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_TRUE(::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const std::string line = ::ptsname(master);
    ASSERT_EQ(::chmod(line.c_str(), 0600), 0);
    qputenv("KX_CAMERA_SERIAL_PORTS", QByteArray::fromStdString(line));
    const Result listed = asOther({"list"});
    qunsetenv("KX_CAMERA_SERIAL_PORTS");
    ::close(master);
    EXPECT_THAT(listed.err,
                HasSubstr("The serial line " + line + " may not be opened by this user: Permission denied."));
}

// Who may read a file may hold its lock as well.
TEST_F(OtherUsers, HoldUpNoImportByTheAuditLog)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    ASSERT_EQ(import(file).code, 0);
    const int held = ::open(path("others/user-data/Audit/iefeatures.jsonl").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(import(file).code, 0);
    ::close(held);
    EXPECT_LT(clock.elapsed(), 10000);
    EXPECT_EQ(camera.node("Height"), emu::NodeValue(int64_t(480)));
}

TEST_F(OtherUsers, AreToldOfAnAuditLogThatIsNotTheirs)
{
    SKIP_UNLESS_ROOT();
    emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    makeFolder("others/user-data/Audit", 0, 0755);
    write("others/user-data/Audit/iefeatures.jsonl", "somebody's\n");
    ASSERT_EQ(::chmod(path("others/user-data/Audit/iefeatures.jsonl").c_str(), 0600), 0);
    const Result warned = asOther({"import", path(file), "--all"});
    EXPECT_EQ(warned.code, 0) << warned.err;
    EXPECT_THAT(warned.err,
                HasSubstr("The audit log cannot be written: " +
                          path("others/user-data/Audit/iefeatures.jsonl") + " (Permission denied)"));
    const uint64_t writes = camera.counters().settingWrites;
    const Result refused = asOther({"import", path(file), "--all", "--require-audit"});
    EXPECT_NE(refused.code, 0);
    EXPECT_EQ(camera.counters().settingWrites, writes);
    EXPECT_EQ(fileText("others/user-data/Audit/iefeatures.jsonl"), "somebody's\n");
}

// A file of that name may have been prepared: what rollback takes for yesterday's settings is what was there.
TEST_F(OtherUsers, PutNoFileInThePlaceOfOneThatTheAuditLogKeeps)
{
    addCamera("S1");
    addCamera("S2");
    const Arguments clone{"clone", "--from", "S1", "--to", "S2", "--yes"};
    ASSERT_EQ(tests::runInProcess(clone).code, 0);
    const std::string kept = nlohmann::json::parse(
        fileText("others/user-data/Audit/iefeatures.jsonl").split('\n').first())["files"][0]["path"];
    QFile file(QString::fromStdString(kept));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    file.close();
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("<FeaturesFile/>");
    file.close();
    ASSERT_EQ(tests::runInProcess(clone).code, 0);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), text);
}

TEST_F(OtherUsers, LockNobodyOutByWhatIsNoLock)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    const std::string lock = file() + ".lock";
    const auto expectRefusal = [&](const std::string& cause) {
        const Result refused = line({"apply"}, {"--yes"});
        EXPECT_EQ(refused.code, 1) << cause;
        EXPECT_THAT(refused.err,
                    HasSubstr(file() + " cannot be locked: " + lock + " is in the way (" + cause + ")."));
        ASSERT_EQ(std::remove(lock.c_str()), 0);
    };
    ASSERT_EQ(::mkfifo(lock.c_str(), 0666), 0);
    expectRefusal("it is no regular file");
    ASSERT_EQ(::symlink("/dev/zero", lock.c_str()), 0);
    expectRefusal("it is a link");
    ASSERT_EQ(::mkdir(lock.c_str(), 0755), 0);
    expectRefusal("it is no regular file");
    EXPECT_EQ(line({"apply"}, {"--yes"}).code, 0);
}

TEST_F(OtherUsers, AreNotServedFromAnothersDescriptions)
{
    SKIP_UNLESS_ROOT();
    emu::EmulatedCamera& camera = addCamera("S1");
    const auto reads = [&](const char* wrapper, const char* to) {
        const uint64_t before = camera.counters().readMem;
        const Result exported = run({"export", "--all", "--to", path(to)}, wrapper);
        EXPECT_EQ(exported.code, 0) << exported.err;
        return camera.counters().readMem - before;
    };
    makeFolder("mine", 0, 0755);
    qputenv("KX_DESCRIPTION_CACHE", QByteArray::fromStdString(path("cache")));
    const uint64_t whole = reads("", "mine");
    const uint64_t part = reads("", "mine");
    ASSERT_LT(part, whole / 2);
    ASSERT_EQ(::chmod(path("cache").c_str(), 0755), 0);
    const QStringList before = QDir(QString::fromStdString(path("cache"))).entryList(QDir::Files);
    EXPECT_EQ(reads(kAsOther, "others"), whole) << "of another user";
    EXPECT_EQ(QDir(QString::fromStdString(path("cache"))).entryList(QDir::Files), before);
    ASSERT_EQ(::chmod(path("cache").c_str(), 0777), 0);
    EXPECT_EQ(reads("", "mine"), whole) << "others may write to it";
    ASSERT_EQ(::chmod(path("cache").c_str(), 0700), 0);
    EXPECT_EQ(reads("", "mine"), part);
}

// Also under names that could be foreseen.
TEST_F(OtherUsers, HaveNoFileWrittenByALinkInASharedFolder)
{
    addCamera("S1");
    makeFolder("shared", 0, 01777);
    write("precious", "kept");
    for (const char* name : {"EMU-1_S1.fpk", "EMU-1_S1.fpk.part", "EMU-1_S1.fpk.tmp", "EMU-1_S1.fpk.new"})
        ASSERT_EQ(::symlink(path("precious").c_str(), path(std::string("shared/") + name).c_str()), 0);
    for (const char* format : {"xml", "bag"}) {
        const Result exported = run({"export", "--all", "--to", path("shared"), "--format", format}, "");
        EXPECT_EQ(exported.code, 0) << exported.err;
        EXPECT_EQ(fileText("precious"), "kept");
        EXPECT_FALSE(QFileInfo(QString::fromStdString(path("shared/EMU-1_S1.fpk"))).isSymLink());
    }
}

TEST_F(OtherUsers, MayWriteToNothingThatIsMadeWhateverTheUmask)
{
    emu::EmulatedCamera& camera = addNamed("S1", "Gate 1");
    emu::EmulatedCamera& twin = addNamed("S2", "Gate 2");
    ::chmod(path("others").c_str(), 0755);
    qputenv("KX_DESCRIPTION_CACHE", QByteArray::fromStdString(path("cache")));
    const auto expectGood = [](const Arguments& arguments) {
        const Result ran = run(arguments, "umask 0;");
        EXPECT_EQ(ran.code, 0) << arguments[0] << ran.err;
    };
    for (const char* name : {"features", "bags", "snapshots"})
        makeFolder(name, geteuid(), 0755);
    expectGood({"export", "--all", "--to", path("features"), "--log", path("log")});
    expectGood({"export", "--all", "--to", path("bags"), "--format", "bag"});
    expectGood({"line", "init", file(), "--all", "--pause", "0"});
    ASSERT_EQ(camera.setNode("Height", int64_t(16)), "");
    expectGood(
        {"import", path("features/EMU-1_S1.fpk"), "--all", "--snapshot", path("snapshots"), "--verify"});
    ASSERT_EQ(twin.setNode("Height", int64_t(16)), "");
    expectGood({"clone", "--from", "S1", "--to", "S2", "--yes"});
    expectGood({"line", "apply", file(), "--yes"});
    expectGood({"line", "check", file(), "--metrics", path("line.prom"), "--junit", path("line.xml")});
    EXPECT_EQ(openToOthers(), QStringList());
    EXPECT_TRUE(QFile::exists(QString::fromStdString(path("line.prom"))));
}

TEST_F(OtherUsers, MayReadMetricsWhateverTheUmask)
{
    addNamed("S1", "Gate 1");
    ASSERT_EQ(init().code, 0);
    for (int time = 0; time < 2; ++time) { // a new file, and one that is replaced
        const Result ran = run({"line", "check", file(), "--metrics", path("line.prom")}, "umask 077;");
        EXPECT_EQ(ran.code, 0) << ran.err;
        EXPECT_EQ(QFileInfo(QString::fromStdString(path("line.prom"))).permissions() & 0x0FFF,
                  QFile::ReadUser | QFile::WriteUser | QFile::ReadGroup | QFile::ReadOther);
    }
}

// What is around a program is no matter of its log.
TEST_F(OtherUsers, ReadNothingOfTheEnvironmentInALog)
{
    addCamera("S1");
    qputenv("SERVICE_PASSWORD", "hunter2-in-the-environment");
    const std::string file = exported("S1");
    const Result ran =
        run({"import", path(file), "--all", "--log", path("log"), "--verbose", "--snapshot", folder()}, "");
    qunsetenv("SERVICE_PASSWORD");
    EXPECT_EQ(ran.code, 0) << ran.err;
    const QByteArray texts = fileText("log") + fileText("others/user-data/Audit/iefeatures.jsonl") +
                             QByteArray::fromStdString(ran.out + ran.err);
    EXPECT_FALSE(texts.contains("hunter2"));
    EXPECT_FALSE(texts.contains("PASSWORD"));
}
