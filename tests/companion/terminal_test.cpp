// What a person at a terminal sees: the program's messages go to a pseudo terminal.
#include "companion/CompanionFixture.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/files/FeaturesFileInput.h"
#include "iefeatures/files/NamedFeatures.h"
#include "iefeatures/running/ProgressBoard.h"
#include "iefeatures/running/ReadingProgress.h"

#include <QFile>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

using ::testing::HasSubstr;
using ::testing::Not;
using tests::CompanionTest;
using tests::Program;
using tests::Result;

namespace
{

class PseudoTerminal
{
public:
    explicit PseudoTerminal(unsigned short rows = 20)
    {
        m_master = ::posix_openpt(O_RDWR | O_NOCTTY);
        ::grantpt(m_master);
        ::unlockpt(m_master);
        winsize size{};
        size.ws_col = 60;
        size.ws_row = rows;
        ::ioctl(m_master, TIOCSWINSZ, &size);
        m_slave = ::open(name().toLocal8Bit().constData(), O_RDWR | O_NOCTTY); // keeps what is written
    }
    ~PseudoTerminal()
    {
        ::close(m_slave);
        ::close(m_master);
    }
    QString name() const { return ::ptsname(m_master); }

    // All that has been written; nobody may write any more.
    std::string written()
    {
        ::fcntl(m_master, F_SETFL, O_NONBLOCK);
        std::string text;
        char buffer[4096];
        for (ssize_t size; (size = ::read(m_master, buffer, sizeof buffer)) > 0;)
            text.append(buffer, static_cast<size_t>(size));
        return text;
    }

    // Until this has been written; false when it does not come.
    bool awaits(const std::string& text)
    {
        std::string seen;
        char buffer[4096];
        pollfd input{m_master, POLLIN, 0};
        while (seen.find(text) == std::string::npos) {
            if (::poll(&input, 1, 20000) <= 0)
                return false;
            const ssize_t size = ::read(m_master, buffer, sizeof buffer);
            seen.append(buffer, size > 0 ? static_cast<size_t>(size) : 0);
        }
        return true;
    }
    void type(const std::string& text)
    {
        ASSERT_EQ(::write(m_master, text.data(), text.size()), ssize_t(text.size()));
    }

private:
    int m_master = -1;
    int m_slave = -1;
};

class Asked : public CompanionTest
{
protected:
    Asked()
    {
        EXPECT_EQ(addCamera("S1").setNode("Height", int64_t(240)), "");
        target = &addCamera("S2");
        program.process().setStandardInputFile(terminal.name());
        program.process().setStandardErrorFile(terminal.name());
    }
    int64_t height() const { return std::get<int64_t>(target->node("Height").value()); }

    PseudoTerminal terminal;
    Program program{{"clone", "--from", "S1", "--to", "S2"}, "export TERM=xterm;"};
    emu::EmulatedCamera* target;
};

class OnATerminal : public CompanionTest
{
protected:
    std::string screenOf(const QString& environment)
    {
        emu::Faults deaf;
        deaf.discoveryOnly = true;
        addCamera("Faulty").setFaults(deaf);
        addCamera("Sound", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(3); });
        PseudoTerminal terminal;
        Program program({"export", "--all", "--to", folder()}, environment);
        program.process().setStandardErrorFile(terminal.name());
        program.start();
        const Result run = program.finish();
        EXPECT_EQ(run.code, 1);
        EXPECT_EQ(run.out.find('\033'), std::string::npos);
        return terminal.written();
    }
};

class ProgressOfCameras : public ::testing::Test
{
protected:
    // What is told when a tick finds that it is time to.
    std::string told(companion::ProgressBoard& board)
    {
        messages.str({});
        while (messages.str().empty())
            board.tick();
        return messages.str();
    }

    std::ostringstream results;
    std::ostringstream messages;
    companion::Console lines{results, messages, false, false};
};

