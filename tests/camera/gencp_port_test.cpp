// GenCP requests over a link that answers as the test says: packets byte by byte, tries, limits, losses.
#include "KXCameraControl/ports/gencp/GenCpPort.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <map>
#include <thread>

using namespace gencp;
using namespace kx;
using Outcome = GenCpLink::Outcome;
using std::chrono::milliseconds;

namespace
{

struct Reply
{
    Outcome outcome = Outcome::Done;
    Bytes packet;
};

// The camera behind the link: memory, and answers that the test puts in place of its own.
struct Device
{
    ByteOrder order = ByteOrder::Little;
    std::map<uint64_t, uint8_t> memory;
    std::vector<Bytes> received;
    std::function<std::vector<Reply>(const CommandPacket&)> script; // empty: answers as a camera does
    KX_Status openStatus = KX_OK;
    bool isOpen = false;

    void put(uint64_t address, uint64_t value, size_t size)
    {
        Bytes bytes;
        append(bytes, value, size, order);
        for (size_t i = 0; i < size; ++i)
            memory[address + i] = bytes[i];
    }
    void putText(uint64_t address, const std::string& text)
    {
        for (size_t i = 0; i < kTextSize; ++i)
            memory[address + i] = i < text.size() ? static_cast<uint8_t>(text[i]) : 0;
    }
    AckPacket answer(const CommandPacket& command)
    {
        AckPacket ack{Success, uint16_t(command.command + 1), command.id, {}};
        if (const auto range = parseReadMemory(command.scd, order); range && command.command == ReadMemCmd) {
            for (size_t i = 0; i < range->count; ++i) {
                const auto byte = memory.find(range->address + i);
                if (byte == memory.end())
                    return {InvalidAddress, ReadMemAck, command.id, {}};
                ack.scd.push_back(byte->second);
            }
        } else if (const auto write = parseWriteMemory(command.scd, order)) {
            for (size_t i = 0; i < write->data.size(); ++i)
                memory[write->address + i] = write->data[i];
            ack.scd = writeAckScd(static_cast<uint16_t>(write->data.size()), order);
        }
        return ack;
    }
    Reply good(const CommandPacket& command) { return {Outcome::Done, encodeAck(answer(command), order)}; }
    Reply refusal(const CommandPacket& command, uint16_t status) const
    {
        return {Outcome::Done, encodeAck({status, uint16_t(command.command + 1), command.id, {}}, order)};
    }
};

class ScriptedLink : public GenCpLink
{
public:
    explicit ScriptedLink(Device& device) : m_device(device) {}
    KX_Status open() override
    {
        m_device.isOpen = m_device.openStatus == KX_OK;
        return m_device.openStatus;
    }
    void close() override { m_device.isOpen = false; }
    bool isOpen() const override { return m_device.isOpen; }
    ByteOrder byteOrder() const override { return m_device.order; }
    size_t prefixSize() const override { return 4; }
    Outcome send(const Bytes& packet, Clock::time_point) override
    {
        m_device.received.push_back(packet);
        const auto command = decodeCommand(packet.data(), packet.size(), m_device.order);
        EXPECT_TRUE(command);
        const auto replies =
            m_device.script ? m_device.script(*command) : std::vector<Reply>{m_device.good(*command)};
        m_replies.insert(m_replies.end(), replies.begin(), replies.end());
        return Outcome::Done;
    }
    Outcome receive(Bytes& packet, Clock::time_point deadline) override
    {
        lastDeadline = deadline;
        if (m_replies.empty())
            return Outcome::TimedOut;
        const Reply reply = m_replies.front();
        m_replies.pop_front();
        packet = reply.packet;
        return reply.outcome;
    }
    std::string name() const override { return "link"; }
    std::string errorText() const override { return "the system says no"; }

    Clock::time_point lastDeadline;

private:
    Device& m_device;
    std::deque<Reply> m_replies;
};

class LimitedPort : public GenCpPort
{
public:
    using GenCpPort::GenCpPort;
    size_t command = 64;
    size_t ack = 64;

protected:
    KX_Status settle() override
    {
        setLimits(command, ack);
        return KX_OK;
    }
};

class GenCp : public testing::Test
{
protected:
    GenCp()
    {
        for (const uint64_t text : {RegManufacturer, RegModel, RegDeviceVersion})
            device.putText(text, "text");
        device.putText(RegSerialNumber, "S1");
        device.put(RegLongestResponseTime, 0, 4);
        for (uint64_t i = 0; i < 4096; ++i)
            device.memory[0x10000 + i] = static_cast<uint8_t>(i * 7);
        auto made = std::make_unique<ScriptedLink>(device);
        link = made.get();
        port = std::make_unique<LimitedPort>(std::move(made), "S1");
    }
    void open()
    {
        ASSERT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << port->lastError();
        device.received.clear();
    }

