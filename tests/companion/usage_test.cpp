#include "companion/CompanionFixture.h"
#include "iefeatures/cameras/NamedNatures.h"
#include "iefeatures/console/ExitCode.h"

#include <nlohmann/json.hpp>

#include <SuiteTools/SuiteTools.h>

#include <QFile>
#include <QRegularExpression>

using ::testing::HasSubstr;
using ::testing::StartsWith;
using tests::Arguments;
using tests::entries;
using tests::Result;
using tests::runInProcess;

namespace
{

Result runWithoutCameras(const Arguments& arguments)
{
    return runInProcess(arguments, entries({}));
}

QString manPage()
{
    QFile file(IE_MAN_PAGE);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).replace("\\-", "-");
}

} // namespace

TEST(Usage, TellsTheVersionOfTheSuite)
{
    const Result run = runWithoutCameras({"--version"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "iefeatures " + VELAInterface::softwareVersion().toStdString() + "\n");
    EXPECT_EQ(run.err, "");
}

TEST(Usage, HelpsWithCommandsAndExitCodes)
{
    const Result run = runWithoutCameras({"--help"});
    EXPECT_EQ(run.code, 0);
    EXPECT_THAT(run.out, HasSubstr("  list  "));
    EXPECT_THAT(run.out, HasSubstr("  export  "));
    EXPECT_THAT(run.out, HasSubstr("  import  "));
    EXPECT_THAT(run.out, HasSubstr("  plan  "));
    EXPECT_THAT(run.out, HasSubstr("  verify  "));
    EXPECT_THAT(run.out, HasSubstr(companion::exitCodeTable()));
    EXPECT_EQ(run.err, "");
}

TEST(Usage, HelpsWithOneCommand)
{
    for (const char* command : {"export", "import"}) {
        const Result run = runWithoutCameras({command, "--help"});
        EXPECT_EQ(run.code, 0);
        for (const char* option : {"--all", "--serial", "--name", "--address", "--model", "--format",
                                   "--json", "--verbose", "--log"})
            EXPECT_THAT(run.out, HasSubstr(std::string(option) + " "));
        EXPECT_THAT(run.out, HasSubstr(companion::exitCodeTable()));
    }
    EXPECT_THAT(runWithoutCameras({"export", "--help"}).out, HasSubstr("--to "));
    EXPECT_THAT(runWithoutCameras({"import", "--help"}).out, HasSubstr("FILE "));
}

TEST(Usage, HasATableOfExitCodes)
{
    EXPECT_EQ(
        companion::exitCodeTable(),
        "Exit codes:\n"
        "  0    all went well\n"
        "  1    a job failed; the others went on; or a clone that was asked about was refused; or what was "
        "compared differs\n"
        "  2    wrong usage, or two chosen cameras that would write one file; nothing was done\n"
        "  3    no such camera, another number of them than expected, or one of a folder's files or cameras "
        "has no other; nothing was done, unless --keep-going let the others go on\n"
        "  4    a camera did not take all of the file\n"
        "  5    the file belongs to another model, firmware, board type or version, or the snapshot to "
        "another camera; or it is no features file\n"
        "  6    input or output failed (network, a file or folder, log file, standard output), or memory ran "
        "out\n"
        "  130  interrupted\n");
}

class WrongUsage : public ::testing::TestWithParam<std::pair<Arguments, const char*>>
{
};

TEST_P(WrongUsage, IsToldOnTheMessageStreamWithTheUsage)
{
    const Result run = runWithoutCameras(GetParam().first);
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, StartsWith(GetParam().second));
    EXPECT_THAT(run.err, HasSubstr("\nUsage: iefeatures"));
    EXPECT_THAT(run.err, HasSubstr("Exit codes:\n"));
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongUsage,
    ::testing::Values(
        std::pair(Arguments{}, "Name a command.\n"),
        std::pair(Arguments{"frobnicate"}, "The following argument was not expected: frobnicate\n"),
        std::pair(Arguments{"--frobnicate"}, "The following argument was not expected: --frobnicate\n"),
        std::pair(Arguments{"list", "--frobnicate"},
                  "The following argument was not expected: --frobnicate\n"),
        std::pair(Arguments{"list", "--serial", "a b", "c"},
                  "The following arguments were not expected: --serial a b c\n"),
        std::pair(Arguments{"list", "\x1b[31m"},
                  "The following argument was not expected: \xEF\xBF\xBD[31m\n"),
        std::pair(Arguments{"list", "extra"}, "The following argument was not expected: extra\n"),
        std::pair(Arguments{"list", "export"}, "The following argument was not expected: export\n"),
        std::pair(Arguments{"export", "--all"}, "--to is required\n"),
        std::pair(Arguments{"get", "--serial", "E1"}, "FEATURE is required\n"),
        std::pair(Arguments{"get", "--serial", "E1", "Gain"},
                  "FEATURE is required; --serial has taken all the words behind it (E1 Gain): put it last, "
                  "or -- behind its own\n"),
        std::pair(Arguments{"verify", "--strict", "--name", "Gate 1", "a.fpk"},
                  "FILE is required; --name has taken all the words behind it (Gate 1 a.fpk): put it "
                  "last, or -- behind its own\n"),
        std::pair(Arguments{"export", "--all", "--to", ""}, "--to: Name a folder.\n"),
        std::pair(Arguments{"export", "--to", "."}, "At least 1 option from"),
        std::pair(Arguments{"export", "--to", ".", "--all", "--serial", "1"}, "--all excludes --serial\n"),
        std::pair(Arguments{"export", "--to", ".", "--serial"}, "--serial: 1 required"),
        std::pair(Arguments{"export", "--to", ".", "--serial", ""},
                  "--serial: An empty value chooses no camera.\n"),
        std::pair(Arguments{"export", "--to", ".", "--name", "Gate 1", ""},
                  "An empty argument means nothing.\n"),
        std::pair(Arguments{"export", "--to", ".", "--name=", "Gate 1"},
                  "An empty argument means nothing.\n"),
        std::pair(Arguments{"plan", "a.fpk", "--address", ""},
                  "--address: An empty value chooses no camera.\n"),
        std::pair(Arguments{"import", "a.fpk", "--mac", ""}, "--mac: An empty value chooses no camera.\n"),
        std::pair(Arguments{"verify", "a.fpk", "--model", ""},
                  "--model: An empty value chooses no camera.\n"),
        std::pair(Arguments{"export", "--to", ".", "--all", "--log", ""}, "--log: Name a file.\n"),
        std::pair(Arguments{"export", "--to", ".", "--all", "--expect", ""},
                  "An empty argument means nothing.\n"),
        std::pair(Arguments{"export", "--to", ".", "--all", "--expect", "-1"}, "Could not convert: --expect"),
        std::pair(Arguments{"export", "--to", ".", "--all", "--wait", "-1"}, "--wait: Value -1 not in range"),
        std::pair(Arguments{"export", "--to", ".", "--all", "--format", "zip"}, "--format: zip not in {"),
        std::pair(Arguments{"import", "--all"}, "FILE is required\n"),
        std::pair(Arguments{"import", "", "--all"}, "FILE: Name a file.\n"),
        std::pair(Arguments{"import", "a.fpk", "--all", "--start-up"}, "--start-up requires --persist\n"),
        std::pair(Arguments{"import", "a.fpk", "--all", "--snapshot", ""}, "--snapshot: Name a folder.\n"),
        std::pair(Arguments{"rollback", "--serial", "1"}, "SNAPSHOT is required\n"),
        std::pair(Arguments{"rollback", "folder"}, "At least 1 option from"),
        std::pair(Arguments{"clone", "--to", "1"}, "--from is required\n"),
        std::pair(Arguments{"clone", "--from", "1"}, "At least 1 option from"),
        std::pair(Arguments{"clone", "--from", "", "--to", "1"}, "--from: Name a camera.\n"),
        std::pair(Arguments{"clone", "--from", "1", "--to", ""}, "--to: Name a camera.\n"),
        std::pair(Arguments{"diff", "a.fpk"}, "B is required\n"),
        std::pair(Arguments{"diff", "", "b.fpk"}, "A: Name a file or a camera.\n"),
        std::pair(Arguments{"diff", "a.fpk", "serial:"}, "B: Name a file or a camera.\n"),
        std::pair(Arguments{"diff", "a.fpk", "b.fpk", "--ignore", ""}, "--ignore: Name a feature.\n"),
        std::pair(Arguments{"show"}, "FILE is required\n"),
        std::pair(Arguments{"show", ""}, "FILE: Name a file.\n"),
        std::pair(Arguments{"line"}, "A subcommand is required\n"),
        std::pair(Arguments{"line", "check"}, "FILE is required\n"),
        std::pair(Arguments{"line", "check", ""}, "FILE: Name a file.\n"),
        std::pair(Arguments{"line", "check", "f", "--metrics", ""}, "--metrics: Name a file.\n"),
        std::pair(Arguments{"line", "init", "f", "--add", "--refresh", "A"}, "--add excludes --refresh\n"),
        std::pair(Arguments{"line", "init", "f", "--all", "--name-by", "model"}, "--name-by: model not in {"),
        std::pair(Arguments{"list", "--interval", "2"}, "--interval requires --watch\n"),
        std::pair(Arguments{"list", "--watch", "--interval", "-1"}, "--interval: Value -1 not in range"),
        std::pair(Arguments{"import", "a.fpk"}, "At least 1 option from"),
        std::pair(Arguments{"import", "a.fpk", "b.fpk", "--all"},
                  "The following argument was not expected: b.fpk\n"),
        std::pair(Arguments{"import", "a.fpk", "--all", "--format", "zip"}, "--format: zip not in {")));

