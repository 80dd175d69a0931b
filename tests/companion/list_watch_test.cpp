// iefeatures list --watch: over lists that a script gives, and as a program beside an emulated camera.
#include "companion/CompanionFixture.h"
#include "iefeatures/cameras/LineWatch.h"

#include <nlohmann/json.hpp>

#include <QRegularExpression>

#include <csignal>

using ::testing::HasSubstr;
using ::testing::StartsWith;
using tests::Arguments;
using tests::CompanionTest;
using tests::gigeEntry;
using tests::Program;
using tests::Result;
using tests::runInProcess;

namespace
{

struct Look
{
    std::vector<KX_DeviceEntry> entries;
    KX_Status status = KX_OK;
};

// One look after the other; a Ctrl-C comes during the one behind the last.
Result watch(const std::vector<Look>& looks, const Arguments& more = {})
{
    Arguments arguments{"list", "--watch", "--interval", "0"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    size_t next = 0;
    Result run = runInProcess(arguments, [&](std::vector<KX_DeviceEntry>& entries) {
        if (next == looks.size()) {
            std::raise(SIGINT);
            return KX_E_NETWORK;
        }
        entries = looks[next].entries;
        return looks[next++].status;
    });
    const QRegularExpression time("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ");
    run.out = QString::fromStdString(run.out).replace(time, "TIME").toStdString();
    return run;
}

const KX_DeviceEntry kOne = gigeEntry("EMU-1", "S1", "Gate 3", 0x7F000001);
const KX_DeviceEntry kTwo = gigeEntry("EMU-1", "S2", "", 0x7F000002);

class WatchProgram : public CompanionTest
{
};

} // namespace

TEST(ListWatch, TellsWhoAppearsChangesAndGoes)
{
    const KX_DeviceEntry taken = gigeEntry("EMU-1", "S1", "Gate 3", 0x7F000001, KX_AVAILABILITY_IN_USE);
    const KX_DeviceEntry moved = gigeEntry("EMU-1", "S1", "", 0x7F000009, KX_AVAILABILITY_IN_USE);
    const Result run =
        watch({{{kOne}}, {{kOne}}, {{taken, kTwo}}, {{moved, kTwo}}, {{kTwo}}, {{kTwo}}, {{kOne, kTwo}}});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out,
              "TIME  appeared  GigE  EMU-1 S1  \"Gate 3\"  127.0.0.1  free\n"
              "TIME  changed   GigE  EMU-1 S1  \"Gate 3\"  127.0.0.1  in use  (status was free)\n"
              "TIME  appeared  GigE  EMU-1 S2  127.0.0.2  free\n"
              "TIME  changed   GigE  EMU-1 S1  127.0.0.9  in use  (name was Gate 3, address was 127.0.0.1)\n"
              "TIME  gone      GigE  EMU-1 S1  127.0.0.9\n"
              "TIME  appeared  GigE  EMU-1 S1  \"Gate 3\"  127.0.0.1  free\n");
}

TEST(ListWatch, ForgivesOneAnswerThatGotLost)
{
    const Result run = watch({{{kOne}}, {{}}, {{kOne}}, {{}}, {{kOne}}});
    EXPECT_EQ(run.out, "TIME  appeared  GigE  EMU-1 S1  \"Gate 3\"  127.0.0.1  free\n");
}

TEST(ListWatch, TellsCamerasApartThatAreAlike)
{
    const Result run = watch({{{kOne, kOne}}, {{kOne, kOne}}, {{kOne}}, {{kOne}}, {{kOne}}}, {"--json"});
    EXPECT_THAT(run.out, HasSubstr("\"event\":\"gone\""));
    EXPECT_EQ(QString::fromStdString(run.out).count("appeared"), 2);
    EXPECT_EQ(QString::fromStdString(run.out).count('\n'), 4); // and the closing object
}

