#include "companion/CompanionFixture.h"
#include "support/SystemTexts.h"

#include <QFile>
#include <QRegularExpression>

using ::testing::HasSubstr;
using ::testing::Not;
using tests::CompanionTest;
using tests::Result;
using tests::runInProcess;

namespace
{

const char kLine[] = "Get XML_NODE_FIRMWARE failed.";

// A camera without a firmware version: its export fails with a log line.
class Logging : public CompanionTest
{
protected:
    Logging()
    {
        addCamera("S1", [](emu::CameraConfig& config) {
            config.description = "<RegisterDescription><Category Name=\"Root\"/></RegisterDescription>";
        });
    }
    Result exportWith(tests::Arguments options)
    {
        options.insert(options.begin(), {"export", "--all", "--to", folder()});
        return runInProcess(options);
    }
};

} // namespace

TEST_F(Logging, IsDroppedWithoutAWish)
{
    const Result run = exportWith({});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.err, HasSubstr("EMU-1 S1: Failed to save feature.\n"));
    EXPECT_THAT(run.err, Not(HasSubstr(kLine)));
}

TEST_F(Logging, IsShownOnDemand)
{
    const Result run = exportWith({"--verbose"});
    EXPECT_THAT(run.err, HasSubstr(std::string("Z critical \"") + kLine + "\"\n"));
    EXPECT_THAT(run.out, Not(HasSubstr(kLine)));
}

TEST_F(Logging, IsAppendedToAFile)
{
    QFile file(QString::fromStdString(path("log")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("earlier\n");
    file.close();
    const Result run = exportWith({"--log", path("log")});
    EXPECT_THAT(run.err, Not(HasSubstr(kLine)));
    const QList<QByteArray> lines = fileText("log").split('\n');
    EXPECT_EQ(lines.first(), "earlier");
    const QByteArray last = lines.at(lines.size() - 2);
    const QRegularExpression line(
        "^2\\d{3}-\\d\\d-\\d\\dT[\\d:]{8}\\.\\d{3}Z critical \"Get XML_NODE_FIRMWARE failed\\.\"$");
    EXPECT_TRUE(line.match(last).hasMatch()) << last.constData();
}

TEST_F(Logging, StopsBeforeTheJobsWhenTheFileCannotBeOpened)
{
    const Result run = exportWith({"--log", path("missing/log")});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "The log file cannot be opened: " + path("missing/log") + " (" + tests::noSuchFolder() + ")\n");
}

TEST_F(Logging, IsMissedWhenTheFileCannotBeWritten)
{
    addCamera("S2");
    QFile log(
        QString::fromStdString(path("log"))); // as large as a file may be, and larger than the export is
    ASSERT_TRUE(log.open(QIODevice::WriteOnly) && log.resize(1 << 20));
    tests::Program program({"export", "--serial", "S2", "--to", folder(), "--log", path("log")},
                           "trap '' XFSZ; ulimit -f 2048;");
    program.start();
    const Result run = program.finish();
    EXPECT_THAT(run.out, HasSubstr("\n1 exported, 0 failed\n"));
    // The sound camera's export logs, too: what the description does not hold is told line by line.
    EXPECT_EQ(run.code, 6);
    EXPECT_THAT(run.err, HasSubstr("The log file cannot be written: " + path("log") + "\n"));
}