    Device device;
    ScriptedLink* link = nullptr;
    std::unique_ptr<LimitedPort> port;
};

} // namespace

TEST_F(GenCp, requestsStandOnTheWireAsTheLinkOrdersThem)
{
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        device.order = order;
        open();
        uint8_t bytes[4];
        ASSERT_EQ(port->readMemory(0x10004, bytes, 4), KX_OK);
        ASSERT_EQ(device.received.size(), 1u);
        Bytes packet = device.received[0];
        const uint16_t id = static_cast<uint16_t>(get(&packet[6], 2, order));
        EXPECT_EQ(packet,
                  encodeCommand({AckRequired, ReadMemCmd, id, readMemoryScd(0x10004, 4, order)}, order));
        EXPECT_EQ(bytes[1], uint8_t(5 * 7));
        port->close();
    }
}

TEST_F(GenCp, piecesFitTheCamerasLimits)
{
    port->command = 100;
    port->ack = 80;
    open();
    uint8_t bytes[1000];
    ASSERT_EQ(port->readMemory(0x10000, bytes, sizeof bytes), KX_OK);
    EXPECT_EQ(device.received.size(), (1000 + 67) / 68u); // 80 less prefix and header
    for (size_t i = 0; i < sizeof bytes; ++i)
        ASSERT_EQ(bytes[i], uint8_t(i * 7)) << i;
    device.received.clear();
    ASSERT_EQ(port->writeMemory(0x20000, bytes, sizeof bytes), KX_OK);
    EXPECT_EQ(device.received.size(), 1000 / 80 + 1u); // 100 less prefix, header and address
    for (const Bytes& packet : device.received)
        EXPECT_LE(packet.size() + 4, 100u);
    for (size_t i = 0; i < sizeof bytes; ++i)
        ASSERT_EQ(device.memory[0x20000 + i], uint8_t(i * 7)) << i;
}

TEST_F(GenCp, limitsOutOfReasonAreBroughtIntoIt)
{
    port->command = 0;
    port->ack = 3;
    open();
    uint8_t bytes[52];
    EXPECT_EQ(port->readMemory(0x10000, bytes, sizeof bytes), KX_OK);
    EXPECT_EQ(device.received.size(), 1u);
    EXPECT_EQ(port->writeMemory(0x20000, bytes, 44), KX_OK);
    EXPECT_EQ(device.received.size(), 2u);
}

TEST_F(GenCp, registersAreMemoryWithItsFirstByteOnTop)
{
    open();
    uint32_t value = 0;
    ASSERT_EQ(port->readRegister(0x10000, value), KX_OK);
    EXPECT_EQ(value, 0x00070E15u);
    ASSERT_EQ(port->writeRegister(0x10000, 0x01020304), KX_OK);
    EXPECT_EQ(device.memory[0x10000], 1);
    EXPECT_EQ(device.memory[0x10003], 4);
    std::vector<uint32_t> values;
    ASSERT_EQ(port->readRegisters({0x10000, 0x10004}, values), KX_OK);
    EXPECT_EQ(values, (std::vector<uint32_t>{0x01020304, 0x1C232A31}));
    EXPECT_EQ(port->readRegisters({0x10000, 0x999999}, values), KX_E_GC_ACCESS);
    EXPECT_TRUE(values.empty());
}

TEST_F(GenCp, aTryWithoutAnswerIsRepeatedUnderItsId)
{
    open();
    unsigned heard = 0;
    device.script = [&](const CommandPacket& command) {
        return ++heard < 3 ? std::vector<Reply>{} : std::vector<Reply>{device.good(command)};
    };
    uint32_t value = 0;
    const uint64_t before = port->requestCount();
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
    EXPECT_EQ(port->requestCount() - before, 3u);
    ASSERT_EQ(device.received.size(), 3u);
    EXPECT_EQ(get(&device.received[0][0], 2, device.order), AckRequired);
    EXPECT_EQ(get(&device.received[1][0], 2, device.order), AckRequired | Repeated);
    EXPECT_EQ(get(&device.received[1][6], 2, device.order), get(&device.received[0][6], 2, device.order));
    device.script = [](const CommandPacket&) { return std::vector<Reply>{}; };
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_NO_ANSWER);
    EXPECT_EQ(port->lastError(), "reading memory at 0x00010000 of link: no answer in 3 tries");
}