// Tells another thread that something was written.
class CountedText : public std::stringbuf
{
public:
    std::atomic<int> flushes{0};

private:
    int sync() override
    {
        ++flushes;
        return std::stringbuf::sync();
    }
};

constexpr std::chrono::milliseconds kAtOnce{0};

const std::string kFailure = "EMU-1 Faulty: Failed to export features.Failed to open device.\r\n";

} // namespace

TEST_F(OnATerminal, ProgressIsDrawnOverItself)
{
    const std::string screen = screenOf("export TERM=xterm; unset NO_COLOR;");
    EXPECT_THAT(screen, HasSubstr("\r\033[2A\033[J")); // two lines up, and all of it away
    EXPECT_THAT(screen, HasSubstr("EMU-1 Sound   exporting, "));
    EXPECT_THAT(screen, HasSubstr("\033[31mEMU-1 Faulty  failed"));
    EXPECT_THAT(screen, HasSubstr(kFailure));
    // Nothing of it stays.
    EXPECT_THAT(screen, ::testing::EndsWith("\033[JEMU-1 Faulty: the camera could not be opened: The camera "
                                            "does not answer.\r\n"));
    EXPECT_THAT(screen, Not(HasSubstr(": exporting")));
}

TEST_F(OnATerminal, AnImportTellsHowManyFeaturesItHasDoneOfAll)
{
    addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(2); });
    ASSERT_EQ(tests::runInProcess({"export", "--all", "--to", folder()}).code, 0);
    const std::string file = path("EMU-1_S1.fpk");
    const int all =
        companion::namedBy(companion::readFeaturesFile(QString::fromStdString(file)).content).names.size();
    ASSERT_GT(all, 100);
    PseudoTerminal terminal;
    Program program({"import", file, "--all"}, "export TERM=xterm;");
    program.process().setStandardErrorFile(terminal.name());
    program.start();
    program.finish();
    const std::string screen = terminal.written();
    const std::string ofAll = " of " + std::to_string(all) + " features";
    EXPECT_THAT(screen,
                ::testing::ContainsRegex("EMU-1 S1  importing, [0-9]+" + ofAll + ", about [0-9]+ s left"));
    EXPECT_THAT(screen, Not(HasSubstr(" reads, ")));
}

TEST_F(OnATerminal, ColoursAreLeftOutOnDemand)
{
    const std::string screen = screenOf("export TERM=xterm NO_COLOR=1;");
    EXPECT_THAT(screen, HasSubstr("\033[2A\033[J"));
    EXPECT_THAT(screen, Not(HasSubstr("\033[31m")));
    EXPECT_THAT(screen, HasSubstr("EMU-1 Faulty  failed"));
}

TEST_F(OnATerminal, ADumbOneGetsPlainLines)
{
    const std::string screen = screenOf("export TERM=dumb;");
    EXPECT_THAT(screen, Not(HasSubstr("\033")));
    EXPECT_THAT(screen, HasSubstr("EMU-1 Sound: exporting\r\n"));
    EXPECT_THAT(screen, HasSubstr(kFailure));
    EXPECT_THAT(screen, HasSubstr("EMU-1 Sound: done\r\n"));
}

TEST_F(OnATerminal, ProgressStaysLowerThanTheScreen)
{
    for (int i = 0; i < 7; ++i)
        addCamera("S" + std::to_string(i),
                  [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(3); });
    PseudoTerminal terminal(5);
    Program program({"export", "--all", "--to", folder()}, "export TERM=xterm;");
    program.process().setStandardErrorFile(terminal.name());
    program.start();
    EXPECT_EQ(program.finish().code, 0);
    const std::string screen = terminal.written();
    EXPECT_THAT(screen, HasSubstr("\r\033[3A\033[J"));
    EXPECT_THAT(screen, Not(HasSubstr("\033[4A")));
    EXPECT_THAT(screen, Not(HasSubstr("  done")));
}

