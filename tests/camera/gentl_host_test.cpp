// The helper process of a producer, request by request: what it answers, and what is told when it cannot be
// started, hangs, crashes or is no producer.
#include "GentlStage.h"

#include "KXCameraControl/ports/gentl/GenTlSettings.h"
#include "KXCameraControl/ports/gentl/HostLink.h"
#include "KXCameraControl/ports/gentl/MakersLibraries.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace kx;
using gentl::Reader;
using gentl::Request;
using gentl::Writer;
using testing::HasSubstr;

namespace
{

Writer message(Request request)
{
    return Writer().u32(static_cast<uint32_t>(request));
}

class GentlHost : public testing::Test
{
protected:
    GentlHost() { setenv("KX_GENTL_TIMEOUT", "2000", 1); }

    std::unique_ptr<HostLink> open(const std::string& producer)
    {
        auto link = HostLink::open(producer, nullptr, reply);
        EXPECT_EQ(link != nullptr, reply.status == KX_OK);
        return link;
    }
    HostReply openDevice(HostLink& link, const std::string& device, int32_t access = gentl::AccessExclusive)
    {
        EXPECT_EQ(link.request(message(Request::Look)).status, KX_OK);
        return link.request(message(Request::Open).text("EMU-Grabber").text(device).i32(access));
    }

    GentlStage stage;
    HostReply reply;
};

// The process may open so many files more.
class FewDescriptors
{
public:
    explicit FewDescriptors(rlim_t more)
    {
        const int next = dup(STDERR_FILENO);
        close(next);
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &m_before), 0);
        const rlimit few{static_cast<rlim_t>(next) + more, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    }
    ~FewDescriptors() { EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &m_before), 0); }

private:
    rlimit m_before{};
};

} // namespace

TEST_F(GentlHost, producersAreFilesThatEndInCtiOfAllFoldersOnce)
{
    const std::string second = stage.addProducer("b");
    const std::string first = stage.addProducer("a");
    stage.addFile("notes.txt", "no producer");
    std::filesystem::create_directories(stage.folder() / "more");
    std::filesystem::create_symlink(first, stage.folder() / "more" / "again.cti");
    const std::string folders = "/no/such/folder:" + stage.folder().string() +
                                "::" + (stage.folder() / "more").string() + ":" + stage.folder().string();
    setenv("GENICAM_GENTL64_PATH", folders.c_str(), 1);
    EXPECT_EQ(gentlProducers(), (std::vector<std::string>{first, second}));
    unsetenv("GENICAM_GENTL64_PATH");
    EXPECT_TRUE(gentlProducers().empty());
}

TEST_F(GentlHost, aCameraIsOpenedReadAndWritten)
{
    emu::GrabberCamera& camera = stage.addCamera("A");
    const auto link = open(stage.addProducer());
    ASSERT_TRUE(link) << reply.text;
    const HostReply looked = link->request(message(Request::Look));
    ASSERT_EQ(looked.items.size(), 1u);
    Reader item(looked.items[0]);
    for (const char* text :
         {"EMU-Grabber", "EMU-Grabber (emulated)", "EMU-A", "Emulated cameras", "EMU-1", "A", "1.0.0", "CXP"})
        EXPECT_EQ(item.text(), text);
    EXPECT_EQ(item.i32(), int32_t(gentl::StatusReadWrite));

    ASSERT_EQ(openDevice(*link, "EMU-A").status, KX_OK);
    EXPECT_TRUE(camera.isControlled());
    EXPECT_EQ(link->request(message(Request::Write).u64(0x20000).block("abcd", 4)).status, KX_OK);
    EXPECT_EQ(camera.peek(0x20000, 4), (emu::Bytes{'a', 'b', 'c', 'd'}));
    const HostReply read = link->request(message(Request::Read).u64(0x20001).u32(3));
    EXPECT_EQ(Reader(read.content).block(), (gentl::Bytes{'b', 'c', 'd'}));
    EXPECT_EQ(link->request(message(Request::Close)).status, KX_OK);
    EXPECT_FALSE(camera.isControlled());
}

