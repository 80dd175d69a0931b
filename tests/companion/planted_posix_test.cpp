// Names that somebody else has prepared, as POSIX systems have them: pipes that would keep the program
// waiting, links that would lead it elsewhere.
#include "companion/ImportCompanion.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

using ::testing::HasSubstr;
using ::testing::Not;
using tests::Arguments;
using tests::Program;
using tests::Result;

namespace
{

class PlantedFile : public tests::ImportCompanion
{
protected:
    static Result run(const Arguments& arguments)
    {
        Program program(arguments);
        program.start();
        return program.finish();
    }

    Result exportAll(const Arguments& more = {})
    {
        Arguments arguments{"export", "--all", "--to", folder()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    }

    void plantPipe(const std::string& name)
    {
        QDir().mkpath(QFileInfo(QString::fromStdString(path(name))).path());
        ASSERT_EQ(::mkfifo(path(name).c_str(), 0666), 0);
    }

    void makeFolder(const std::string& name, mode_t mode)
    {
        ASSERT_EQ(::mkdir(path(name).c_str(), 0700), 0);
        ASSERT_EQ(::chmod(path(name).c_str(), mode), 0);
    }
};

const std::string kFile = "EMU-1_S1.fpk";

} // namespace

TEST_F(PlantedFile, IsNoTargetOfAnExport)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    plantPipe(kFile);
    for (const Arguments& format : {Arguments{}, Arguments{"--format", "bag"}}) {
        const Result pipe = exportAll(format);
        EXPECT_EQ(pipe.code, 6);
        EXPECT_EQ(pipe.err, "The file " + path(kFile) + " cannot be written: it is no regular file.\n");
    }
    EXPECT_EQ(camera.counters().writeReg, 0u); // no control was taken
    EXPECT_EQ(allInFolder(), QStringList{"EMU-1_S1.fpk"});
}

TEST_F(PlantedFile, IsReplacedAndNotFollowedWhereItIsALink)
{
    addCamera("S1");
    write("elsewhere", "kept");
    ASSERT_EQ(::symlink(path("elsewhere").c_str(), path(kFile).c_str()), 0);
    ASSERT_EQ(exportAll().code, 0);
    EXPECT_EQ(fileText("elsewhere"), "kept");
    EXPECT_FALSE(QFileInfo(QString::fromStdString(path(kFile))).isSymLink());
    EXPECT_TRUE(fileText(kFile).endsWith("</FeaturesFile>"));

    write(kFile, "yesterday");
    ASSERT_EQ(::link(path(kFile).c_str(), path("backup").c_str()), 0);
    ASSERT_EQ(::chmod(path(kFile).c_str(), 0640), 0);
    ASSERT_EQ(exportAll().code, 0);
    EXPECT_EQ(fileText("backup"), "yesterday");
    EXPECT_TRUE(fileText(kFile).endsWith("</FeaturesFile>"));
    EXPECT_EQ(QFileInfo(QString::fromStdString(path(kFile))).permissions() & 0x0FFF,
              QFile::ReadUser | QFile::WriteUser | QFile::ReadGroup);
}

TEST_F(PlantedFile, IsNoFilter)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    const std::string file = exported("S1");
    qputenv("VELA_PROGRAM_DATA", QByteArray::fromStdString(path("data")));
    plantPipe("data/Streamable/GigE.filter");
    const uint64_t before = camera.counters().writeReg;
    const Result pipe = exportAll();
    EXPECT_EQ(pipe.code, 6);
    EXPECT_EQ(pipe.err, "The filter " + path("data/Streamable/GigE.filter") +
                            " cannot be read: it is no regular file.\n");
    // What is exported on the way as well.
    EXPECT_EQ(run({"diff", path(file), "serial:S1"}).code, 6);
    EXPECT_EQ(camera.counters().writeReg, before);
}