TEST(ManPage, NamesEveryOption)
{
    const QString page = manPage();
    QString help;
    for (const char* command : {"export", "import", "list", "plan", "verify", "rollback", "clone", "diff",
                                "show", "get", "set", "run"})
        help += QString::fromStdString(runWithoutCameras({command, "--help"}).out);
    for (const char* command : {"init", "check", "apply", "adopt"})
        help += QString::fromStdString(runWithoutCameras({"line", command, "--help"}).out);
    auto options = QRegularExpression("--[a-z-]+").globalMatch(help);
    int seen = 0;
    for (; options.hasNext(); ++seen) {
        const QString option = options.next().captured();
        EXPECT_TRUE(page.contains(option)) << option.toStdString();
    }
    EXPECT_GT(seen, 10);
}

TEST(ManPage, ListsWhatComparisonsLeaveOut)
{
    const QString page = manPage().simplified();
    EXPECT_TRUE(page.contains(" " + companion::changingByThemselves().join(", ") + "."));
}

TEST(ManPage, ListsWhatProgramsSet)
{
    const QString page = manPage().simplified();
    EXPECT_TRUE(page.contains(" " + companion::sessionPatterns().join(", ") + " "));
}

TEST(ManPage, HasTheSameExitCodes)
{
    const QString page = manPage();
    auto rows = QRegularExpression("^  (\\d+) +(.*)$", QRegularExpression::MultilineOption)
                    .globalMatch(QString::fromStdString(companion::exitCodeTable()));
    int seen = 0;
    for (; rows.hasNext(); ++seen) {
        const auto row = rows.next();
        const QString entry = ".TP\n.B " + row.captured(1) + "\n" + row.captured(2) + "\n";
        EXPECT_TRUE(page.contains(entry)) << entry.toStdString();
    }
    EXPECT_EQ(seen, 8);
}