TEST_F(GentlHost, refusalsComeWithTheProducersWords)
{
    stage.addCamera("A");
    const std::string path = stage.addProducer();
    const auto link = open(path);
    ASSERT_TRUE(link) << reply.text;
    ASSERT_EQ(openDevice(*link, "EMU-A").status, KX_OK);
    const HostReply refused = link->request(message(Request::Write).u64(0x44).block("abcd", 4));
    EXPECT_EQ(refused.status, KX_E_DEVICE);
    EXPECT_EQ(refused.code, int32_t(gentl::ErrAccessDenied));
    EXPECT_EQ(refused.text, "The GenTL producer " + path +
                                " refuses: GCWritePort: the camera refuses it, or does not answer (-1005).");
    const HostReply second = link->request(message(Request::Open).text("EMU-Grabber").text("EMU-A").i32(4));
    EXPECT_EQ(second.status, KX_E_MALFORMED_ANSWER) << "one module for each link";
}

TEST_F(GentlHost, linksOfOneProducerShareItsHelperAndEachHasItsOwnDevice)
{
    emu::GrabberCamera& a = stage.addCamera("A");
    emu::GrabberCamera& b = stage.addCamera("B");
    const std::string path = stage.addProducer();
    auto first = open(path);
    const auto second = open(path);
    ASSERT_TRUE(first && second);
    ASSERT_EQ(openDevice(*first, "EMU-A").status, KX_OK);
    ASSERT_EQ(openDevice(*second, "EMU-B").status, KX_OK);
    EXPECT_TRUE(a.isControlled());
    const auto third = open(path);
    EXPECT_EQ(openDevice(*third, "EMU-A").code, int32_t(gentl::ErrResourceInUse));
    first.reset(); // without a word
    for (int i = 0; i < 1000 && a.isControlled(); ++i)
        usleep(5000);
    EXPECT_FALSE(a.isControlled());
    EXPECT_TRUE(b.isControlled());
}

// The helper is others' as well.
TEST_F(GentlHost, aLinkThatThereAreNoDescriptorsForLeavesTheHelperAlone)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "SKIPPED: the sanitizers need descriptors of their own to look at an object";
#endif
    stage.addCamera("A");
    const std::string path = stage.addProducer();
    const auto link = open(path);
    ASSERT_TRUE(link) << reply.text;
    for (rlim_t more = 0; more < 8; ++more) {
        gentl::Channel losses;
        std::unique_ptr<HostLink> second;
        {
            const FewDescriptors few(more);
            second = HostLink::open(path, &losses, reply);
        }
        EXPECT_EQ(second != nullptr, losses.isOpen()) << more;
        EXPECT_TRUE(second || !reply.text.empty()) << more;
        const HostReply looked = link->request(message(Request::Look));
        ASSERT_EQ(looked.status, KX_OK) << more << ": " << looked.text << " / " << reply.text;
    }
    gentl::Channel losses;
    EXPECT_TRUE(HostLink::open(path, &losses, reply)) << reply.text;
}

TEST_F(GentlHost, whatIsNoProducerIsToldWithoutStartingAnything)
{
    const std::string text =
        stage.addFile("text.cti", "just some words, and enough of them to fill the head of a file");
    EXPECT_FALSE(open(text));
    EXPECT_EQ(reply.status, KX_E_FILE_FORMAT);
    EXPECT_EQ(reply.text, "The GenTL producer " + text + " is no shared library.");

    std::ifstream good(CAMERA_EMULATOR_GENTL, std::ios::binary);
    std::string head(64, '\0');
    good.read(head.data(), 64);
    head[18] = head[18] == 40 ? 62 : 40; // e_machine
    const std::string other = stage.addFile("other.cti", head);
    EXPECT_FALSE(open(other));
    EXPECT_EQ(reply.status, KX_E_FILE_FORMAT);
    EXPECT_EQ(reply.text, "The GenTL producer " + other + " is made for another kind of machine.");

    std::filesystem::create_directories(stage.folder() / "folder.cti");
    EXPECT_FALSE(open((stage.folder() / "folder.cti").string()));
    EXPECT_THAT(reply.text, HasSubstr(" is no file."));
    EXPECT_FALSE(open((stage.folder() / "none.cti").string()));
    EXPECT_EQ(reply.status, KX_E_FILE_FORMAT);
}

TEST_F(GentlHost, whatCannotBeLoadedSaysWhy)
{
    std::ifstream good(CAMERA_EMULATOR_GENTL, std::ios::binary);
    std::string head(512, '\0');
    good.read(head.data(), 512);
    EXPECT_FALSE(open(stage.addFile("cut.cti", head)));
    EXPECT_EQ(reply.status, KX_E_FILE_FORMAT);
    EXPECT_THAT(reply.text, HasSubstr("cut.cti cannot be used: it cannot be loaded: "));
}

