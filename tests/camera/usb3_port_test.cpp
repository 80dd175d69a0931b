// The control channel of USB3 Vision cameras, byte by byte where that counts, over the real libusb.
#include "KXCameraControl/description/Fetch.h"
#include "KXCameraControl/ports/Discovery.h"
#include "KXCameraControl/ports/usb3/Usb3Port.h"
#include "camera/UsbFixture.h"
#include "camera_emulator/GenCpResponder.h"

#include <atomic>
#include <thread>

namespace
{

using kx::Usb3Port;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using Bytes = emu::Bytes;

constexpr uint64_t kSomewhere = 0x700000;

class Usb3 : public tests::UsbFixture
{
protected:
    static KX_Usb3DeviceInfo recordOf(const emu::Usb3Camera& camera)
    {
        for (const KX_DeviceEntry& entry : list())
            if (text(entry.info.special.usb3.guid) == camera.guid())
                return entry.info.special.usb3;
        ADD_FAILURE() << "not listed";
        return {};
    }
    std::unique_ptr<Usb3Port> openPort(const emu::Usb3Camera& camera)
    {
        auto port = std::make_unique<Usb3Port>(recordOf(camera));
        EXPECT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port->lastError();
        return port;
    }
    static Bytes pattern(size_t size)
    {
        Bytes bytes(size);
        for (size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<uint8_t>(i * 7 + (i >> 8));
        return bytes;
    }
};

TEST_F(Usb3, readsAndWritesAreSplitAtTheCamerasLimits)
{
    for (const uint32_t limit : {64u, 70u, 128u, 1024u, 4096u}) {
        emu::Usb3Config usb;
        usb.maxCommand = usb.maxAck = limit;
        emu::Usb3Camera& camera = add("A" + std::to_string(limit), usb);
        auto port = openPort(camera);
        const Bytes written = pattern(5001);
        ASSERT_EQ(port->writeMemory(kSomewhere, written.data(), written.size()), KX_OK) << port->lastError();
        EXPECT_EQ(camera.peek(kSomewhere, written.size()), written);
        Bytes read(written.size());
        ASSERT_EQ(port->readMemory(kSomewhere, read.data(), read.size()), KX_OK) << port->lastError();
        EXPECT_EQ(read, written);
        EXPECT_LE(camera.longestCommand(), limit);
        EXPECT_GT(camera.longestCommand(), limit - 8);
        EXPECT_LE(camera.longestAnswer(), limit);
        EXPECT_GT(camera.longestAnswer(), limit - 8);
    }
}

TEST_F(Usb3, registersAreReadByTheirFirstByte)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    camera.poke(kSomewhere, {0x12, 0x34, 0x56, 0x78});
    uint32_t value = 0;
    ASSERT_EQ(port->readRegister(kSomewhere, value), KX_OK);
    EXPECT_EQ(value, 0x12345678u);
    ASSERT_EQ(port->writeRegister(kSomewhere, 0xA1B2C3D4), KX_OK);
    EXPECT_EQ(camera.peek(kSomewhere, 4), (Bytes{0xA1, 0xB2, 0xC3, 0xD4}));
}

TEST_F(Usb3, refusalsAndDelaysAreToldAsTheyAre)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    uint32_t value = 0;
    EXPECT_EQ(port->writeRegister(gencp::RegModel, 1), KX_E_GC_ACCESS);
    EXPECT_EQ(port->lastError(),
              "writing memory at 0x00000044 of USB " + camera.place() + ": write-protected (0x8004)");
    emu::Faults faults;
    faults.pending = 1;
    faults.pendingTime = milliseconds(1200);
    camera.setFaults(faults);
    port->setTimeouts({milliseconds(500), 1, milliseconds(10000)});
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_OK) << port->lastError();
    faults = {};
    faults.busy = 1;
    camera.setFaults(faults);
    port->setTimeouts({milliseconds(3000), 2, milliseconds(10000)});
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_OK) << port->lastError();
}

TEST_F(Usb3, anAnswerThatComesTooLateIsTakenForNoOther)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    port->setTimeouts({milliseconds(300), 1, milliseconds(1000)});
    camera.poke(kSomewhere, {0, 0, 0, 1, 0, 0, 0, 2});
    emu::Faults faults;
    faults.delay = milliseconds(600);
    camera.setFaults(faults);
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_E_NO_ANSWER);
    camera.setFaults({});
    port->setTimeouts({milliseconds(5000), 1, milliseconds(1000)});
    ASSERT_EQ(port->readRegister(kSomewhere + 4, value), KX_OK) << port->lastError();
    EXPECT_EQ(value, 2u);
}

TEST_F(Usb3, timeOutsAreNeverShorterThanTheCamerasOwnLongestTime)
{
    emu::Usb3Camera& camera = add();
    camera.poke(gencp::RegLongestResponseTime, {0x88, 0x13, 0, 0}); // 5,000 ms
    auto port = openPort(camera);
    port->setTimeouts({milliseconds(20), 1, milliseconds(1000)});
    emu::Faults faults;
    faults.delay = milliseconds(400);
    camera.setFaults(faults);
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_OK) << port->lastError();
}

