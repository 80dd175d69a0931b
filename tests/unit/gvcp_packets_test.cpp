#include "gvcp/Gvcp.h"

#include <gtest/gtest.h>

using namespace gvcp;

TEST(GvcpCommand, discoveryIsAHeaderAlone)
{
    EXPECT_EQ(encodeDiscovery(0x1234), (Bytes{0x42, 0x01, 0x00, 0x02, 0x00, 0x00, 0x12, 0x34}));
    EXPECT_EQ(encodeDiscovery(0x1234, true), (Bytes{0x42, 0x11, 0x00, 0x02, 0x00, 0x00, 0x12, 0x34}));
}

TEST(GvcpCommand, readRegistersListsAddresses)
{
    EXPECT_EQ(encodeReadRegisters(7, {0x0A00, 0xA0000004}),
              (Bytes{0x42, 1, 0, 0x80, 0, 8, 0, 7, 0, 0, 0x0A, 0, 0xA0, 0, 0, 4}));
}

TEST(GvcpCommand, writeRegistersListsPairs)
{
    EXPECT_EQ(encodeWriteRegisters(7, {{0x0A00, 2}}),
              (Bytes{0x42, 1, 0, 0x82, 0, 8, 0, 7, 0, 0, 0x0A, 0, 0, 0, 0, 2}));
}

TEST(GvcpCommand, readMemoryHasAReservedHalfWordBeforeTheCount)
{
    EXPECT_EQ(encodeReadMemory(9, 0x200, 512), (Bytes{0x42, 1, 0, 0x84, 0, 8, 0, 9, 0, 0, 2, 0, 0, 0, 2, 0}));
}

TEST(GvcpCommand, writeMemoryCarriesItsBytesBehindTheAddress)
{
    const uint8_t data[] = {1, 2, 3, 4};
    EXPECT_EQ(encodeWriteMemory(9, 0x10, data, 4),
              (Bytes{0x42, 1, 0, 0x86, 0, 8, 0, 9, 0, 0, 0, 0x10, 1, 2, 3, 4}));
}

TEST(GvcpCommand, anotherIdChangesNothingElse)
{
    Bytes packet = encodeReadMemory(9, 0x200, 512);
    setId(packet, 0xABCD);
    EXPECT_EQ(packet, encodeReadMemory(0xABCD, 0x200, 512));
}

TEST(GvcpCommand, idsGoRoundWithoutZero)
{
    EXPECT_EQ(nextId(0), 1);
    EXPECT_EQ(nextId(0xFFFE), 0xFFFF);
    EXPECT_EQ(nextId(0xFFFF), 1);
}

TEST(GvcpCommand, decodingTurnsBackWhatWasEncoded)
{
    const Bytes packet = encodeWriteRegisters(0xFFFF, {{4, 5}, {8, 9}});
    const auto command = decodeCommand(packet.data(), packet.size());
    ASSERT_TRUE(command);
    EXPECT_EQ(command->flags, kFlagAckRequired);
    EXPECT_EQ(command->command, WriteRegCmd);
    EXPECT_EQ(command->id, 0xFFFF);
    const auto writes = parseWriteRegisters(command->payload);
    ASSERT_TRUE(writes);
    ASSERT_EQ(writes->size(), 2u);
    EXPECT_EQ((*writes)[1].address, 8u);
    EXPECT_EQ((*writes)[1].value, 9u);
}

TEST(GvcpCommand, refusesWhatIsNoCommand)
{
    Bytes packet = encodeReadMemory(1, 0, 4);
    EXPECT_FALSE(decodeCommand(packet.data(), kHeaderSize - 1));
    EXPECT_FALSE(decodeCommand(packet.data(), packet.size() - 1)) << "payload cut short";
    packet.push_back(0);
    EXPECT_FALSE(decodeCommand(packet.data(), packet.size())) << "bytes behind the payload";
    packet.pop_back();
    packet[0] = 0x43;
    EXPECT_FALSE(decodeCommand(packet.data(), packet.size())) << "wrong key";
}

TEST(GvcpCommand, payloadsOfAnotherShapeAreRefused)
{
    EXPECT_FALSE(parseReadRegisters({}));
    EXPECT_FALSE(parseReadRegisters({0, 0, 0}));
    EXPECT_TRUE(parseReadRegisters(Bytes(4 * kMaxReadRegisters)));
    EXPECT_FALSE(parseReadRegisters(Bytes(4 * (kMaxReadRegisters + 1))));
    EXPECT_FALSE(parseWriteRegisters(Bytes(12)));
    EXPECT_TRUE(parseWriteRegisters(Bytes(8 * kMaxWriteRegisters)));
    EXPECT_FALSE(parseWriteRegisters(Bytes(8 * (kMaxWriteRegisters + 1))));
    EXPECT_FALSE(parseReadMemory(Bytes(7)));
    EXPECT_FALSE(parseWriteMemory(Bytes(4)));
    EXPECT_TRUE(parseWriteMemory(Bytes(4 + kMaxReadMemory)));
    EXPECT_FALSE(parseWriteMemory(Bytes(5 + kMaxReadMemory)));
}