TEST_F(GentlHost, aProducerThatLacksFunctionsIsToldByTheirNames)
{
    const auto file = stage.folder() / "poor.cti";
    std::filesystem::copy_file(POOR_PRODUCER, file);
    EXPECT_FALSE(open(file.string()));
    EXPECT_EQ(reply.status, KX_E_FILE_FORMAT);
    EXPECT_THAT(
        reply.text,
        HasSubstr("poor.cti cannot be used: it is no GenTL producer: it lacks GCWritePort, DevGetPort."));
}

TEST_F(GentlHost, aHelperThatCannotBeStartedIsTold)
{
    setenv("KX_GENTL_HOST", "/no/such/helper", 1);
    EXPECT_FALSE(open(stage.addProducer()));
    EXPECT_EQ(reply.status, KX_E_FILE);
    EXPECT_EQ(reply.text, "The helper /no/such/helper cannot be started: No such file or directory.");
}

TEST_F(GentlHost, aHelperThatIsAnotherProgramIsTold)
{
    setenv("KX_GENTL_HOST", "/bin/true", 1);
    EXPECT_FALSE(open(stage.addProducer()));
    EXPECT_EQ(reply.status, KX_E_CONNECTION_LOST);
    EXPECT_THAT(reply.text, HasSubstr("(exit code 0)"));
}

TEST_F(GentlHost, aHangIsEndedAndTheNextLinkHasANewHelper)
{
    setenv("KX_GENTL_TIMEOUT", "300", 1);
    stage.addCamera("A");
    stage.setFaults("IFUpdateDeviceList=hang@2");
    const std::string path = stage.addProducer();
    const auto link = open(path);
    ASSERT_TRUE(link) << reply.text;
    EXPECT_EQ(link->request(message(Request::Look)).status, KX_OK);
    EXPECT_FALSE(link->isOver());
    const HostReply hung = link->request(message(Request::Look));
    EXPECT_EQ(hung.status, KX_E_NO_ANSWER);
    EXPECT_EQ(hung.text,
              "The GenTL producer " + path + " hung in IFUpdateDeviceList for 300 ms and was ended.");
    EXPECT_TRUE(link->isOver());
    const HostReply after = link->request(message(Request::Look));
    EXPECT_EQ(after.status, KX_E_CONNECTION_LOST);
    EXPECT_EQ(after.text, hung.text) << "the first reason stays";
    const auto next = open(path);
    ASSERT_TRUE(next) << reply.text;
    EXPECT_EQ(next->request(message(Request::Look)).items.size(), 1u);
}

TEST_F(GentlHost, aLinkThatWaitsForAnotherOneIsNotTakenForHung)
{
    setenv("KX_GENTL_TIMEOUT", "1000", 1);
    // Each of many calls is slow; together they take longer than one may.
    for (const char* serial : {"A", "B", "C", "D"})
        stage.addCamera(serial);
    stage.setFaults("IFGetDeviceInfo=slow");
    const std::string path = stage.addProducer();
    const auto first = open(path);
    const auto second = open(path);
    ASSERT_TRUE(first && second) << reply.text;
    HostReply one;
    std::thread looking([&] { one = first->request(message(Request::Look)); });
    const HostReply two = second->request(message(Request::Look));
    looking.join();
    EXPECT_EQ(one.status, KX_OK) << one.text;
    EXPECT_EQ(two.status, KX_OK) << two.text;
}

TEST_F(GentlHost, aCrashIsToldWithItsFunctionAndSignal)
{
    stage.addCamera("A");
    stage.setFaults("GCReadPort=crash@2");
    const std::string path = stage.addProducer();
    const auto link = open(path);
    ASSERT_TRUE(link) << reply.text;
    ASSERT_EQ(openDevice(*link, "EMU-A").status, KX_OK);
    EXPECT_EQ(link->request(message(Request::Read).u64(0).u32(4)).status, KX_OK);
    const HostReply crashed = link->request(message(Request::Read).u64(0).u32(4));
    EXPECT_EQ(crashed.status, KX_E_CONNECTION_LOST);
    EXPECT_THAT(crashed.text, HasSubstr(path + " crashed in GCReadPort ("));
}