TEST_F(Usb3, aSilentCameraIsNoLossAndNoHang)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    port->setTimeouts({milliseconds(300), 3, milliseconds(1000)});
    emu::Faults faults;
    faults.silence = emu::Silence{};
    camera.setFaults(faults);
    uint32_t value = 0;
    const auto began = Clock::now();
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_E_NO_ANSWER);
    EXPECT_LT(Clock::now() - began, milliseconds(5000));
    camera.setFaults({});
    port->setTimeouts({milliseconds(5000), 1, milliseconds(1000)});
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_OK);
}

// It is plugged in, and a job would ask it for each of its features.
TEST_F(Usb3, aCameraThatStaysSilentIsLost)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    port->setTimeouts({milliseconds(300), 2, milliseconds(1000)});
    emu::Faults faults;
    faults.silence = emu::Silence{};
    camera.setFaults(faults);
    uint32_t value = 0;
    const auto began = Clock::now();
    KX_Status status = KX_E_NO_ANSWER;
    while (status == KX_E_NO_ANSWER && Clock::now() - began < std::chrono::seconds(20))
        status = port->readRegister(kSomewhere, value);
    EXPECT_EQ(status, KX_E_CONNECTION_LOST) << port->lastError();
    camera.setFaults({});
    port->close();
    EXPECT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_OK);
}

TEST_F(Usb3, packetsThatAreNoneAreNoAnswer)
{
    const std::vector<std::pair<const char*, std::function<void(Bytes&)>>> breakers = {
        {"too long", [](Bytes& packet) { packet.resize(packet.size() + 5000, 0xEE); }},
        {"longer than it says", [](Bytes& packet) { packet.push_back(0xEE); }},
        {"cut", [](Bytes& packet) { packet.pop_back(); }},
        {"empty", [](Bytes& packet) { packet.clear(); }},
        {"another prefix", [](Bytes& packet) { packet[3] = 'E'; }},
        {"a length beyond all", [](Bytes& packet) { packet[8] = packet[9] = 0xFF; }},
        {"more than was asked for", [](Bytes& packet) {
             packet[8] = static_cast<uint8_t>(packet[8] + 4);
             packet.insert(packet.end(), 4, 0xEE);
         }}};
    for (const auto& [what, breaker] : breakers) {
        SCOPED_TRACE(what);
        auto isBroken = std::make_shared<std::atomic<bool>>(false);
        emu::Usb3Config usb;
        usb.breakAnswer = [isBroken, breaker = breaker](Bytes& packet) {
            if (*isBroken)
                breaker(packet);
        };
        emu::Usb3Camera& camera = add("A", usb);
        auto port = openPort(camera);
        port->setTimeouts({milliseconds(700), 1, milliseconds(1000)});
        uint32_t value = 0;
        *isBroken = true;
        EXPECT_EQ(port->readRegister(kSomewhere, value), KX_E_MALFORMED_ANSWER) << port->lastError();
        *isBroken = false;
        port->setTimeouts({milliseconds(5000), 1, milliseconds(1000)});
        EXPECT_EQ(port->readRegister(kSomewhere, value), KX_OK) << port->lastError();
        port.reset();
        camera.stop();
    }
}

TEST_F(Usb3, aPulledCableIsToldThoughNobodyAsks)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    std::atomic<int> losses{0};
    std::atomic<KX_Status> reason{KX_OK};
    port->setConnectionLostHandler([&](KX_Status status) {
        reason = status;
        ++losses;
    });
    const std::string place = camera.place();
    const auto pulled = Clock::now();
    camera.stop();
    while (losses == 0 && Clock::now() - pulled < std::chrono::seconds(5))
        std::this_thread::sleep_for(milliseconds(5));
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(reason, KX_E_CONNECTION_LOST);
    EXPECT_LT(Clock::now() - pulled, milliseconds(1000));
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(kSomewhere, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port->lastError(), "the connection is lost: USB " + place + " was unplugged");
}

TEST_F(Usb3, aPulledCableEndsTheRequestThatWaits)
{
    emu::Usb3Camera& camera = add();
    auto port = openPort(camera);
    port->setTimeouts({milliseconds(20000), 1, milliseconds(1000)});
    emu::Faults faults;
    faults.silence = emu::Silence{};
    camera.setFaults(faults);
    camera.resetCounters();
    KX_Status status = KX_OK;
    Clock::time_point ended;
    std::thread asker([&] {
        uint32_t value = 0;
        status = port->readRegister(kSomewhere, value);
        ended = Clock::now();
    });
    while (camera.counters().lost == 0)
        std::this_thread::sleep_for(milliseconds(5));
    const auto pulled = Clock::now();
    camera.stop();
    asker.join();
    EXPECT_EQ(status, KX_E_CONNECTION_LOST) << port->lastError();
    EXPECT_LT(ended - pulled, milliseconds(1000));
}

