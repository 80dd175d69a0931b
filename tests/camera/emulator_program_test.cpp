// The program camera_emulator: its command line, its exit codes, its life.
#include "camera/EmulatorFixture.h"
#include "camera_emulator/Files.h"
#include "camera_emulator/Options.h"
#include "support/Processes.h"
#include "support/SystemTexts.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <QFileInfo>
#include <QProcess>

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <thread>

using emu::parseOptions;
using std::chrono::milliseconds;
using testing::HasSubstr;

namespace
{

std::string temporary(const std::string& name)
{
    return testing::TempDir() + "/emulator_program_" + std::to_string(getpid()) + "_" + name;
}

// The program as a process of its own; its output goes to a file.
class Program
{
public:
    explicit Program(const std::vector<std::string>& arguments) : m_output(temporary("output"))
    {
        QStringList words;
        for (const std::string& argument : arguments)
            words += QString::fromStdString(argument);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.setStandardOutputFile(QString::fromStdString(m_output));
        tests::startProgram(m_process, CAMERA_EMULATOR, words);
        EXPECT_TRUE(m_process.waitForStarted());
    }
    ~Program()
    {
        m_process.kill();
        m_process.waitForFinished();
        std::remove(m_output.c_str());
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    QProcess& process() { return m_process; }
    // The exit code; -1 when it has crashed.
    int wait()
    {
        m_process.waitForFinished(-1);
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    std::string output() const { return emu::readFile(m_output).value_or(""); }

private:
    std::string m_output;
    QProcess m_process;
};

template <typename Condition>
bool waitUntil(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(milliseconds(2));
    }
    return true;
}

bool appears(const std::string& path)
{
    return waitUntil([&] { return QFileInfo::exists(QString::fromStdString(path)); });
}

using Names = std::set<std::string>;

// What the expression's first group matches in the text.
Names found(const std::string& text, const char* expression)
{
    const std::regex wanted(expression);
    Names names;
    for (std::sregex_iterator it(text.begin(), text.end(), wanted), end; it != end; ++it)
        names.insert((*it)[1]);
    return names;
}

// The manual page with its hyphens as they are typed.
std::string manPage()
{
    const std::string page = emu::readFile(IE_EMULATOR_MAN_PAGE).value_or("");
    return std::regex_replace(page, std::regex(R"(\\-)"), "-");
}

Names knownFaults()
{
    emu::CameraOptions camera;
    const std::string told = emu::parseFault("none of them", camera);
    return found(told.substr(told.find("Known:")), "([a-z]+(?:-[a-z]+)*)(?=[,.])");
}

} // namespace

TEST(EmulatorProgram, LeavesNothingBesideAFileThatCannotBeWritten)
{
    const std::string folder = temporary("files");
    std::filesystem::create_directories(folder + "/ready/taken");
    EXPECT_FALSE(emu::writeFile(folder + "/ready", "ready\n"));
    const std::filesystem::directory_iterator left(folder);
    EXPECT_EQ(std::distance(left, {}), 1);
    std::filesystem::remove_all(folder);
}

TEST(EmulatorProgram, changesRegistersBehindTheHostsBackWhenAsked)
{
    const std::string first = tests::freshLoopbackAddress();
    const std::string second = tests::freshLoopbackAddress();
    const std::string ready = temporary("ready");
    const std::string changes = temporary("changes");
    Program program({"--ready-file", ready, "--address", first, "--changes", changes, "--address", second});
    ASSERT_TRUE(appears(ready));
    const auto says = [&](const std::string& lines) {
        return waitUntil([&] { return program.output() == "ready\n" + lines; });
    };
    EXPECT_TRUE(tests::askEmulatorToChange(program.process()));
    const std::string unread = "camera_emulator: " + first + ": " + changes + " cannot be read.\nchanged\n";
    EXPECT_TRUE(says(unread)) << program.output();

    ASSERT_TRUE(emu::writeFile(changes, R"({"nodes": {"Width": 128, "Nope": 1}})"));
    EXPECT_TRUE(tests::askEmulatorToChange(program.process()));
    EXPECT_TRUE(says(unread + "camera_emulator: " + first +
                     ": not changed: Node Nope is no node of the description.\nchanged\n"))
        << program.output();
    EXPECT_EQ(GvcpClient(first).read({0x11010}).payload, (gvcp::Bytes{0, 0, 0, 128}));
    EXPECT_EQ(GvcpClient(second).read({0x11010}).payload, (gvcp::Bytes{0, 0, 2, 128}));
    std::remove(ready.c_str());
    std::remove(changes.c_str());
}

TEST(EmulatorProgram, tellsTheSameOptionsInHelpManualAndParser)
{
    const std::string help = parseOptions({"--help"}).message;
    const Names options = found(help, R"((?:^|\s|,)(--[a-z]+(?:-[a-z]+)*)(?=\s))");
    EXPECT_EQ(options.size(), 32u) << help;
    EXPECT_EQ(found(manPage(), R"(\.TP\n\.B[IR]? (?:-h ", " )?"?(--[a-z]+(?:-[a-z]+)*))"), options);
    for (const std::string& option : options)
        EXPECT_THAT(parseOptions({"--address", "127.0.0.1", option}).message,
                    testing::Not(HasSubstr("not expected")))
            << option;
}

TEST(EmulatorProgram, tellsTheSameFaultsInHelpManualAndParser)
{
    const Names faults = knownFaults();
    EXPECT_EQ(faults.size(), 13u);
    const std::string help = parseOptions({"--help"}).message;
    EXPECT_EQ(found(help.substr(help.find("lose=N")), R"((?:^|\s{2,}|N )([a-z]+(?:-[a-z]+)*)(?==|\[=|  ))"),
              faults);
    const std::string page = manPage();
    const size_t begin = page.find(".SS Faults"), end = page.find(".SH EXIT STATUS");
    ASSERT_LT(begin, end);
    EXPECT_EQ(found(page.substr(begin, end - begin), R"(\.TP\n\.(?:BI?|BR) ([a-z]+(?:-[a-z]+)*))"), faults);
}

TEST(EmulatorProgram, runsSeveralCamerasUntilItIsEnded)
{
    const std::string first = tests::freshLoopbackAddress();
    const std::string second = tests::freshLoopbackAddress();
    const std::string ready = temporary("ready");
    const std::string stats = temporary("stats");
    const std::string seed = temporary("seed");
    ASSERT_TRUE(emu::writeFile(seed, R"({"nodes": {"Width": 128}})"));
    for (const auto& askToEnd : {tests::askEmulatorToEnd, tests::interruptProgram}) {
        Program program({"--ready-file", ready, "--stats", stats, "--address", first, "--serial", "A1",
                         "--model", "MA", "--user-name", "Left", "--address=" + second, "--serial=B2",
                         "--seed", seed, "--fault", "busy=1"});
        ASSERT_TRUE(appears(ready));
        GvcpClient firstHost(first);
        GvcpClient secondHost(second);
        const auto found = gvcp::parseDiscovery(firstHost.ask(gvcp::encodeDiscovery(1)).payload);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->serialNumber, "A1");
        EXPECT_EQ(found->model, "MA");
        EXPECT_EQ(found->userName, "Left");
        EXPECT_EQ(secondHost.read({0x11010}).status, gvcp::Busy);
        EXPECT_EQ(secondHost.read({0x11010}).payload, (gvcp::Bytes{0, 0, 0, 128}));
        EXPECT_TRUE(askToEnd(program.process()));
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(program.output(), "ready\n");
        const auto json = nlohmann::json::parse(emu::readFile(stats).value_or(""), nullptr, false);
        ASSERT_TRUE(json.is_array());
        ASSERT_EQ(json.size(), 2u);
        EXPECT_EQ(json[0]["address"], first);
        EXPECT_EQ(json[0]["counters"]["discovery"], 1);
        EXPECT_EQ(json[1]["address"], second);
        EXPECT_EQ(json[1]["counters"]["readReg"], 1);
        EXPECT_EQ(json[1]["counters"]["refused"], 1);
        std::remove(ready.c_str());
        std::remove(stats.c_str());
    }
    std::remove(seed.c_str());
}

TEST(EmulatorProgram, withoutAStatsFileTheCountersArePrinted)
{
    const std::string ready = temporary("ready");
    Program program({"--ready-file", ready, "--address", tests::freshLoopbackAddress()});
    ASSERT_TRUE(appears(ready));
    EXPECT_TRUE(tests::askEmulatorToEnd(program.process()));
    EXPECT_EQ(program.wait(), 0);
    EXPECT_THAT(program.output(), testing::StartsWith("ready\n[{\"address\":\"127."));
    EXPECT_THAT(program.output(), HasSubstr("\"requests\":0,"));
    std::remove(ready.c_str());
}

// A camera that is not what was asked for is none to try things with.
TEST(EmulatorProgram, aSeedThatIsRejectedIsAnError)
{
    const std::string seed = temporary("seed");
    const std::string address = tests::freshLoopbackAddress();
    const std::pair<const char*, const char*> cases[] = {
        {R"({"nodes": {"Width": 128, "Nope": 1}})", "not seeded: Node Nope is no node of the description.\n"},
        {R"({"memory": {"0x20000": "xy"}})",
         "not seeded: The seed for address 0x20000 is not an address with hexadecimal bytes.\n"},
        {"Width = 128", "not seeded: The seed is no JSON object.\n"}};
    for (const auto& [text, sentence] : cases) {
        ASSERT_TRUE(emu::writeFile(seed, text));
        Program program({"--address", address, "--seed", seed});
        EXPECT_EQ(program.wait(), 2) << text;
        EXPECT_EQ(program.output(), "camera_emulator: " + address + ": " + sentence);
    }
    std::remove(seed.c_str());
}

namespace
{

struct Ending
{
    std::vector<std::string> arguments;
    int code;
    std::string output;
};

void expectEndings(const std::vector<Ending>& endings)
{
    for (const Ending& each : endings) {
        Program program(each.arguments);
        EXPECT_EQ(program.wait(), each.code) << each.output;
        EXPECT_THAT(program.output(), HasSubstr(each.output));
    }
}

} // namespace

TEST(EmulatorProgram, exitCodesSayWhatWentWrong)
{
    const std::string free = tests::freshLoopbackAddress();
    emu::EmulatedCamera occupant(freshConfig());
    ASSERT_TRUE(occupant.start());
    expectEndings({
        {{"--help"}, 0, "--transport-latency"},
        {{}, 2, "No camera: give at least one --address, --link or --socket."},
        {{"--model", "M"}, 2, "--model"},
        {{"--address", free, "--transport", "serial"}, 2, "A camera with --address does not speak serial."},
        {{"--transport", "usb3"}, 2, "A USB3 Vision camera cannot be emulated for other programs"},
        {{"--address", free, "--transport=usb3"}, 2, "under umockdev"},
        {{"--link", "/nowhere/line", "--transport", "gige"}, 2, "A camera with --link does not speak gige."},
        {{"--address", "here"}, 2, "\"here\" is no IPv4 address."},
        {{"--address", free, "--dhcp-address", "there"}, 2, "\"there\" is no IPv4 address."},
        {{"--address", free, "--mac", "02:00:00:00:00:1x"}, 2, "\"02:00:00:00:00:1x\" is no MAC address."},
        {{"--address", free, "--what"}, 2, "--what"},
        {{"--address", free, "--description", "/nowhere.xml"},
         2,
         "The description /nowhere.xml cannot be read or is empty."},
        {{"--address", free, "--description", testing::TempDir()}, 2, "cannot be read or is empty."},
        {{"--address", free, "--seed", "/nowhere.json"}, 2, "The seed file /nowhere.json cannot be read."},
        {{"--address", free, "--fault", "rust"}, 2, "There is no fault \"rust\"."},
        {{"--address", free, "--fault", "busy"}, 2, "Write the fault as busy=N, not \"busy\"."},
        {{"--address", free, "--ready-file", "/nowhere/ready"}, 2, "/nowhere/ready cannot be written."},
        {{"--address", occupant.config().address}, 6, tests::addressInUse()},
        {{"--address", free, "--address", "10.255.255.1"},
         6,
         "UDP port 3956 of 10.255.255.1 cannot be taken"},
    });
}

TEST(EmulatorProgram, exitCodesSayWhatWentWrongWithALine)
{
    expectEndings({
        {{"--link", "/nowhere/line"}, 6, "/nowhere/line cannot be made: No such file or directory."},
        {{"--link", "/nowhere/line", "--baud", "1234"}, 2, "1234 is no baud rate of a camera."},
    });
}

TEST(EmulatorOptions, everyGroupIsACameraOfItsOwn)
{
    const auto parsed = parseOptions({"--stats",
                                      "s",
                                      "--address",
                                      "127.0.0.1",
                                      "--serial",
                                      "A",
                                      "--transport-latency",
                                      "7",
                                      "--zipped",
                                      "--address",
                                      "127.0.0.2",
                                      "--manufacturer",
                                      "X",
                                      "--firmware",
                                      "2",
                                      "--first-url",
                                      "U1",
                                      "--second-url",
                                      "U2",
                                      "--broadcast",
                                      "--ready-file",
                                      "r"});
    ASSERT_TRUE(parsed.options) << parsed.message;
    EXPECT_EQ(parsed.options->statsFile, "s");
    EXPECT_EQ(parsed.options->readyFile, "r");
    ASSERT_EQ(parsed.options->cameras.size(), 2u);
    const emu::CameraConfig& first = parsed.options->cameras[0].config;
    const emu::CameraConfig& second = parsed.options->cameras[1].config;
    EXPECT_EQ(first.address, "127.0.0.1");
    EXPECT_EQ(first.serial, "A");
    EXPECT_EQ(first.latency, milliseconds(7));
    EXPECT_TRUE(first.zipped);
    EXPECT_FALSE(first.broadcast);
    EXPECT_EQ(second.serial, emu::CameraConfig().serial);
    EXPECT_EQ(second.manufacturer, "X");
    EXPECT_EQ(second.firmware, "2");
    EXPECT_EQ(second.firstUrl, "U1");
    EXPECT_EQ(second.secondUrl, "U2");
    EXPECT_FALSE(second.zipped);
    EXPECT_TRUE(second.broadcast);
}

TEST(EmulatorOptions, faultsAreReadFromWords)
{
    emu::CameraOptions camera;
    for (const char* fault : {"lose=3", "lose-answers=4", "delay=5", "silent=6:7", "discovery-only",
                              "refuse-concatenation", "no-concatenation", "refuse=0x1000:0x8006:8",
                              "refuse=32", "busy=always", "pending=9:10", "steal=11", "cut-description=12"})
        EXPECT_EQ(emu::parseFault(fault, camera), "") << fault;
    const emu::Faults& faults = camera.faults;
    EXPECT_EQ(faults.loseRequests, 3u);
    EXPECT_EQ(faults.loseAnswers, 4u);
    EXPECT_EQ(faults.delay, milliseconds(5));
    ASSERT_TRUE(faults.silence);
    EXPECT_EQ(faults.silence->after, 6u);
    EXPECT_EQ(faults.silence->duration, milliseconds(7));
    EXPECT_TRUE(faults.discoveryOnly);
    EXPECT_TRUE(faults.refuseConcatenation);
    EXPECT_FALSE(camera.config.concatenation);
    ASSERT_EQ(faults.refusals.size(), 2u);
    EXPECT_EQ(faults.refusals[0].address, 0x1000u);
    EXPECT_EQ(faults.refusals[0].status, gvcp::AccessDenied);
    EXPECT_EQ(faults.refusals[0].length, 8u);
    EXPECT_EQ(faults.refusals[1].address, 32u);
    EXPECT_EQ(faults.refusals[1].status, gvcp::InvalidAddress);
    EXPECT_EQ(faults.refusals[1].length, 4u);
    EXPECT_EQ(faults.busy, emu::kAlways);
    EXPECT_EQ(faults.pendingTime, milliseconds(9));
    EXPECT_EQ(faults.pending, 10u);
    EXPECT_EQ(faults.stealControlAfter, 11u);
    EXPECT_EQ(camera.config.descriptionLimit, 12u);

    emu::CameraOptions other;
    EXPECT_EQ(emu::parseFault("silent", other), "");
    EXPECT_EQ(other.faults.silence->after, 0u);
    EXPECT_FALSE(other.faults.silence->duration);
    EXPECT_EQ(emu::parseFault("pending=9", other), "");
    EXPECT_EQ(other.faults.pending, emu::kAlways);
    for (const char* wrong : {"", "lose", "lose=", "lose=-1", "lose=1:2", "lose=1:", "discovery-only=1",
                              "busy=1x", "delay=99999999999", "refuse=0x", "refuse=0xG"})
        EXPECT_NE(emu::parseFault(wrong, other), "") << wrong;
}
