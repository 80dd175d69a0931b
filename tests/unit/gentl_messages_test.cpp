// Messages between the camera library and its helper for GenTL producers: what comes out is what went in, and
// nothing that comes in is believed.
#include "gentl/Channel.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>

using namespace gentl;
using std::chrono::milliseconds;

TEST(GentlMessages, whatIsWrittenIsRead)
{
    const Bytes block{1, 2, 3};
    const Bytes message =
        Writer().u32(7).i32(-1010).u64(0x123456789AULL).text("a\0b").block(&block[0], 3).bytes();
    Reader reader(message);
    EXPECT_EQ(reader.u32(), 7u);
    EXPECT_EQ(reader.i32(), -1010);
    EXPECT_EQ(reader.u64(), 0x123456789AULL);
    EXPECT_EQ(reader.text(), "a");
    EXPECT_EQ(reader.block(), block);
    EXPECT_TRUE(reader.isGood());
    EXPECT_TRUE(reader.isAtEnd());
}

TEST(GentlMessages, textsAreCutAndBlocksAreNeverLongerThanAllowed)
{
    const Bytes message = Writer().text(std::string(2 * kMaxText, 'x')).bytes();
    EXPECT_EQ(Reader(message).text(), std::string(kMaxText, 'x'));
    const Bytes large(2 * kMaxBlock, 5);
    const Bytes withBlock = Writer().block(large.data(), large.size()).bytes();
    EXPECT_EQ(Reader(withBlock).block(), Bytes(kMaxBlock, 5));
}

TEST(GentlMessages, behindTheEndEverythingIsEmptyAndSaysSo)
{
    const Bytes message = Writer().u32(1).bytes();
    Reader reader(message);
    EXPECT_EQ(reader.u32(), 1u);
    EXPECT_TRUE(reader.isGood());
    EXPECT_EQ(reader.u64(), 0u);
    EXPECT_FALSE(reader.isGood());
    EXPECT_EQ(reader.text(), "");
    EXPECT_TRUE(reader.block().empty());
    EXPECT_FALSE(Reader(Bytes()).u32());
}

TEST(GentlMessages, lengthsThatPromiseMoreThanThereIsAreNotFollowed)
{
    for (const uint32_t promised : {5u, 0xFFFFFFFFu, uint32_t(kMaxText) + 1}) {
        Bytes message = Writer().u32(promised).bytes();
        message.insert(message.end(), {'a', 'b', 'c', 'd'});
        Reader text(message);
        EXPECT_EQ(text.text(), "") << promised;
        EXPECT_FALSE(text.isGood());
        Reader block(message);
        EXPECT_TRUE(block.block().empty()) << promised;
        EXPECT_FALSE(block.isGood());
    }
}

TEST(GentlChannel, messagesStayApartAndArriveInOrder)
{
    auto [a, b] = Channel::pair();
    ASSERT_TRUE(a.send({1}));
    ASSERT_TRUE(a.send({2, 3}));
    Bytes message;
    EXPECT_EQ(b.receive(message, std::nullopt), Channel::Outcome::Done);
    EXPECT_EQ(message, Bytes{1});
    EXPECT_EQ(b.receive(message, std::nullopt), Channel::Outcome::Done);
    EXPECT_EQ(message, (Bytes{2, 3}));
}

TEST(GentlChannel, silenceTimesOutAndAClosedEndIsGone)
{
    auto [a, b] = Channel::pair();
    Bytes message;
    EXPECT_EQ(b.receive(message, Channel::Clock::now() + milliseconds(10)), Channel::Outcome::TimedOut);
    ASSERT_TRUE(a.send({1}));
    a.close();
    EXPECT_EQ(b.receive(message, std::nullopt), Channel::Outcome::Done) << "what was sent before";
    EXPECT_EQ(b.receive(message, std::nullopt), Channel::Outcome::Gone);
    EXPECT_FALSE(b.send({1}));
    EXPECT_FALSE(Channel().send({1}));
}

TEST(GentlChannel, shuttingDownEndsAWaitInAnotherThread)
{
    auto [a, b] = Channel::pair();
    Channel::Outcome outcome = Channel::Outcome::Done;
    std::thread waiting([&, &end = a] {
        Bytes message;
        outcome = end.receive(message, std::nullopt);
    });
    a.shutDown();
    waiting.join();
    EXPECT_EQ(outcome, Channel::Outcome::Gone);
}

TEST(GentlChannel, aMessageThatIsTooLongIsNone)
{
    auto [a, b] = Channel::pair();
    ASSERT_TRUE(a.send(Bytes(kMaxMessage + 1)));
    Bytes message;
    EXPECT_EQ(b.receive(message, std::nullopt), Channel::Outcome::Gone);
}

TEST(GentlChannel, endsAreHandedOver)
{
    auto [a, b] = Channel::pair();
    auto [first, firstPeer] = Channel::pair();
    auto [second, secondPeer] = Channel::pair();
    ASSERT_TRUE(a.send({1}, {firstPeer.descriptor(), secondPeer.descriptor()}));
    firstPeer.close();
    secondPeer.close();
    Bytes message;
    std::vector<Channel> ends;
    ASSERT_EQ(b.receive(message, std::nullopt, &ends), Channel::Outcome::Done);
    ASSERT_EQ(ends.size(), 2u);
    ASSERT_TRUE(ends[1].send({9}));
    EXPECT_EQ(second.receive(message, std::nullopt), Channel::Outcome::Done);
    EXPECT_EQ(message, Bytes{9});
    ends.clear();
    EXPECT_EQ(first.receive(message, std::nullopt), Channel::Outcome::Gone);
}

TEST(GentlChannel, endsThatNobodyTakesAreClosed)
{
    auto [a, b] = Channel::pair();
    auto [mine, handed] = Channel::pair();
    ASSERT_TRUE(a.send({1}, {handed.descriptor()}));
    handed.close();
    Bytes message;
    ASSERT_EQ(b.receive(message, std::nullopt), Channel::Outcome::Done);
    EXPECT_EQ(mine.receive(message, std::nullopt), Channel::Outcome::Gone);
}