TEST_F(GenCp, staleAnswersAreDropped)
{
    open();
    device.script = [&](const CommandPacket& command) {
        CommandPacket earlier = command;
        earlier.id = static_cast<uint16_t>(command.id - 1);
        Reply stale = device.good(earlier);
        stale.packet[8] ^= 0xFF;
        return std::vector<Reply>{stale, device.refusal(earlier, Busy), device.good(command)};
    };
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
    EXPECT_EQ(value, 0x00070E15u);
}

TEST_F(GenCp, whatIsNoAnswerIsToldAsMalformed)
{
    open();
    uint32_t value = 0;
    const std::vector<std::function<Reply(const CommandPacket&)>> odd = {
        [](const CommandPacket&) {
            return Reply{Outcome::Malformed, {}};
        },
        [](const CommandPacket&) {
            return Reply{Outcome::Done, {1, 2, 3}};
        },
        [&](const CommandPacket& command) { // too short
            return Reply{Outcome::Done, encodeAck({Success, ReadMemAck, command.id, {1, 2}}, device.order)};
        },
        [&](const CommandPacket& command) { // too long
            return Reply{Outcome::Done, encodeAck({Success, ReadMemAck, command.id, Bytes(5)}, device.order)};
        },
        [&](const CommandPacket& command) { // of another command
            return Reply{Outcome::Done,
                         encodeAck({Success, WriteMemAck, command.id, Bytes(4)}, device.order)};
        },
    };
    for (const auto& answer : odd) {
        device.script = [&](const CommandPacket& command) { return std::vector<Reply>{answer(command)}; };
        EXPECT_EQ(port->readRegister(0x10000, value), KX_E_MALFORMED_ANSWER);
        device.script = [&](const CommandPacket& command) {
            return std::vector<Reply>{answer(command), device.good(command)};
        };
        EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
    }
}

TEST_F(GenCp, pendingAcknowledgesStretchTheTimeOutAsFarAsAllowed)
{
    open();
    port->setTimeouts({milliseconds(10), 1, milliseconds(500)});
    const auto pending = [&](const CommandPacket& command, uint16_t time) {
        return Reply{
            Outcome::Done,
            encodeAck({Success, PendingAck, command.id, pendingAckScd(time, device.order)}, device.order)};
    };
    for (const auto& [asked, least, most] : {std::tuple{300, 300, 330}, std::tuple{60000, 450, 520}}) {
        device.script = [&, time = uint16_t(asked)](const CommandPacket& command) {
            return std::vector<Reply>{pending(command, time), device.good(command)};
        };
        uint32_t value = 0;
        const auto start = GenCpLink::Clock::now();
        EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
        EXPECT_GE(link->lastDeadline - start, milliseconds(least));
        EXPECT_LE(link->lastDeadline - start, milliseconds(most));
    }
}

TEST_F(GenCp, aCameraThatAsksForTimeWithoutEndIsLost)
{
    open();
    port->setTimeouts({milliseconds(10), 2, milliseconds(0)});
    device.script = [&](const CommandPacket& command) {
        return std::vector<Reply>{
            {Outcome::Done,
             encodeAck({Success, PendingAck, command.id, pendingAckScd(100, device.order)}, device.order)}};
    };
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_NO_ANSWER);
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_CONNECTION_LOST);
}

TEST_F(GenCp, aCameraThatRefusesBehindPendingIsNotLost)
{
    open();
    port->setTimeouts({milliseconds(10), 2, milliseconds(0)});
    device.script = [&, calls = 0](const CommandPacket& command) mutable {
        const bool isFirst = ++calls == 1;
        const AckPacket ack{isFirst ? uint16_t(Success) : uint16_t(InvalidAddress),
                            isFirst ? uint16_t(PendingAck) : uint16_t(command.command + 1), command.id,
                            isFirst ? pendingAckScd(100, device.order) : Bytes()};
        return std::vector<Reply>{{Outcome::Done, encodeAck(ack, device.order)}};
    };
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_GC_ACCESS);
    device.script = nullptr;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK) << port->lastError();
}