TEST_F(OnATerminal, EveryCommandThatReadsTellsHowManyFeaturesItHasDone)
{
    addCamera("S1", [](emu::CameraConfig& config) { config.latency = std::chrono::milliseconds(4); });
    ASSERT_EQ(tests::runInProcess({"export", "--all", "--to", folder()}).code, 0);
    const std::string file = path("EMU-1_S1.fpk");
    const std::string some = ", [0-9]+ of [0-9]+ features";
    const std::vector<std::pair<tests::Arguments, std::string>> commands = {
        {{"export", "--all", "--to", folder()}, "exporting" + some},
        {{"plan", file, "--all"}, "checking" + some},
        {{"verify", file, "--all"}, "checking" + some},
        {{"import", file, "--all", "--verify"}, "verifying" + some},
        {{"diff", file, "serial:S1"}, "exporting" + some},
        {{"get", "Width", "Height", "--all"}, "reading"}};
    const auto screenOf = [](const tests::Arguments& command) {
        PseudoTerminal terminal;
        Program program(command, "export TERM=xterm;");
        program.process().setStandardErrorFile(terminal.name());
        program.start();
        EXPECT_EQ(program.finish().code, 0) << command[0];
        return terminal.written();
    };
    for (const auto& [command, progress] : commands) {
        const std::string screen = screenOf(command);
        EXPECT_THAT(screen, ::testing::ContainsRegex("EMU-1 S1  " + progress)) << command[0];
        EXPECT_THAT(screen, ::testing::EndsWith("\033[J")) << "nothing of it stays";
    }
    EXPECT_EQ(screenOf({"plan", file, "--all", "--json"}), "") << "scripts are told nothing of it";
}

TEST_F(OnATerminal, ReportsAreLaidOutForIt)
{
    addCamera("S1");
    ASSERT_EQ(tests::runInProcess({"export", "--all", "--to", folder()}).code, 0);
    const auto screenOfShow = [&](const tests::Arguments& more) {
        tests::Arguments words{"show", path("EMU-1_S1.fpk")};
        words.insert(words.end(), more.begin(), more.end());
        PseudoTerminal terminal;
        Program program(words, "unset COLUMNS;");
        program.process().setStandardOutputFile(terminal.name());
        std::string seen;
        program.start();
        // A terminal keeps little of what nobody reads.
        while (!program.process().waitForFinished(10))
            seen += terminal.written();
        return QString::fromStdString(seen + terminal.written()).remove('\r').split('\n');
    };
    const auto isTooLong = [](const QString& line) { return companion::displayWidth(line) > 60; };
    const QStringList narrow = screenOfShow({});
    EXPECT_GT(narrow.size(), 100);
    EXPECT_EQ(std::count_if(narrow.begin(), narrow.end(), isTooLong), 0);
    const QStringList wide = screenOfShow({"--wide"});
    EXPECT_GT(std::count_if(wide.begin(), wide.end(), isTooLong), 0);
}

TEST_F(ProgressOfCameras, IsALineWhereNothingWasToldForAWhile)
{
    companion::ProgressBoard board(lines, {"A", "B", "C"}, kAtOnce);
    board.begin(0, "exporting");
    board.advance(0, {5, 10});
    board.begin(1, "exporting");
    board.advance(1, {1, 10});
    EXPECT_THAT(told(board), ::testing::MatchesRegex("0 of 3 cameras done; B: exporting, 1 of 10 features, "
                                                     "about [0-9]+ s left\n"));
    board.end(1, "done", false);
    EXPECT_THAT(told(board), ::testing::StartsWith("1 of 3 cameras done; A: exporting, 5 of 10 features, "));
}