TEST_F(GentlHost, aProducerThatLeaksIsEndedAtItsLimit)
{
    setenv("KX_GENTL_MEMORY", "500", 1);
    stage.addCamera("A");
    stage.setFaults("GCReadPort=leak");
    const auto link = open(stage.addProducer());
    ASSERT_TRUE(link) << reply.text;
    ASSERT_EQ(openDevice(*link, "EMU-A").status, KX_OK);
    HostReply read;
    unsigned reads = 0;
    for (; reads < 200 && read.status == KX_OK; ++reads) {
        read = link->request(message(Request::Read).u64(0).u32(4));
        usleep(20000);
    }
    EXPECT_GT(reads, 4u);
    EXPECT_EQ(read.status, KX_E_CONNECTION_LOST);
    EXPECT_THAT(read.text, HasSubstr("took more memory than it may (KX_GENTL_MEMORY)"));
}

TEST_F(GentlHost, lengthsBeyondTheBufferAreToldAndNotBelieved)
{
    stage.addCamera("A");
    stage.setFaults("GCReadPort=long@2,GCWritePort=long,GCGetPortURLInfo=long");
    const auto link = open(stage.addProducer());
    ASSERT_TRUE(link) << reply.text;
    ASSERT_EQ(openDevice(*link, "EMU-A").status, KX_OK);
    EXPECT_EQ(link->request(message(Request::Read).u64(0).u32(4)).status, KX_OK);
    const HostReply read = link->request(message(Request::Read).u64(0).u32(4));
    EXPECT_EQ(read.status, KX_E_MALFORMED_ANSWER);
    EXPECT_THAT(read.text, HasSubstr("GCReadPort gives a length of 1099511627776 for a buffer of 4."));
    const HostReply write = link->request(message(Request::Write).u64(0x20000).block("abcd", 4));
    EXPECT_EQ(write.status, KX_E_MALFORMED_ANSWER);
    EXPECT_THAT(write.text, HasSubstr("GCWritePort took 1099511627776 bytes of 4."));
    const HostReply urls = link->request(message(Request::Urls));
    EXPECT_EQ(urls.status, KX_E_MALFORMED_ANSWER);
    EXPECT_THAT(urls.text, HasSubstr("GCGetPortURLInfo gives a length of"));
    EXPECT_FALSE(link->isOver());
}

// ---- several registers at once ----

namespace
{

class GentlStacks : public GentlHost
{
protected:
    // Registers 0x20000, 0x20004 and so on, each with its number.
    HostReply readRegisters(uint32_t count)
    {
        emu::GrabberCamera& camera = stage.addCamera("A");
        for (uint32_t i = 0; i < count; ++i)
            camera.poke(0x20000 + 4 * i, {0, 0, 0, uint8_t(i)});
        const auto link = open(stage.addProducer());
        if (!link || openDevice(*link, "EMU-A").status != KX_OK)
            return reply;
        Writer wanted = message(Request::ReadRegisters).u32(count);
        for (uint32_t i = 0; i < count; ++i)
            wanted.u32(0x20000 + 4 * i);
        return link->request(wanted);
    }
    static void expectAll(const HostReply& read, uint32_t count)
    {
        EXPECT_EQ(read.status, KX_OK) << read.text;
        const gentl::Bytes block = Reader(read.content).block();
        ASSERT_EQ(block.size(), 4 * count);
        for (uint32_t i = 0; i < count; ++i)
            EXPECT_EQ(block[4 * i + 3], uint8_t(i));
    }
};

} // namespace

TEST_F(GentlStacks, severalRegistersAreReadWithEachCall)
{
    stage.setFaults("GCReadPort=-1010"); // not by this one
    expectAll(readRegisters(100), 100);
}

TEST_F(GentlStacks, callsTakeThirtyTwoRegistersAtMost)
{
    stage.setFaults("GCReadPort=-1010,GCReadPortStacked=-1010@5");
    expectAll(readRegisters(128), 128);
}

TEST_F(GentlStacks, aProducerThatDoesNotServeStacksIsAskedForOneAfterTheOther)
{
    stage.setFaults("GCReadPortStacked=-1003");
    expectAll(readRegisters(100), 100);
}

TEST_F(GentlStacks, aRefusalIsToldByTheFunctionsName)
{
    stage.setFaults("GCReadPortStacked=-1005");
    const HostReply refused = readRegisters(3);
    EXPECT_EQ(refused.code, int32_t(gentl::ErrAccessDenied));
    EXPECT_THAT(refused.text, HasSubstr(" refuses: GCReadPortStacked: "));
}