TEST_F(GenCp, noTimeOutIsShorterThanTheCamerasOwnLongestResponse)
{
    device.put(RegLongestResponseTime, 5000, 4);
    open();
    uint32_t value = 0;
    const auto start = GenCpLink::Clock::now();
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
    EXPECT_GE(link->lastDeadline - start, milliseconds(5000));
    port->close();
    device.put(RegLongestResponseTime, 0xFFFFFFFF, 4);
    open();
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
    EXPECT_LE(link->lastDeadline - GenCpLink::Clock::now(), milliseconds(60000));
}

TEST_F(GenCp, refusalsSayWhatTheCameraSays)
{
    open();
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x999999, value), KX_E_GC_ACCESS);
    EXPECT_EQ(port->lastError(), "reading memory at 0x00999999 of link: invalid address (0x8003)");
    device.script = [&](const CommandPacket& command) {
        return std::vector<Reply>{device.refusal(command, GenericError)};
    };
    EXPECT_EQ(port->writeRegister(0x10000, 1), KX_E_DEVICE);
    EXPECT_EQ(port->lastError(), "writing memory at 0x00010000 of link: a fault of the camera (0x8FFF)");
}

TEST_F(GenCp, aBusyCameraIsAskedAgainUnderAnotherId)
{
    open();
    port->setTimeouts({milliseconds(10), 3, milliseconds(500)});
    unsigned heard = 0;
    device.script = [&](const CommandPacket& command) {
        return std::vector<Reply>{++heard < 3 ? device.refusal(command, Busy) : device.good(command)};
    };
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
    ASSERT_EQ(device.received.size(), 3u);
    EXPECT_NE(get(&device.received[1][6], 2, device.order), get(&device.received[0][6], 2, device.order));
    heard = 0;
    port->setTimeouts({milliseconds(10), 2, milliseconds(500)});
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_BUSY);
}

TEST_F(GenCp, aWriteThatFellShortIsAFault)
{
    open();
    const auto answerWith = [&](Bytes scd) {
        device.script = [&, scd](const CommandPacket& command) {
            return std::vector<Reply>{
                {Outcome::Done, encodeAck({Success, WriteMemAck, command.id, scd}, device.order)}};
        };
    };
    answerWith(writeAckScd(2, device.order));
    EXPECT_EQ(port->writeRegister(0x10000, 1), KX_E_DEVICE);
    EXPECT_EQ(port->lastError(), "writing memory at 0x00010000 of link: 2 of 4 bytes were written");
    answerWith(writeAckScd(0, device.order));
    EXPECT_EQ(port->writeRegister(0x10000, 1), KX_OK);
    answerWith({});
    EXPECT_EQ(port->writeRegister(0x10000, 1), KX_OK);
}

TEST_F(GenCp, aMonitorWritesNothing)
{
    ASSERT_EQ(port->open(KX_ACCESS_MONITOR, 0), KX_OK);
    device.received.clear();
    EXPECT_EQ(port->writeRegister(0x10000, 1), KX_E_GC_ACCESS);
    EXPECT_TRUE(device.received.empty());
}

TEST_F(GenCp, openingSaysWhyItCannot)
{
    EXPECT_EQ(port->open(2, 0), KX_E_PARAMETER);
    device.openStatus = KX_E_CONTROL_REFUSED;
    EXPECT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CONTROL_REFUSED);
    EXPECT_EQ(port->lastError(), "the system says no");
    device.openStatus = KX_OK;
    device.putText(RegSerialNumber, "S2");
    EXPECT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_NO_DEVICE);
    EXPECT_EQ(port->lastError(), "the camera at link has the serial number S2 instead of S1");
    EXPECT_FALSE(device.isOpen);
    device.putText(RegSerialNumber, "S1");
    ASSERT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_E_CALL_ORDER);
    port->close();
    EXPECT_FALSE(device.isOpen);
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_CALL_ORDER);
}

TEST_F(GenCp, aLossIsToldOnceAndEndsEveryFurtherCall)
{
    std::mutex mutex;
    std::condition_variable told;
    std::vector<KX_Status> losses;
    port->setConnectionLostHandler([&](KX_Status status) {
        const std::lock_guard lock(mutex);
        losses.push_back(status);
        told.notify_all();
    });
    open();
    device.script = [](const CommandPacket&) { return std::vector<Reply>{{Outcome::Gone, {}}}; };
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(port->lastError(), "the connection is lost: link is gone");
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_CONNECTION_LOST);
    EXPECT_EQ(device.received.size(), 1u);
    std::unique_lock lock(mutex);
    EXPECT_TRUE(told.wait_for(lock, std::chrono::seconds(10), [&] { return !losses.empty(); }));
    EXPECT_EQ(losses, std::vector<KX_Status>{KX_E_CONNECTION_LOST});
    lock.unlock();
    port->close();
    device.script = nullptr;
    EXPECT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK);
    EXPECT_EQ(port->readRegister(0x10000, value), KX_OK);
}

