// The bytes on the two endpoints, against a peer that only plays its part.
#include "KXCameraControl/ports/usb3/Usb3Port.h"
#include "support/UsbStage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <functional>
#include <mutex>

namespace
{

using emu::Bytes;
using kx::Usb3Port;
using std::chrono::milliseconds;

// Header of a packet as it stands on the wire: flags or status, command, length of what follows, id.
Bytes packet(uint16_t first, uint16_t command, uint16_t id, const Bytes& content)
{
    Bytes bytes{'U', '3', 'V', 'C'};
    for (const size_t number : {size_t{first}, size_t{command}, content.size(), size_t{id}}) {
        bytes.push_back(static_cast<uint8_t>(number));
        bytes.push_back(static_cast<uint8_t>(number >> 8));
    }
    bytes.insert(bytes.end(), content.begin(), content.end());
    return bytes;
}

Bytes readCommand(uint16_t id, uint64_t address, uint16_t size, uint16_t flags = 0x4000)
{
    Bytes content;
    for (int i = 0; i < 8; ++i)
        content.push_back(static_cast<uint8_t>(address >> 8 * i));
    content.insert(content.end(), {0, 0, static_cast<uint8_t>(size), static_cast<uint8_t>(size >> 8)});
    return packet(flags, 0x0800, id, content);
}

uint16_t idOf(const Bytes& command)
{
    return static_cast<uint16_t>(command[10] | command[11] << 8);
}

// Packets of 512 bytes (high speed), and nothing but the control interface.
class Peer : public emu::UsbFunction
{
public:
    using Answers = std::deque<Bytes>;

    std::function<Answers(const Bytes& command)> script;

    std::vector<Bytes> takeCommands()
    {
        const std::lock_guard lock(m_mutex);
        return std::move(m_commands);
    }
    std::vector<unsigned> haltsCleared;
    unsigned stalls = 0; // that many commands are not taken

private:
    Bytes descriptors() const override
    {
        return {18, 1, 0x00, 0x02, 0xEF, 2, 1,    64,   0x09, 0x12, 1, 0,    0, 1,    0,    0,    0,
                1,  9, 2,    32,   0,    1, 1,    0,    0x80, 50,   9, 4,    0, 0,    2,    0xEF, 0x05,
                0,  0, 7,    5,    0x02, 2, 0x00, 0x02, 0,    7,    5, 0x84, 2, 0x00, 0x02, 0};
    }
    size_t packetSize() const override { return 512; }
    std::optional<Bytes> control(const std::array<uint8_t, 8>&) override { return std::nullopt; }
    bool bulkOut(uint8_t endpoint, const Bytes& data) override
    {
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(endpoint, 0x02);
        m_commands.push_back(data);
        if (stalls > 0) {
            --stalls;
            return false;
        }
        for (Bytes& answer : script(data))
            m_answers.push_back(std::move(answer));
        return true;
    }
    std::optional<Bytes> bulkIn(uint8_t endpoint) override
    {
        const std::lock_guard lock(m_mutex);
        if (endpoint != 0x84 || m_answers.empty())
            return std::nullopt;
        Bytes answer = std::move(m_answers.front());
        m_answers.pop_front();
        return answer;
    }
    void haltCleared(uint8_t endpoint) override { haltsCleared.push_back(endpoint); }

    std::mutex m_mutex;
    std::vector<Bytes> m_commands;
    Answers m_answers;
};

class Usb3Wire : public testing::Test
{
protected:
    Usb3Wire()
    {
        unsetenv("KX_CAMERA_USB");
        const std::string location = stage().plug(peer);
        KX_Usb3DeviceInfo record{};
        record.vendorId = 0x1209;
        record.productId = 0x0001;
        location.copy(reinterpret_cast<char*>(record.location), sizeof record.location - 1);
        port = std::make_unique<Usb3Port>(record);
        port->setTimeouts({milliseconds(5000), 3, milliseconds(10000)});
        peer.script = [this](const Bytes& command) { return opening(command); };
    }
    ~Usb3Wire() override
    {
        port.reset();
        stage().unplug(peer);
    }