TEST_F(GentlStacks, aCrashIsToldByTheFunctionsName)
{
    stage.setFaults("GCReadPortStacked=crash");
    const HostReply crashed = readRegisters(3);
    EXPECT_EQ(crashed.status, KX_E_CONNECTION_LOST);
    EXPECT_THAT(crashed.text, HasSubstr(" crashed in GCReadPortStacked ("));
}

TEST_F(GentlStacks, whatIsNotWhatWasAskedForIsToldAndNotBelieved)
{
    stage.setFaults("GCReadPortStacked=long");
    const HostReply read = readRegisters(3);
    EXPECT_EQ(read.status, KX_E_MALFORMED_ANSWER);
    EXPECT_THAT(read.text, HasSubstr("GCReadPortStacked does not give what it was asked for"));
}

TEST_F(GentlHost, theHelperKnowsNothingOfOurFilesAndOurTerminal)
{
    stage.addCamera("A");
    setenv("KX_GENTL_LOG", (stage.folder() / "log").c_str(), 1);
    const int leaked = ::open("/dev/null", O_RDONLY); // would be inherited
    const auto link = open(stage.addProducer());
    ASSERT_TRUE(link) << reply.text;
    ::close(leaked);
    EXPECT_TRUE(std::filesystem::exists(stage.folder() / "log"));
    // The helper, by what it was started with.
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline");
        std::string line((std::istreambuf_iterator<char>(file)), {});
        if (line.find(stage.folder().string()) == std::string::npos ||
            line.find("ie_gentl_host") == std::string::npos)
            continue;
        const pid_t helper = std::stoi(entry.path().filename().string());
        EXPECT_EQ(getpgid(helper), helper) << "an interrupt at the terminal does not reach it";
        EXPECT_FALSE(std::filesystem::exists(entry.path() / "fd" / std::to_string(leaked)) &&
                     std::filesystem::read_symlink(entry.path() / "fd" / std::to_string(leaked)) ==
                         "/dev/null" &&
                     leaked > 2);
        return;
    }
    ADD_FAILURE() << "no helper runs";
}

TEST_F(GentlHost, aRequestThatIsNoneIsRefused)
{
    const auto link = open(stage.addProducer());
    ASSERT_TRUE(link) << reply.text;
    for (const Writer& nonsense :
         {Writer().u32(99), message(Request::Read).u64(1), message(Request::Read).u64(1).u32(1 << 30),
          message(Request::Open).u32(5000)})
        EXPECT_EQ(link->request(nonsense).status, KX_E_MALFORMED_ANSWER);
    EXPECT_EQ(link->request(message(Request::Look)).status, KX_OK);
}

TEST(GentlSettings, areReadLineByLine)
{
    std::vector<std::string> problems;
    const auto all = parseSettings("# a comment\n\n[a.cti]\nSystemFeature = 1\r\n[a.cti / *]\n"
                                   "  Protocol=GenCP\nReset\n[b.cti/Port A]\nName = with = blanks \nEmpty=\n",
                                   problems);
    EXPECT_TRUE(problems.empty()) << problems.front();
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].producer, "a.cti");
    EXPECT_FALSE(all[0].interface);
    EXPECT_EQ(all[0].features.at(0).name, "SystemFeature");
    EXPECT_EQ(all[0].features.at(0).value, "1");
    EXPECT_EQ(all[0].features.at(0).line, 4u);
    EXPECT_EQ(all[1].interface, "*");
    EXPECT_EQ(all[1].features.at(0).value, "GenCP");
    EXPECT_EQ(all[1].features.at(1).name, "Reset");
    EXPECT_FALSE(all[1].features.at(1).value) << "a command";
    EXPECT_EQ(all[2].interface, "Port A");
    EXPECT_EQ(all[2].features.at(0).value, "with = blanks");
    EXPECT_EQ(all[2].features.at(1).value, "");
}

TEST(GentlSettings, linesThatAreNoneAreToldAndPassedOver)
{
    std::vector<std::string> problems;
    const auto all = parseSettings("Early = 1\n[a.cti]\n= 2\ntwo words\nGood = 3\n[b.cti\n", problems);
    EXPECT_EQ(problems,
              (std::vector<std::string>{"KX_GENTL_SETTINGS, line 1: there is no [producer] before it.",
                                        "KX_GENTL_SETTINGS, line 3: this is no feature and no [producer].",
                                        "KX_GENTL_SETTINGS, line 4: this is no feature and no [producer].",
                                        "KX_GENTL_SETTINGS, line 6: this is no feature and no [producer]."}));
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].features.size(), 1u);
}
