// GenCP cameras behind pseudo terminals and behind the ports of a grabber's serial library: rates, noise,
// slow lines, and programs that share a line.
#include "ClserStage.h"

#include "KXCameraControl/ports/cameralink/CameraLinkPort.h"
#include "KXCameraControl/ports/cameralink/LibraryLine.h"
#include "KXCameraControl/ports/cameralink/Terminal.h"
#include "camera_emulator/GenCpResponder.h"
#include "camera_emulator/SerialCamera.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

using namespace kx;
using std::chrono::milliseconds;

namespace
{

constexpr uint64_t kSomewhere = 0x20000;

enum class Line
{
    Terminal,
    Library
};

class SerialCameraBehind
{
protected:
    void start(const emu::SerialConfig& serial = {}, const emu::CameraConfig& config = {})
    {
        camera = std::make_unique<emu::SerialCamera>(config, serial);
        ASSERT_TRUE(camera->start());
        stage = std::make_unique<ClserStage>();
        stage->addPort(camera->path());
    }
    // Of the library of that kind, which is brought at its first use.
    std::unique_ptr<SerialLine> libraryLine(const std::string& kind = "emu")
    {
        if (library.empty() || !std::filesystem::exists(library))
            library = stage->addLibrary(kind);
        return std::make_unique<LibraryLine>(library, 0, "Port A");
    }
    std::unique_ptr<CameraLinkPort> portOver(std::unique_ptr<SerialLine> line) const
    {
        return std::make_unique<CameraLinkPort>(std::move(line), "EMU0001");
    }
    void expectWritesComeBack(CameraLinkPort& open, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            uint32_t back = 0;
            ASSERT_EQ(open.writeRegister(kSomewhere, i * 0x01010101), KX_OK) << open.lastError();
            ASSERT_EQ(open.readRegister(kSomewhere, back), KX_OK) << open.lastError();
            ASSERT_EQ(back, i * 0x01010101);
        }
    }

    std::unique_ptr<emu::SerialCamera> camera;
    std::unique_ptr<ClserStage> stage;
    std::string library;
};

class Serial : public SerialCameraBehind, public testing::TestWithParam<Line>
{
protected:
    bool isTerminal() const { return GetParam() == Line::Terminal; }
    std::unique_ptr<CameraLinkPort> port(const std::string& serialNumber = "EMU0001",
                                         CameraLinkPort::Rate rate = CameraLinkPort::Rate::Raise)
    {
        return std::make_unique<CameraLinkPort>(isTerminal() ? newTerminal(camera->path()) : libraryLine(),
                                                serialNumber, rate);
    }
    std::string lineName() const { return isTerminal() ? camera->path() : "Port A"; }
};

class SerialTerminal : public SerialCameraBehind, public testing::Test
{
};

class SerialLibraryLine : public SerialCameraBehind, public testing::Test
{
};

std::string scratchFile(const std::string& name)
{
    const auto folder =
        std::filesystem::temp_directory_path() / ("serial_port_test." + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    return (folder / name).string();
}

} // namespace

TEST_P(Serial, openingFindsTheCameraAndRaisesTheRate)
{
    start();
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    EXPECT_EQ(open->baudRate(), 921600u);
    EXPECT_EQ(camera->baudRate(), 921600u);
    expectWritesComeBack(*open, 20);
    std::vector<std::string> urls;
    ASSERT_EQ(open->descriptionUrls(urls), KX_OK);
    ASSERT_EQ(urls.size(), 2u);
    EXPECT_EQ(urls[0].substr(0, 26), "Local:camera.xml;120000000") << urls[0];
}

TEST_P(Serial, closingBringsTheCameraBackToItsFirstRate)
{
    start();
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    open->close();
    EXPECT_EQ(camera->baudRate(), 9600u);
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    expectWritesComeBack(*open, 2);
}