TEST_F(PlantedFile, IsNoLogFile)
{
    addCamera("S1");
    plantPipe("log");
    write("elsewhere", "kept");
    ASSERT_EQ(::symlink(path("elsewhere").c_str(), path("link").c_str()), 0);
    const std::pair<std::string, std::string> planted[] = {{path("log"), "it is no regular file"},
                                                           {path("link"), "it is a link"},
                                                           {"/dev/null", "it is no regular file"}};
    for (const auto& [name, cause] : planted) {
        const Result refused = exportAll({"--log", name});
        EXPECT_EQ(refused.code, 6);
        EXPECT_EQ(refused.err, "The log file cannot be opened: " + name + " (" + cause + ")\n");
    }
    EXPECT_EQ(fileText("elsewhere"), "kept");
}

TEST_F(PlantedFile, IsNoAuditLog)
{
    addCamera("S1");
    const std::string file = exported("S1");
    const std::string audit = "user-data/Audit/iefeatures.jsonl";
    plantPipe(audit);
    const Result pipe = run({"import", path(file), "--all"});
    EXPECT_EQ(pipe.code, 0);
    EXPECT_THAT(pipe.err, HasSubstr("The audit log cannot be written: " + path(audit)));
    ASSERT_TRUE(QFile::remove(QString::fromStdString(path(audit))));
    write("elsewhere", "kept");
    ASSERT_EQ(::symlink(path("elsewhere").c_str(), path(audit).c_str()), 0);
    EXPECT_THAT(run({"import", path(file), "--all"}).err, HasSubstr("The audit log cannot be written: "));
    EXPECT_EQ(fileText("elsewhere"), "kept");
}

TEST_F(PlantedFile, IsNoInput)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    plantPipe("pipe");
    for (const Arguments& arguments :
         {Arguments{"import", path("pipe"), "--all"},
          Arguments{"import", path("pipe"), "--all", "--format", "bag"},
          Arguments{"plan", path("pipe"), "--all"}, Arguments{"verify", path("pipe"), "--all"},
          Arguments{"show", path("pipe")}, Arguments{"diff", path("pipe"), path("pipe")},
          Arguments{"import", "/dev/zero", "--all"}}) {
        const Result refused = run(arguments);
        EXPECT_EQ(refused.code, 6) << arguments[0];
        EXPECT_THAT(refused.err, HasSubstr("(it is no regular file)")) << arguments[0];
    }
    EXPECT_EQ(camera.counters().writeReg, 0u);
}

TEST_F(PlantedFile, IsNotWaitedForInAFolderOfFiles)
{
    const emu::EmulatedCamera& camera = addCamera("S1");
    plantPipe("files/" + kFile);
    EXPECT_EQ(run({"import", path("files"), "--all"}).code, 6);
    EXPECT_EQ(run({"verify", path("files"), "--all"}).code, 6);
    EXPECT_EQ(camera.counters().settingWrites, 0u);
}

TEST_F(PlantedFile, IsNoInventory)
{
    plantPipe("hall.toml");
    const Result refused = run({"line", "check", path("hall.toml")});
    EXPECT_EQ(refused.code, 6);
    EXPECT_THAT(refused.err, HasSubstr(path("hall.toml") + ": it cannot be read: "));
}

TEST_F(PlantedFile, IsWarnedOfWhereOthersMayPutOne)
{
    addCamera("S1");
    addCamera("S2");
    makeFolder("shared", 0777);
    const Result shared = run({"export", "--all", "--to", path("shared")});
    EXPECT_EQ(shared.code, 0);
    EXPECT_EQ(QString::fromStdString(shared.err).count("Others may write into the folder "), 1);
    EXPECT_THAT(exportAll().err, Not(HasSubstr("Others may write")));
    const Result import = run({"import", path("shared/EMU-1_S1.fpk"), "--all", "--snapshot", path("shared")});
    EXPECT_EQ(import.code, 0) << import.err;
    EXPECT_EQ(QString::fromStdString(import.err).count("Others may write into the folder "), 1);
}
