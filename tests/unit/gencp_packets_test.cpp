// GenCP's packets byte by byte in both orders, and its frames on a serial line.
#include "gencp/SerialFrame.h"

#include <gtest/gtest.h>

using namespace gencp;

namespace
{

Bytes sequence(size_t size)
{
    Bytes bytes;
    for (size_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<uint8_t>(i));
    return bytes;
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::vector<Bytes> framesIn(const Bytes& line, size_t pieceSize)
{
    SerialFrames frames;
    std::vector<Bytes> packets;
    for (size_t done = 0; done < line.size(); done += pieceSize) {
        frames.add(&line[done], std::min(pieceSize, line.size() - done));
        while (auto frame = frames.next())
            packets.push_back(frame->packet);
    }
    return packets;
}

const Bytes kRead =
    encodeCommand({AckRequired, ReadMemCmd, 1, readMemoryScd(0x144, 64, ByteOrder::Big)}, ByteOrder::Big);

} // namespace

TEST(GencpPackets, aReadInBothOrders)
{
    const auto read = [](ByteOrder order) {
        return encodeCommand(
            {AckRequired, ReadMemCmd, 0x0102, readMemoryScd(0x1122334455667788, 0x40, order)}, order);
    };
    EXPECT_EQ(read(ByteOrder::Little), (Bytes{0x00, 0x40, 0x00, 0x08, 0x0C, 0x00, 0x02, 0x01, 0x88, 0x77,
                                              0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0x00, 0x00, 0x40, 0x00}));
    EXPECT_EQ(read(ByteOrder::Big), (Bytes{0x40, 0x00, 0x08, 0x00, 0x00, 0x0C, 0x01, 0x02, 0x11, 0x22,
                                           0x33, 0x44, 0x55, 0x66, 0x77, 0x88, 0x00, 0x00, 0x00, 0x40}));
}

TEST(GencpPackets, aWriteCarriesItsBytesAsTheyAre)
{
    const uint8_t data[] = {1, 2, 3};
    EXPECT_EQ(encodeCommand({uint16_t(AckRequired | Repeated), WriteMemCmd, 7,
                             writeMemoryScd(0x10, data, sizeof data, ByteOrder::Little)},
                            ByteOrder::Little),
              (Bytes{0x00, 0xC0, 0x02, 0x08, 0x0B, 0x00, 7, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3}));
}

TEST(GencpPackets, commandsComeBackAsTheyWere)
{
    for (const ByteOrder order : {ByteOrder::Little, ByteOrder::Big}) {
        const Bytes data = sequence(5);
        const Bytes packet = encodeCommand(
            {AckRequired, WriteMemCmd, 0xFFFE, writeMemoryScd(0x80000004, data.data(), data.size(), order)},
            order);
        const auto command = decodeCommand(packet.data(), packet.size(), order);
        ASSERT_TRUE(command);
        EXPECT_EQ(command->flags, AckRequired);
        EXPECT_EQ(command->command, WriteMemCmd);
        EXPECT_EQ(command->id, 0xFFFE);
        const auto write = parseWriteMemory(command->scd, order);
        ASSERT_TRUE(write);
        EXPECT_EQ(write->address, 0x80000004u);
        EXPECT_EQ(write->data, data);
        const auto range = parseReadMemory(readMemoryScd(0x123456789A, 4096, order), order);
        ASSERT_TRUE(range);
        EXPECT_EQ(range->address, 0x123456789Au);
        EXPECT_EQ(range->count, 4096);
    }
}

TEST(GencpPackets, acknowledgesComeBackAsTheyWere)
{
    const Bytes packet =
        encodeAck({WriteProtect, WriteMemAck, 3, writeAckScd(0x1234, ByteOrder::Big)}, ByteOrder::Big);
    EXPECT_EQ(packet, (Bytes{0x80, 0x04, 0x08, 0x03, 0, 4, 0, 3, 0, 0, 0x12, 0x34}));
    const auto ack = decodeAck(packet.data(), packet.size(), ByteOrder::Big);
    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->status, WriteProtect);
    EXPECT_EQ(ack->command, WriteMemAck);
    EXPECT_EQ(ack->id, 3);
    EXPECT_EQ(ack->scd, (Bytes{0, 0, 0x12, 0x34}));
}

TEST(GencpPackets, aLengthThatIsNotThatOfTheBytesIsNoPacket)
{
    for (size_t size = 0; size < kRead.size(); ++size)
        EXPECT_FALSE(decodeCommand(kRead.data(), size, ByteOrder::Big)) << size;
    Bytes longer = kRead;
    longer.push_back(0);
    EXPECT_FALSE(decodeAck(longer.data(), longer.size(), ByteOrder::Big));
    EXPECT_TRUE(decodeAck(kRead.data(), kRead.size(), ByteOrder::Big));
}