    // Longest response time, SBRM at 0x10000, 82 bytes for a command and 98 for an answer.
    static Peer::Answers opening(const Bytes& command)
    {
        const uint16_t id = idOf(command);
        switch (command[12] | command[13] << 8 | command[14] << 16) {
        case 0x1CC:
            return {packet(0, 0x0801, id, {10, 0, 0, 0})};
        case 0x1D8:
            return {packet(0, 0x0801, id, {0, 0, 1, 0, 0, 0, 0, 0})};
        case 0x10014:
            return {packet(0, 0x0801, id, {82, 0, 0, 0})};
        case 0x10018:
            return {packet(0, 0x0801, id, {98, 0, 0, 0})};
        default:
            return {packet(0x8003, 0x0801, id, {})};
        }
    }
    void open()
    {
        ASSERT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port->lastError();
        peer.takeCommands();
    }
    static tests::UsbStage& stage()
    {
        static tests::UsbStage instance;
        return instance;
    }

    Peer peer;
    std::unique_ptr<Usb3Port> port;
};

TEST_F(Usb3Wire, openingClearsHaltsAndAsksForTimesAndLimits)
{
    ASSERT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port->lastError();
    EXPECT_EQ(peer.takeCommands(),
              (std::vector<Bytes>{readCommand(1, 0x1CC, 4), readCommand(2, 0x1D8, 8),
                                  readCommand(3, 0x10014, 4), readCommand(4, 0x10018, 4)}));
    EXPECT_EQ(peer.haltsCleared, (std::vector<unsigned>{0x02, 0x84}));
}

TEST_F(Usb3Wire, readsAreSplitAtWholeWordsOfTheAnswersLimit)
{
    open();
    peer.script = [](const Bytes& command) -> Peer::Answers {
        const size_t size = command[22];
        return {packet(0, 0x0801, idOf(command), Bytes(size, static_cast<uint8_t>(size)))};
    };
    Bytes read(200);
    ASSERT_EQ(port->readMemory(0x123456789AULL, read.data(), read.size()), KX_OK) << port->lastError();
    EXPECT_EQ(peer.takeCommands(),
              (std::vector<Bytes>{readCommand(5, 0x123456789A, 84), readCommand(6, 0x123456789A + 84, 84),
                                  readCommand(7, 0x123456789A + 168, 32)}));
    EXPECT_EQ(read[83], 84);
    EXPECT_EQ(read[168], 32);
}

TEST_F(Usb3Wire, writesAreSplitAtWholeWordsOfTheCommandsLimit)
{
    open();
    peer.script = [](const Bytes& command) -> Peer::Answers {
        return {packet(0, 0x0803, idOf(command), {0, 0, static_cast<uint8_t>(command.size() - 20), 0})};
    };
    const Bytes data(64, 0xA5);
    ASSERT_EQ(port->writeMemory(0x2000, data.data(), data.size()), KX_OK) << port->lastError();
    Bytes first{0x00, 0x20, 0, 0, 0, 0, 0, 0};
    first.insert(first.end(), 60, 0xA5);
    const Bytes second{0x3C, 0x20, 0, 0, 0, 0, 0, 0, 0xA5, 0xA5, 0xA5, 0xA5};
    EXPECT_EQ(peer.takeCommands(),
              (std::vector<Bytes>{packet(0x4000, 0x0802, 5, first), packet(0x4000, 0x0802, 6, second)}));
}

TEST_F(Usb3Wire, aCommandWithoutAnAnswerIsRepeatedUnderItsId)
{
    open();
    port->setTimeouts({milliseconds(500), 3, milliseconds(10000)});
    unsigned asked = 0;
    peer.script = [&](const Bytes& command) -> Peer::Answers {
        return ++asked < 3 ? Peer::Answers() : Peer::Answers{packet(0, 0x0801, idOf(command), {1, 2, 3, 4})};
    };
    uint32_t value = 0;
    ASSERT_EQ(port->readRegister(0x300, value), KX_OK) << port->lastError();
    EXPECT_EQ(value, 0x01020304u);
    EXPECT_EQ(peer.takeCommands(),
              (std::vector<Bytes>{readCommand(5, 0x300, 4), readCommand(5, 0x300, 4, 0xC000),
                                  readCommand(5, 0x300, 4, 0xC000)}));
}

TEST_F(Usb3Wire, aStalledCommandIsRepeatedAtOnceAndItsHaltCleared)
{
    open();
    peer.haltsCleared.clear();
    peer.stalls = 1;
    peer.script = [](const Bytes& command) -> Peer::Answers {
        return {packet(0, 0x0801, idOf(command), {1, 2, 3, 4})};
    };
    uint32_t value = 0;
    ASSERT_EQ(port->readRegister(0x300, value), KX_OK) << port->lastError();
    EXPECT_EQ(peer.haltsCleared, (std::vector<unsigned>{0x02}));
    EXPECT_EQ(peer.takeCommands().size(), 2u);
}

TEST_F(Usb3Wire, answersOfOtherIdsAreDropped)
{
    open();
    peer.script = [](const Bytes& command) -> Peer::Answers {
        return {packet(0, 0x0801, 4, {9, 9, 9, 9}), packet(0x8003, 0x0801, 77, {}),
                packet(0, 0x0801, idOf(command), {1, 2, 3, 4})};
    };
    uint32_t value = 0;
    ASSERT_EQ(port->readRegister(0x300, value), KX_OK) << port->lastError();
    EXPECT_EQ(value, 0x01020304u);
    EXPECT_EQ(peer.takeCommands().size(), 1u);
}

TEST_F(Usb3Wire, pendingAcksAreWaitedFor)
{
    open();
    port->setTimeouts({milliseconds(5000), 1, milliseconds(10000)});
    peer.script = [](const Bytes& command) -> Peer::Answers {
        const Bytes pending = packet(0, 0x0805, idOf(command), {0, 0, 0x2C, 0x01}); // 300 ms
        return {pending, pending, packet(0, 0x0801, idOf(command), {1, 2, 3, 4})};
    };
    uint32_t value = 0;
    ASSERT_EQ(port->readRegister(0x300, value), KX_OK) << port->lastError();
    EXPECT_EQ(value, 0x01020304u);
    EXPECT_EQ(peer.takeCommands().size(), 1u);
}

TEST_F(Usb3Wire, anAnswerAsLongAsManyPacketsIsTakenWhole)
{
    peer.script = [](const Bytes& command) -> Peer::Answers {
        if (command[12] == 0x18 && command[14] == 1)
            return {packet(0, 0x0801, idOf(command), {0x00, 0x06, 0, 0})}; // three packets of 512 bytes
        return opening(command);
    };
    open();
    peer.script = [](const Bytes& command) -> Peer::Answers {
        return {packet(0, 0x0801, idOf(command), Bytes(size_t{command[22]} | size_t{command[23]} << 8, 7))};
    };
    Bytes read(1536 - 12);
    ASSERT_EQ(port->readMemory(0x5000, read.data(), read.size()), KX_OK) << port->lastError();
    EXPECT_EQ(peer.takeCommands().size(), 1u);
    EXPECT_EQ(read, Bytes(read.size(), 7));
}

// 500 bytes and their head are one packet of 512: nothing says that no more will come.
TEST_F(Usb3Wire, anAnswerOfWholePacketsNeedsNoEmptyOneBehindIt)
{
    peer.script = [](const Bytes& command) -> Peer::Answers {
        if (command[12] == 0x18 && command[14] == 1)
            return {packet(0, 0x0801, idOf(command), {0x00, 0x06, 0, 0})}; // answers of up to 1,536 bytes
        return opening(command);
    };
    open();
    port->setTimeouts({milliseconds(5000), 1, milliseconds(10000)});
    for (const bool sendsEmptyOne : {false, true}) {
        peer.script = [=](const Bytes& command) -> Peer::Answers {
            Peer::Answers answers{packet(0, 0x0801, idOf(command), Bytes(500, 7))};
            if (sendsEmptyOne)
                answers.push_back({});
            return answers;
        };
        Bytes read(500);
        EXPECT_EQ(port->readMemory(0x5000, read.data(), read.size()), KX_OK) << port->lastError();
        EXPECT_EQ(port->readMemory(0x5000, read.data(), read.size()), KX_OK) << "the next one too";
    }
}

TEST_F(Usb3Wire, aCameraThatHidesItsLimitsKeepsThoseOfEveryCamera)
{
    peer.script = [](const Bytes& command) -> Peer::Answers {
        return command[12] == 0xD8 ? Peer::Answers{packet(0x8003, 0x0801, idOf(command), {})}
                                   : opening(command);
    };
    open();
    peer.script = [](const Bytes& command) -> Peer::Answers {
        return {packet(0, 0x0801, idOf(command), Bytes(command[22], 7))};
    };
    Bytes read(100);
    ASSERT_EQ(port->readMemory(0x5000, read.data(), read.size()), KX_OK) << port->lastError();
    for (const Bytes& command : peer.takeCommands())
        EXPECT_LE(command[22] + 12, 64);
}

} // namespace