TEST_F(Usb3, eachCameraOfSeveralHasItsOwnCable)
{
    emu::Usb3Camera& first = add("A");
    emu::Usb3Camera& second = add("B");
    auto one = openPort(first);
    auto other = openPort(second);
    std::atomic<int> losses{0};
    one->setConnectionLostHandler([&](KX_Status) { ++losses; });
    std::atomic<int> otherLosses{0};
    other->setConnectionLostHandler([&](KX_Status) { ++otherLosses; });
    first.stop();
    const auto pulled = Clock::now();
    while (losses == 0 && Clock::now() - pulled < std::chrono::seconds(5))
        std::this_thread::sleep_for(milliseconds(5));
    uint32_t value = 0;
    EXPECT_EQ(other->readRegister(kSomewhere, value), KX_OK);
    other->close();
    EXPECT_EQ(otherLosses, 0);
}

TEST_F(Usb3, aCameraThatLeftWhileItWasListedIsNotThere)
{
    emu::Usb3Camera& camera = add();
    const KX_Usb3DeviceInfo record = recordOf(camera);
    camera.stop();
    Usb3Port port(record);
    EXPECT_EQ(port.open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_FALSE(port.isOpen());
}

TEST_F(Usb3, aMonitorReadsAndDoesNotWrite)
{
    emu::Usb3Camera& camera = add();
    Usb3Port port(recordOf(camera));
    ASSERT_EQ(port.open(KX_ACCESS_MONITOR, 0), KX_OK);
    uint32_t value = 0;
    EXPECT_EQ(port.readRegister(kSomewhere, value), KX_OK);
    EXPECT_EQ(port.writeRegister(kSomewhere, 1), KX_E_GC_ACCESS);
}

// ---- the description ----

class Usb3Description : public Usb3
{
protected:
    KX_Status fetch(emu::Usb3Camera& camera)
    {
        auto port = openPort(camera);
        description = nullptr;
        problem.clear();
        return kx::fetchDescription(*port, description, problem);
    }

    kx::SharedDescription description;
    std::string problem;
};

TEST_F(Usb3Description, comesByTheManifestPlainAndZipped)
{
    std::string texts[2];
    for (const bool zipped : {false, true}) {
        emu::CameraConfig config;
        config.zipped = zipped;
        emu::Usb3Camera& camera = add(zipped ? "ZIP" : "PLAIN", {}, config);
        ASSERT_EQ(fetch(camera), KX_OK) << problem;
        texts[zipped] = description->text();
        EXPECT_EQ(zipped, description->memory() != description->text());
    }
    EXPECT_EQ(texts[0], texts[1]);
    EXPECT_NE(texts[0].find("<RegisterDescription"), std::string::npos);
}

TEST_F(Usb3Description, isNotBelievedWhereItsDigestIsAnother)
{
    emu::Usb3Camera& camera = add();
    const uint64_t first = emu::kManifestTable + 8 + 24; // the digest in the first entry
    camera.poke(first, {1, 2, 3});
    ASSERT_EQ(fetch(camera), KX_OK) << "the second entry is whole: " << problem;
    camera.poke(first + gencp::kManifestEntrySize, {1, 2, 3});
    EXPECT_EQ(fetch(camera), KX_E_DESCRIPTION);
    EXPECT_EQ(problem,
              "The description cannot be fetched: its bytes do not have the SHA-1 digest that the camera "
              "gives of them; its bytes do not have the SHA-1 digest that the camera gives of them.");
    camera.poke(first, Bytes(20, 0)); // not given
    EXPECT_EQ(fetch(camera), KX_OK) << problem;
}

TEST_F(Usb3Description, isMissingWhereTheManifestPointsNowhere)
{
    emu::Usb3Camera& camera = add();
    emu::Faults faults;
    faults.refusals = {{emu::kManifestTable, 0x1000, 0x8003}};
    camera.setFaults(faults);
    EXPECT_EQ(fetch(camera), KX_E_DESCRIPTION);
    EXPECT_EQ(problem, "The camera names no description.");
    camera.setFaults({});
    camera.poke(emu::kManifestTable, Bytes(8, 0xFF)); // more entries than there can be
    EXPECT_EQ(fetch(camera), KX_OK) << problem;
    camera.poke(emu::kManifestTable + 8 + 16, Bytes(8, 0xFF)); // sizes beyond all
    camera.poke(emu::kManifestTable + 8 + 64 + 16, Bytes(8, 0xFF));
    EXPECT_EQ(fetch(camera), KX_E_DESCRIPTION);
}

TEST_F(Usb3Description, namesWithoutATerminatingZeroAreCutAtTheirField)
{
    emu::Usb3Camera& camera = add();
    camera.poke(gencp::RegManufacturer, Bytes(64, 'M'));
    camera.poke(gencp::RegModel, Bytes(64, 'N'));
    auto port = openPort(camera);
    std::vector<std::string> urls;
    ASSERT_EQ(port->descriptionUrls(urls), KX_OK);
    EXPECT_EQ(port->names().manufacturer, std::string(64, 'M'));
    EXPECT_EQ(port->names().model, std::string(64, 'N'));
    EXPECT_EQ(port->names().deviceVersion, "1.0.0");
}

} // namespace