TEST(ListWatch, PrintsJsonLines)
{
    const KX_DeviceEntry taken = gigeEntry("EMU-1", "S1", "Gate 3", 0x7F000001, KX_AVAILABILITY_IN_USE);
    const Result run = watch({{{kOne}}, {{taken}}}, {"--json"});
    EXPECT_EQ(run.code, 0);
    const std::string head =
        "{\"format_version\":1,\"command\":\"list\",\"kind\":\"event\",\"time\":\"TIME\",";
    const std::string camera =
        "\"camera\":{\"number\":1,\"transport\":\"GigE\",\"model\":\"EMU-1\",\"serial\":"
        "\"S1\",\"name\":\"Gate 3\",\"address\":\"127.0.0.1\"},";
    const std::string rest = "\"reason\":null,\"mac\":\"00:00:00:00:00:00\",\"controller\":null";
    EXPECT_THAT(run.out, StartsWith(head + "\"event\":\"appeared\"," + camera + "\"status\":\"free\"," +
                                    rest + "}\n" + head + "\"event\":\"changed\"," + camera +
                                    "\"status\":\"in use\"," + rest + ",\"was\":{\"status\":\"free\"}}\n"));
}

TEST(ListWatch, OutlivesANetworkThatIsAwayAndSaysSoOnce)
{
    const Look away{{}, KX_E_NETWORK};
    const Result run = watch({{{kOne}}, away, away, away, {{kOne}}, {{kOne}}});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, "TIME  appeared  GigE  EMU-1 S1  \"Gate 3\"  127.0.0.1  free\n");
    EXPECT_EQ(QString::fromStdString(run.err).count("Cameras cannot be looked for: "), 2); // the script's end
}

TEST(ListWatch, EndsWhenTheFirstLookFails)
{
    const Result run = watch({{{}, KX_E_NETWORK}});
    EXPECT_EQ(run.code, 6);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("[0x80000204]\n"));
}

TEST(ListWatch, KeepsControlSequencesFromTheTerminal)
{
    const Result run = watch({{{gigeEntry("A\033[2J", "1\n2", "\r")}}});
    EXPECT_EQ(run.out.find('\033'), std::string::npos);
    EXPECT_EQ(run.out.find('\r'), std::string::npos);
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1);
}

TEST_F(WatchProgram, FollowsACameraUntilCtrlC)
{
    emu::EmulatedCamera& camera = addCamera("S1");
    Program program({"list", "--watch", "--interval", "0.01"});
    program.start();
    const auto nextLine = [&] {
        while (!program.process().canReadLine() && program.process().waitForReadyRead(20000)) {
        }
        return program.process().readLine().toStdString();
    };
    EXPECT_THAT(nextLine(), HasSubstr("  appeared  GigE  EMU-1 S1  " + camera.config().address + "  free\n"));
    camera.stealControl();
    EXPECT_THAT(nextLine(), HasSubstr("  changed   GigE  EMU-1 S1  " + camera.config().address +
                                      "  in use by 127.255.255.254:1  (status was free)\n"));
    camera.stop();
    std::string last = nextLine();
    if (last.find("  unreachable  ") != last.npos) // it went between two requests of one look
        last = nextLine();
    EXPECT_THAT(last, HasSubstr("  gone      GigE  EMU-1 S1  " + camera.config().address + "\n"));
    program.interrupt();
    const Result run = program.finish();
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.err, "");
}

TEST_F(WatchProgram, EndsOnCtrlCAlsoBetweenTwoLooks)
{
    addCamera("S1");
    Program program({"list", "--watch", "--interval", "3600"});
    program.start();
    ASSERT_TRUE(program.process().waitForReadyRead(20000));
    program.end();
    EXPECT_EQ(program.finish().code, 0);
}

TEST_F(WatchProgram, EndsWhenNobodyReadsItsLines)
{
    addCamera("S1");
    Program program({"list", "--watch", "--interval", "0"}, "exec >/dev/full;");
    program.start();
    EXPECT_EQ(program.finish().code, 6);
}
