// GenCP cameras behind pseudo terminals: rates, noise, slow lines, and programs that share a line.
#include "KXCameraControl/ports/cameralink/CameraLinkPort.h"
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

class Serial : public testing::Test
{
protected:
    void start(const emu::SerialConfig& serial = {}, const emu::CameraConfig& config = {})
    {
        camera = std::make_unique<emu::SerialCamera>(config, serial);
        ASSERT_TRUE(camera->start());
    }
    std::unique_ptr<CameraLinkPort> port(const std::string& serialNumber = "EMU0001",
                                         CameraLinkPort::Rate rate = CameraLinkPort::Rate::Raise) const
    {
        return std::make_unique<CameraLinkPort>(std::make_unique<Terminal>(camera->path()), serialNumber,
                                                rate);
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
};

std::string scratchFile(const std::string& name)
{
    const auto folder =
        std::filesystem::temp_directory_path() / ("serial_port_test." + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    return (folder / name).string();
}

} // namespace

TEST_F(Serial, openingFindsTheCameraAndRaisesTheRate)
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

TEST_F(Serial, closingBringsTheCameraBackToItsFirstRate)
{
    start();
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    open->close();
    EXPECT_EQ(camera->baudRate(), 9600u);
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    expectWritesComeBack(*open, 2);
}

TEST_F(Serial, theFastestRateThatTheCameraHasIsTaken)
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

TEST_F(Serial, aCameraThatACrashedHostLeftAtAnotherRateIsFound)
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

TEST_F(Serial, aRateThatTheLineDoesNotCarryIsGivenUp)
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
TEST_F(Serial, slowLinesRememberLonger)
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

TEST_F(Serial, aLookLeavesTheRateAlone)
{
    start();
    auto look = port("EMU0001", CameraLinkPort::Rate::Keep);
    ASSERT_EQ(look->open(KX_ACCESS_MONITOR, 0), KX_OK);
    EXPECT_EQ(look->baudRate(), 9600u);
    std::string model;
    EXPECT_EQ(look->readText(gencp::RegModel, model), KX_OK);
    EXPECT_EQ(model, "EMU-1");
}

TEST_F(Serial, noiseAndLostBytesCostTriesAndNothingElse)
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

TEST_F(Serial, whatComesOnOtherChannelsIsNoAnswer)
{
    emu::SerialConfig serial;
    serial.speaksOnOtherChannels = true;
    start(serial);
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << open->lastError();
    expectWritesComeBack(*open, 5);
}

TEST_F(Serial, timeOutsGrowWithTheAnswerOnASlowLine)
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

TEST_F(Serial, refusalsAndDelaysAreToldAsTheyAre)
{
    start();
    auto open = port();
    ASSERT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    uint32_t value = 0;
    EXPECT_EQ(open->writeRegister(gencp::RegModel, 1), KX_E_GC_ACCESS);
    EXPECT_EQ(open->lastError(),
              "writing memory at 0x00000044 of " + camera->path() + ": write-protected (0x8004)");
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

TEST_F(Serial, anotherCameraAtTheLineIsNotTaken)
{
    start();
    auto open = port("OTHER");
    EXPECT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(open->lastError(),
              "the camera at " + camera->path() + " has the serial number EMU0001 instead of OTHER");
    EXPECT_EQ(port()->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << "the line was given back";
}

TEST_F(Serial, aSecondProgramIsKeptOutAndTold)
{
    start();
    auto first = port();
    ASSERT_EQ(first->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    auto second = port();
    EXPECT_EQ(second->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(second->lastError(), camera->path() + ": another program uses the line");
    expectWritesComeBack(*first, 2);
    first->close();
    EXPECT_EQ(second->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
}

TEST_F(Serial, aLineThatGoesAwayIsALossAndNoHang)
{
    start();
    auto open = port();
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

TEST_F(Serial, whatIsNoSerialLineIsSaidToBeNone)
{
    const std::string file = scratchFile("file");
    std::fclose(std::fopen(file.c_str(), "w"));
    const std::string fifo = scratchFile("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const std::string& path : {file, fifo, std::string("/dev/null")}) {
        CameraLinkPort none(std::make_unique<Terminal>(path), {});
        EXPECT_EQ(none.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NETWORK) << path;
        EXPECT_EQ(none.lastError(), path + ": is no serial line");
    }
    CameraLinkPort missing(std::make_unique<Terminal>(scratchFile("missing")), {});
    EXPECT_EQ(missing.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(std::filesystem::file_size(file), 0u);
    std::filesystem::remove_all(std::filesystem::path(file).parent_path());
}

TEST_F(Serial, aLineWithoutACameraIsToldInBoundedTime)
{
    start();
    emu::Faults silent;
    silent.silence = emu::Silence{};
    camera->setFaults(silent);
    auto open = port();
    const auto began = std::chrono::steady_clock::now();
    EXPECT_EQ(open->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(open->lastError(), "no camera answers at " + camera->path());
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));
}