// A row of requests that nobody answers, at least two of them and at least a second.
TEST_F(GenCp, silenceThatLastsIsALoss)
{
    for (const Outcome outcome : {Outcome::TimedOut, Outcome::Failed}) {
        open();
        device.script = [&](const CommandPacket&) { return std::vector<Reply>{{outcome, {}}}; };
        uint32_t value = 0;
        const auto began = std::chrono::steady_clock::now();
        KX_Status status = KX_OK;
        unsigned requests = 0;
        do {
            status = port->readRegister(0x10000, value);
            ++requests;
            std::this_thread::sleep_for(milliseconds(10));
        } while (status != KX_E_CONNECTION_LOST &&
                 std::chrono::steady_clock::now() - began < std::chrono::seconds(30));
        EXPECT_EQ(status, KX_E_CONNECTION_LOST);
        EXPECT_EQ(port->lastError(), "the connection is lost: link does not answer any more");
        EXPECT_GE(requests, 2u);
        EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::seconds(1));
        device.script = nullptr;
        EXPECT_EQ(port->readRegister(0x10000, value), KX_E_CONNECTION_LOST) << "until it is opened again";
        port->close();
        ASSERT_EQ(port->open(KX_ACCESS_EXCLUSIVE, 0), KX_OK) << "its silence is of the past";
        port->close();
    }
}

// One request may take as long as it likes, and so may a camera that answers now and then, or too late.
TEST_F(GenCp, whoeverIsHeardIsNotLost)
{
    open();
    device.script = [&](CommandPacket command) {
        --command.id; // of the request before
        return std::vector<Reply>{device.good(command)};
    };
    uint32_t value = 0;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(port->readRegister(0x10000, value), KX_E_NO_ANSWER) << i;
        std::this_thread::sleep_for(milliseconds(300));
    }
}

TEST_F(GenCp, whatTheSystemRefusesIsNoLoss)
{
    open();
    device.script = [](const CommandPacket&) { return std::vector<Reply>{{Outcome::Failed, {}}}; };
    uint32_t value = 0;
    EXPECT_EQ(port->readRegister(0x10000, value), KX_E_NETWORK);
    EXPECT_EQ(port->lastError(), "reading memory at 0x00010000 of link: the system says no");
    EXPECT_EQ(device.received.size(), 1u);
}

TEST_F(GenCp, theManifestNamesTheDescriptions)
{
    const auto entry = [&](unsigned index, uint8_t type, FileFormat format, uint64_t address) {
        ManifestEntry one;
        one.fileType = type;
        one.format = static_cast<uint8_t>(format);
        one.address = address;
        one.size = 0x1234;
        const Bytes bytes = encodeManifestEntry(one, device.order);
        for (size_t i = 0; i < bytes.size(); ++i)
            device.memory[0x30008 + index * kManifestEntrySize + i] = bytes[i];
    };
    device.put(RegManifestTable, 0x30000, 8);
    device.put(0x30000, 3, 8);
    entry(0, 0, FileFormat::Zip, 0x8000000000);
    entry(1, 1, FileFormat::Plain, 0x100); // of the buffers
    entry(2, 0, FileFormat::Plain, 0x200);
    open();
    std::vector<std::string> urls;
    EXPECT_EQ(port->descriptionUrls(urls), KX_OK);
    EXPECT_EQ(urls,
              (std::vector<std::string>{"Local:camera.zip;8000000000;1234", "Local:camera.xml;200;1234"}));

    EXPECT_EQ(port->names().model, "text");
    device.put(RegManifestTable, 0xDEAD0000, 8); // nowhere
    EXPECT_EQ(port->descriptionUrls(urls), KX_OK);
    EXPECT_TRUE(urls.empty());
    device.put(RegManifestTable, 0x30000, 8);
    device.put(0x30000, ~uint64_t(0), 8); // more than there can be: what is readable counts
    EXPECT_EQ(port->descriptionUrls(urls), KX_OK);
    EXPECT_EQ(urls.size(), 2u);
}