TEST(GencpPackets, commandDataOfAnotherShapeIsNothing)
{
    EXPECT_FALSE(parseReadMemory(sequence(11), ByteOrder::Big));
    EXPECT_FALSE(parseReadMemory(sequence(13), ByteOrder::Big));
    EXPECT_FALSE(parseWriteMemory(sequence(8), ByteOrder::Big));
    EXPECT_FALSE(parsePendingAck(sequence(3), ByteOrder::Little));
    EXPECT_FALSE(parsePendingAck(sequence(5), ByteOrder::Little));
    EXPECT_EQ(parsePendingAck({0, 0, 0x2C, 0x01}, ByteOrder::Little), 300);
    EXPECT_EQ(pendingAckScd(300, ByteOrder::Big), (Bytes{0, 0, 0x01, 0x2C}));
}

TEST(GencpManifest, anEntryComesBackAsItWas)
{
    ManifestEntry entry;
    entry.format = static_cast<uint8_t>(FileFormat::Zip);
    entry.schemaMinor = 2;
    entry.address = 0x100000;
    entry.size = 5000;
    entry.sha1 = sequence(kSha1Size);
    const Bytes bytes = encodeManifestEntry(entry, ByteOrder::Little);
    ASSERT_EQ(bytes.size(), kManifestEntrySize);
    EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.begin() + 8), (Bytes{0x00, 0x04, 0x02, 0x01}));
    uint8_t raw[kManifestEntrySize];
    std::copy(bytes.begin(), bytes.end(), raw);
    const ManifestEntry back = parseManifestEntry(raw, ByteOrder::Little);
    EXPECT_EQ(back.fileType, 0);
    EXPECT_EQ(back.format, static_cast<uint8_t>(FileFormat::Zip));
    EXPECT_EQ(back.schemaMajor, 1);
    EXPECT_EQ(back.schemaMinor, 2);
    EXPECT_EQ(back.address, 0x100000u);
    EXPECT_EQ(back.size, 5000u);
    EXPECT_EQ(back.sha1, entry.sha1);
    std::fill(raw + 24, raw + 44, uint8_t(0));
    EXPECT_TRUE(parseManifestEntry(raw, ByteOrder::Little).sha1.empty());
}

TEST(GencpSerial, theChecksumIsTheComplementOfTheOnesComplementSum)
{
    EXPECT_EQ(serialChecksum(nullptr, 0), 0xFFFF);
    const uint8_t words[] = {0xFF, 0xFF, 0x00, 0x01}; // the carry comes round
    EXPECT_EQ(serialChecksum(words, 4), 0xFFFE);
    const uint8_t odd[] = {0x12, 0x34, 0x56};
    EXPECT_EQ(serialChecksum(odd, 3), static_cast<uint16_t>(~(0x1234 + 0x5600)));
}

TEST(GencpSerial, aFrameIsPreambleChecksumsChannelAndPacket)
{
    const Bytes packet = encodeAck({Success, WriteMemAck, 1, {}}, ByteOrder::Big);
    // 0x0803 + 0x0001 = 0x0804, over channel and header; nothing follows, so both are alike.
    EXPECT_EQ(serialFrame(0, packet),
              (Bytes{0x01, 0x00, 0xF7, 0xFB, 0xF7, 0xFB, 0, 0, 0, 0, 0x08, 0x03, 0, 0, 0, 1}));
    const Bytes onChannel = serialFrame(2, packet);
    EXPECT_EQ(Bytes(onChannel.begin() + 2, onChannel.begin() + 8), (Bytes{0xF7, 0xF9, 0xF7, 0xF9, 0, 2}));
}

TEST(GencpSerial, framesComeOutHoweverTheLineCutsThem)
{
    const Bytes line = joined({serialFrame(0, kRead), serialFrame(0, kRead), serialFrame(0, kRead)});
    for (const size_t piece : {1, 2, 7, 15, 16, 17, 61, 1000})
        EXPECT_EQ(framesIn(line, piece), std::vector<Bytes>(3, kRead)) << piece;
}

TEST(GencpSerial, noiseCostsTheFramesThatItHitAndNoOther)
{
    const Bytes good = serialFrame(0, kRead);
    for (size_t hit = 0; hit < good.size(); ++hit) {
        Bytes bad = good;
        bad[hit] ^= 0x10;
        for (const size_t piece : {size_t(1), size_t(1000)})
            EXPECT_EQ(framesIn(joined({good, bad, good}), piece), std::vector<Bytes>(2, kRead)) << hit;
    }
    EXPECT_EQ(framesIn(joined({{0x55, 0x01}, good, {0x01, 0x01, 0x00, 0x01}, good, {0x01}}), 1),
              std::vector<Bytes>(2, kRead));
}

TEST(GencpSerial, aHeaderThatAnnouncesTooMuchDoesNotSwallowTheLine)
{
    const Bytes huge = serialFrame(0, encodeAck({Success, ReadMemAck, 1, Bytes(600)}, ByteOrder::Big));
    const Bytes head(huge.begin(), huge.begin() + 20);
    SerialFrames frames(256);
    const Bytes line = joined({head, serialFrame(5, kRead)});
    frames.add(line.data(), line.size());
    const auto frame = frames.next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->packet, kRead);
    EXPECT_EQ(frame->channel, 5);
    EXPECT_EQ(frames.dropped(), head.size());
}