TEST_P(Serial, theFastestRateThatTheCameraHasIsTaken)
{
    emu::SerialConfig serial;
    serial.supported = 0x01 | 0x08 | 0x10; // up to 115,200
    start(serial);
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(open->baudRate(), 115200u);
    EXPECT_EQ(camera->counters().refused, 0u) << "others were asked for";
    expectWritesComeBack(*open, 2);
}

TEST_P(Serial, aCameraThatACrashedHostLeftAtAnotherRateIsFound)
{
    for (const uint32_t left : {19200u, 115200u, 921600u}) {
        emu::SerialConfig serial;
        serial.baud = left;
        start(serial);
        auto open = port();
        ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << left;
        EXPECT_EQ(open->baudRate(), 921600u);
        expectWritesComeBack(*open, 2);
        open->close();
        camera.reset();
    }
}

TEST_P(Serial, aRateThatTheLineDoesNotCarryIsGivenUp)
{
    emu::SerialConfig serial;
    serial.supported = 0x01 | 0x08 | 0x10 | 0x80;
    serial.fastest = 57600;
    start(serial);
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    EXPECT_EQ(open->baudRate(), 57600u);
    EXPECT_EQ(camera->baudRate(), 57600u);
    expectWritesComeBack(*open, 2);
}

// One read takes about 50 ms at 9,600 baud: a feature of ten registers must not be asked for in circles.
TEST_P(Serial, slowLinesRememberLonger)
{
    start();
    auto slow = port("EMU0001", CameraLinkPort::Rate::Keep);
    ASSERT_EQ(slow->open(KX_ACCESS_MONITOR, 0), KX_OK);
    EXPECT_GE(slow->keepTime(), milliseconds(2000));
    EXPECT_LE(slow->keepTime(), milliseconds(4000));
    slow->close();
    auto fast = port();
    ASSERT_EQ(fast->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_GE(fast->keepTime(), milliseconds(300));
    EXPECT_LE(fast->keepTime(), milliseconds(400));
}

TEST_P(Serial, aLookLeavesTheRateAlone)
{
    start();
    auto look = port("EMU0001", CameraLinkPort::Rate::Keep);
    ASSERT_EQ(look->open(KX_ACCESS_MONITOR, 0), KX_OK);
    EXPECT_EQ(look->baudRate(), 9600u);
    std::string model;
    EXPECT_EQ(look->readText(gencp::RegModel, model), KX_OK);
    EXPECT_EQ(model, "EMU-1");
}

TEST_P(Serial, noiseAndLostBytesCostTriesAndNothingElse)
{
    emu::SerialConfig serial;
    serial.noise = 3;
    serial.dropped = 7;
    start(serial);
    auto open = port();
    open->setTimeouts({milliseconds(50), 5, milliseconds(1000)});
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    expectWritesComeBack(*open, 20);
    EXPECT_GT(camera->counters().requests(), 40u);
}

TEST_P(Serial, whatComesOnOtherChannelsIsNoAnswer)
{
    emu::SerialConfig serial;
    serial.speaksOnOtherChannels = true;
    start(serial);
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    expectWritesComeBack(*open, 5);
}

TEST_P(Serial, timeOutsGrowWithTheAnswerOnASlowLine)
{
    emu::SerialConfig serial;
    serial.supported = 0x01; // 9,600 baud: 1,000 bytes are under way for more than a second
    serial.isPaced = true;
    start(serial);
    auto open = port();
    open->setTimeouts({milliseconds(100), 1, milliseconds(1000)});
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    uint8_t bytes[900];
    EXPECT_EQ(open->readMemory(kSomewhere, bytes, sizeof bytes), KX_OK) << open->lastError();
}

TEST_P(Serial, refusalsAndDelaysAreToldAsTheyAre)
{
    start();
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    uint32_t value = 0;
    EXPECT_EQ(open->writeRegister(gencp::RegModel, 1), KX_E_GC_ACCESS);
    EXPECT_EQ(open->lastError(),
              "writing memory at 0x00000044 of " + lineName() + ": write-protected (0x8004)");
    emu::Faults faults;
    faults.pending = 1;
    faults.pendingTime = milliseconds(600);
    camera->setFaults(faults);
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_OK) << open->lastError();
    faults = {};
    faults.silence = emu::Silence{};
    camera->setFaults(faults);
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_E_NO_ANSWER);
    camera->setFaults({});
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_OK) << "an answer too late is no loss";
}