TEST(GvcpAck, roundTrip)
{
    const Bytes packet = encodeAck({Busy, ReadRegAck, 0x0102, {1, 2, 3, 4}});
    EXPECT_EQ(packet, (Bytes{0x80, 0x07, 0, 0x81, 0, 4, 1, 2, 1, 2, 3, 4}));
    const auto ack = decodeAck(packet.data(), packet.size());
    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->status, Busy);
    EXPECT_EQ(ack->id, 0x0102);
    EXPECT_FALSE(parseRegisterValues(ack->payload, 2)) << "one value where two were asked for";
    EXPECT_EQ((*parseRegisterValues(ack->payload, 1))[0], 0x01020304u);
}

TEST(GvcpAck, lengthBeyondTheBytesIsRefused)
{
    Bytes packet = encodeAck({Success, ReadRegAck, 1, {1, 2, 3, 4}});
    EXPECT_FALSE(decodeAck(packet.data(), packet.size() - 1));
    EXPECT_FALSE(decodeAck(packet.data(), 7));
}

TEST(GvcpAck, pendingTimeIsInTheSecondHalfWord)
{
    EXPECT_EQ(*parsePendingAck(pendingAckPayload(750)), 750);
    EXPECT_FALSE(parsePendingAck({0, 0, 1}));
}

TEST(GvcpAck, discoveryReadsTheBootstrapBlock)
{
    Bytes payload(kDiscoverySize);
    put32(&payload[RegMacHigh], 0x8000AABB);
    put32(&payload[RegMacLow], 0xCCDDEEFF);
    put32(&payload[RegCurrentAddress], 0x7F00000B);
    const std::string model(32, 'M');
    std::copy(model.begin(), model.end(), payload.begin() + RegModel);
    payload[RegSerialNumber] = 'S';
    const auto found = parseDiscovery(payload);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->macHigh, 0xAABBu) << "the upper half word is reserved";
    EXPECT_EQ(found->macLow, 0xCCDDEEFFu);
    EXPECT_EQ(found->model, model) << "a field without a terminating zero ends with the field";
    EXPECT_EQ(found->serialNumber, "S");
    EXPECT_EQ(found->userName, "");
    payload.pop_back();
    EXPECT_FALSE(parseDiscovery(payload));
}

TEST(GvcpAddress, textAndNumber)
{
    EXPECT_EQ(parseAddress("127.0.0.11"), 0x7F00000Bu);
    EXPECT_EQ(formatAddress(0x7F00000B), "127.0.0.11");
    for (const char* wrong : {"", "127.0.0", "127.0.0.256", "127.0.0.1x", "a.b.c.d", "127.0.0.1.2"})
        EXPECT_FALSE(parseAddress(wrong)) << wrong;
}

// GigE Vision, FORCEIP_CMD: 56 bytes, of which most are reserved.
TEST(GvcpForceIp, standsAtItsOffsets)
{
    const Bytes packet = encodeForceIp(7, {0x0A0B, 0x0C0D0E0F, 0xC0A80105, 0xFFFFFF00, 0xC0A80101});
    ASSERT_EQ(packet.size(), 8u + 56u);
    EXPECT_EQ(Bytes(packet.begin(), packet.begin() + 8), (Bytes{0x42, 0x11, 0, 4, 0, 56, 0, 7}));
    EXPECT_EQ(Bytes(packet.begin() + 8, packet.begin() + 16),
              (Bytes{0, 0, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F}));
    EXPECT_EQ(get32(&packet[8 + 20]), 0xC0A80105u);
    EXPECT_EQ(get32(&packet[8 + 36]), 0xFFFFFF00u);
    EXPECT_EQ(get32(&packet[8 + 52]), 0xC0A80101u);
    const auto command = decodeCommand(packet.data(), packet.size());
    ASSERT_TRUE(command);
    const auto read = parseForceIp(command->payload);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->macHigh, 0x0A0Bu);
    EXPECT_EQ(read->macLow, 0x0C0D0E0Fu);
    EXPECT_EQ(read->address, 0xC0A80105u);
    EXPECT_FALSE(parseForceIp(Bytes(55)));
}