// The fixture looks at each run for the closing object and its exit code.
TEST(Usage, RefusalsAreToldToScriptsToo)
{
    const auto messages = [](const tests::Arguments& arguments) {
        const tests::Result run = runInProcess(arguments, tests::entries({}));
        EXPECT_EQ(tests::objects(run).size(), 1u) << run.out;
        return tests::lastObject(run, "end")["messages"];
    };
    EXPECT_EQ(messages({"export", "--all", "--to", "/tmp", "--json"}), tests::Json{"No camera was found."});
    EXPECT_EQ(messages({"verify", "f", "--serial", "X", "--json"}),
              tests::Json{"No camera has the serial number \"X\"."});
    EXPECT_EQ(messages({"clone", "--from", "X", "--to", "X", "--json"}),
              tests::Json{"No camera has the serial number \"X\"."});
    EXPECT_EQ(messages({"export", "--json"}), tests::Json{"--to is required"});
    EXPECT_EQ(messages({"list", "--json", "--what"}).size(), 1u);
}

// A text that is no UTF-8 makes no object that cannot be read.
TEST(Usage, WrongBytesInTheCommandLineAreReplaced)
{
    const tests::Result run = runInProcess({"diff", "\xFF", "b", "--json"}, tests::entries({}));
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(tests::lastObject(run, "refusal")["result"], "unreadable file");
}