// Neither a terminal nor a library tells that the camera's cable was pulled.
TEST_P(Serial, aCameraThatFallsSilentIsLostAfterTwoRequests)
{
    start();
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    std::atomic<int> losses{0};
    open->setConnectionLostHandler([&](KX_Status) { ++losses; });
    emu::Faults faults;
    faults.silence = emu::Silence{};
    camera->setFaults(faults);
    uint32_t value = 0;
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_E_NO_ANSWER);
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(open->lastError(), "the connection is lost: " + lineName() + " does not answer any more");
    const uint64_t requests = open->requestCount();
    EXPECT_EQ(open->writeRegister(kSomewhere, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(open->requestCount(), requests) << "nothing is sent any more";
    open->close(); // waits for the handler
    EXPECT_EQ(losses, 1);
    camera->setFaults({});
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    expectWritesComeBack(*open, 2);
}

TEST_P(Serial, anotherCameraAtTheLineIsNotTaken)
{
    start();
    auto open = port("OTHER");
    EXPECT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(open->lastError(),
              "the camera at " + lineName() + " has the serial number EMU0001 instead of OTHER");
    EXPECT_EQ(port()->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << "the line was given back";
}

TEST_P(Serial, aSecondProgramIsKeptOutAndTold)
{
    start();
    auto first = port();
    ASSERT_EQ(first->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    auto second = port();
    EXPECT_EQ(second->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(second->lastError(), isTerminal() ? camera->path() + ": another program uses the line"
                                                : "The serial library " + library +
                                                      " refuses: clSerialInit: the port is in use (-10003).");
    expectWritesComeBack(*first, 2);
    first->close();
    EXPECT_EQ(second->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
}

TEST_F(SerialTerminal, aLineThatGoesAwayIsALossAndNoHang)
{
    start();
    auto open = portOver(newTerminal(camera->path()));
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    std::atomic<int> losses{0};
    open->setConnectionLostHandler([&](KX_Status) { ++losses; });
    const auto began = std::chrono::steady_clock::now();
    camera->stop();
    uint32_t value = 0;
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(open->readRegister(kSomewhere, value), KX_E_CONNECTION_LOST);
    open->close(); // waits for the handler
    EXPECT_EQ(losses, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));
}

TEST_F(SerialTerminal, whatIsNoSerialLineIsSaidToBeNone)
{
    const std::string file = scratchFile("file");
    std::fclose(std::fopen(file.c_str(), "w"));
    const std::string fifo = scratchFile("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {file, fifo, std::string("/dev/null")}) {
        CameraLinkPort none(newTerminal(path), {});
        EXPECT_EQ(none.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NETWORK) << path;
        EXPECT_EQ(none.lastError(), path + ": is no serial line");
    }
    CameraLinkPort missing(newTerminal(scratchFile("missing")), {});
    EXPECT_EQ(missing.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(std::filesystem::file_size(file), 0u);
    std::filesystem::remove_all(std::filesystem::path(file).parent_path());
}

TEST_P(Serial, aLineWithoutACameraIsToldInBoundedTime)
{
    start();
    emu::Faults silent;
    silent.silence = emu::Silence{};
    camera->setFaults(silent);
    auto open = port();
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(open->lastError(), "no camera answers at " + lineName());
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));
}

INSTANTIATE_TEST_SUITE_P(Lines, Serial, testing::Values(Line::Terminal, Line::Library),
                         [](const testing::TestParamInfo<Line>& line) {
                             return line.param == Line::Terminal ? "terminal" : "library";
                         });

TEST_F(SerialLibraryLine, aLibraryWithoutRatesAndWordsServesAtTheFirstRate)
{
    start();
    auto open = portOver(libraryLine("plain"));
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    EXPECT_EQ(open->baudRate(), 9600u);
    EXPECT_EQ(camera->baudRate(), 9600u);
    expectWritesComeBack(*open, 3);
    auto second = portOver(libraryLine("plain"));
    EXPECT_EQ(second->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(second->lastError(), "The serial library " + library + " refuses: clSerialInit: (-10003).");
}

TEST_F(SerialLibraryLine, whatALibraryRefusesIsToldInItsWords)
{
    start();
    stage->setFaults("clSerialRead=refuse@200");
    auto open = portOver(libraryLine());
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    uint32_t value = 0;
    KX_Status status = KX_OK;
    for (int i = 0; i < 200 && status == KX_OK; ++i)
        status = open->readRegister(kSomewhere, value);
    EXPECT_EQ(status, KX_E_NETWORK);
    EXPECT_EQ(open->lastError(), "reading memory at 0x00020000 of Port A: The serial library " + library +
                                     " refuses: clSerialRead: the board refuses (-10500).");
}

TEST_F(SerialLibraryLine, aLibraryThatTellsMoreBytesThanThereIsRoomForIsNotBelieved)
{
    start();
    stage->setFaults("clSerialRead=long");
    auto open = portOver(libraryLine());
    EXPECT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NETWORK);
    EXPECT_NE(open->lastError().find("clSerialRead gives a length of 1001 for a buffer of 1"),
              std::string::npos)
        << open->lastError();
}

TEST_F(SerialLibraryLine, aLibraryThatCrashesOrHangsIsALossThatSaysSo)
{
    setenv("KX_GENTL_TIMEOUT", "500", 1);
    for (const std::string kind : {"crash", "hang"}) {
        start();
        stage->setFaults("clSerialRead=" + kind + "@200");
        auto open = portOver(libraryLine());
        ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
        std::atomic<int> losses{0};
        open->setConnectionLostHandler([&](KX_Status) { ++losses; });
        uint32_t value = 0;
        KX_Status status = KX_OK;
        for (int i = 0; i < 200 && status == KX_OK; ++i)
            status = open->readRegister(kSomewhere, value);
        EXPECT_EQ(status, KX_E_CONNECTION_LOST) << kind;
        EXPECT_NE(open->lastError().find(kind == "crash" ? "crashed in clSerialRead (signal 6)"
                                                         : "hung in clSerialRead for 500 ms and was ended"),
                  std::string::npos)
            << open->lastError();
        open->close(); // waits for the handler
        EXPECT_EQ(losses, 1);
        camera.reset();
    }
    unsetenv("KX_GENTL_TIMEOUT");
}

TEST_F(SerialLibraryLine, eachFunctionMayCrashOrHangAndNothingElseDoes)
{
    setenv("KX_GENTL_TIMEOUT", "300", 1);
    for (const std::string function :
         {"clSerialInit", "clGetSupportedBaudRates", "clSetBaudRate", "clFlushPort", "clSerialWrite",
          "clSerialRead", "clGetNumBytesAvail", "clSerialClose"})
        for (const std::string kind : {"crash", "hang"}) {
            start();
            stage->setFaults(function + "=" + kind);
            auto open = portOver(libraryLine());
            const KX_Status status = open->open(KX_ACCESS_EXCLUSIVE, 0);
            if (function == "clSerialClose")
                EXPECT_EQ(status, KX_OK) << kind;
            else
                EXPECT_TRUE(KX_IS_LINE_FAILURE(status)) << function << " " << kind;
            open->close();
            camera.reset();
        }
    unsetenv("KX_GENTL_TIMEOUT");
}