TEST_F(ProgressOfCameras, IsNoLineWhereSomethingWasTold)
{
    constexpr std::chrono::milliseconds silence{200};
    std::ostringstream ofOther;
    companion::Console others{results, ofOther, false, false};
    companion::ProgressBoard other(others, {"A"}, silence);
    companion::ProgressBoard board(lines, {"A"}, silence);
    other.begin(0, "exporting");
    board.begin(0, "exporting");
    while (ofOther.str().empty()) {
        board.breakSilence();
        board.tick();
        other.tick();
    }
    EXPECT_EQ(ofOther.str(), "A: exporting\n");
    EXPECT_EQ(messages.str(), "");
}

TEST_F(ProgressOfCameras, TellsWhatIsKnownWhereNobodyKnowsAll)
{
    companion::ProgressBoard board(lines, {"A"}, kAtOnce);
    board.begin(0, "importing");
    board.advance(0, {0, 0, "7 reads, 3 requests"});
    EXPECT_EQ(told(board), "A: importing, 7 reads, 3 requests\n");
}

TEST_F(ProgressOfCameras, OfReadingIsToldWhileTheReaderIsBusy)
{
    companion::ListedCamera camera;
    camera.model = "EMU-1";
    camera.serial = "S1";
    CountedText text;
    std::ostream stream(&text);
    companion::Console console(results, stream, false, false);
    {
        companion::ReadingProgress progress(console, {camera}, "checking", kAtOnce);
        progress.advance(0, 3);
        progress.advance(0, 3); // in hand; one is done
        for (const int before = text.flushes; text.flushes < before + 2;)
            std::this_thread::yield();
    }
    EXPECT_THAT(text.str(), HasSubstr("EMU-1 S1: checking, 1 of 3 features, about "));
}

TEST(Console, PutsMessagesAndResultsAboveTheBlock)
{
    std::ostringstream both;
    companion::Console console(both, both, true, false);
    console.drawBlock({"a", "b"});
    console.err(std::string("message\n"));
    console.out(std::string("result\n"));
    console.drawBlock({});
    const std::string away = "\r\033[2A\033[J";
    EXPECT_EQ(both.str(), "a\nb\n" + away + "message\na\nb\n" + away + "result\na\nb\n" + away);
}

TEST(Console, LetsNothingThroughThatATerminalActsOn)
{
    std::ostringstream out;
    std::ostringstream err;
    companion::Console console(out, err, false, false);
    console.err(std::string("a\033[2Jb\r\n\nc\n"));
    console.note(std::string("\xC2\x9B"
                             "2J\n"));
    console.out(std::string("d\a\n"));
    EXPECT_EQ(err.str(), "a\uFFFD[2Jb\uFFFD\n\nc\n\uFFFD"
                         "2J\n");
    EXPECT_EQ(out.str(), "d\uFFFD\n");
    out.str({});
    console.beginJson("list");
    console.object("camera", {{"model", "\xC2\x9B\xE2\x80\xAE\xF3\xA0\x80\x81\x7F\033"}});
    EXPECT_THAT(out.str(), HasSubstr("\"\\u009b\\u202e\\udb40\\udc01\\u007f\\u001b\""));
    EXPECT_EQ(tests::Json::parse(out.str())["model"], "\xC2\x9B\xE2\x80\xAE\xF3\xA0\x80\x81\x7F\033");
}

TEST(Console, DrawsNothingWhereItCannotDrawOver)
{
    std::ostringstream both;
    companion::Console console(both, both, false, false);
    console.drawBlock({"a"});
    EXPECT_EQ(both.str(), "");
}

TEST_F(Asked, APersonAgreesWithALetter)
{
    program.start();
    ASSERT_TRUE(terminal.awaits("[y/N] "));
    EXPECT_EQ(height(), 480);
    terminal.type("y\n");
    EXPECT_EQ(program.finish().code, 0);
    EXPECT_EQ(height(), 240);
}

TEST_F(Asked, CtrlCIsAnAnswerToo)
{
    program.start();
    ASSERT_TRUE(terminal.awaits("[y/N] "));
    program.interrupt();
    EXPECT_EQ(program.finish().code, 130);
    EXPECT_EQ(height(), 480);
}
