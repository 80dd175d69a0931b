// Which requests registers are read by, and what a camera's refusals teach.
#include "KXCameraControl/nodes/BatchReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace
{

using Requests = std::vector<std::string>;

// Every word's value is its address.
class Line : public kx::RegisterLine
{
public:
    KX_Status readBlock(uint64_t address, void* data, size_t size) override
    {
        requests.push_back("block " + std::to_string(address) + " " + std::to_string(size));
        for (const uint64_t bad : refused)
            if (bad >= address && bad < address + size)
                return KX_E_GC_ACCESS;
        for (size_t i = 0; i < size; ++i)
            static_cast<uint8_t*>(data)[i] =
                static_cast<uint8_t>((address + i) / 4 * 4 >> (24 - 8 * ((address + i) % 4)));
        return KX_OK;
    }
    KX_Status readRegisters(const std::vector<uint32_t>& addresses, std::vector<uint32_t>& values) override
    {
        requests.push_back("batch of " + std::to_string(addresses.size()));
        if (addresses.size() > takes)
            return KX_E_GC_ACCESS;
        for (const uint32_t address : addresses) {
            if (std::count(refused.begin(), refused.end(), address) > 0)
                return KX_E_GC_ACCESS;
            if (std::count(mute.begin(), mute.end(), address) > 0)
                return KX_E_NO_ANSWER;
        }
        values = addresses;
        return batchStatus;
    }
    KX_Status writeBlock(uint64_t, const void*, size_t) override { return KX_E_GC_ACCESS; }
    KX_Status readRegister(uint64_t, uint32_t&) override { return KX_E_GC_ACCESS; }
    KX_Status writeRegister(uint64_t, uint32_t) override { return KX_E_GC_ACCESS; }
    std::string lineError() const override { return {}; }
    size_t registersPerRequest() const override { return promises; }

    size_t promises = 128;
    size_t takes = 128;
    KX_Status batchStatus = KX_OK;
    std::vector<uint64_t> refused;
    std::vector<uint64_t> mute;
    Requests requests;
};

class BatchReader : public testing::Test
{
protected:
    static kx::RegisterPlace word(uint64_t address) { return {address, 4, false}; }
    static std::set<kx::RegisterPlace> words(size_t count)
    {
        std::set<kx::RegisterPlace> places;
        for (size_t i = 0; i < count; ++i)
            places.insert(word(0x1000 + 8 * i));
        return places;
    }
    // How many were read; each has to have its own value.
    size_t read(const std::set<kx::RegisterPlace>& places)
    {
        line.requests.clear();
        size_t count = 0;
        isLineGood = reader.read(places, [&](const kx::RegisterPlace& place, const uint8_t* bytes) {
            ++count;
            for (size_t i = 0; i < place.size; ++i) {
                const uint64_t at = place.address + i;
                EXPECT_EQ(bytes[i], static_cast<uint8_t>(at / 4 * 4 >> (24 - 8 * (at % 4)))) << at;
            }
        });
        return count;
    }
    size_t countOf(const std::string& request) const
    {
        return static_cast<size_t>(std::count(line.requests.begin(), line.requests.end(), request));
    }

    Line line;
    kx::BatchReader reader{line};
    bool isLineGood = true;
};

TEST_F(BatchReader, readsWordsInBatchesAndTheRestInBlocks)
{
    auto places = words(200);
    places.insert({0x100, 32, false});
    places.insert({0x120, 16, false}); // touches
    places.insert({0x140, 8, false});  // lies close
    places.insert({0x400, 64, false});
    EXPECT_EQ(reader.requests(places), 4u);
    EXPECT_EQ(read(places), 204u);
    EXPECT_EQ(line.requests, (Requests{"batch of 128", "batch of 72", "block 256 72", "block 1024 64"}));
}

TEST_F(BatchReader, readsBlocksWhereTheLineHasNoBatches)
{
    line.promises = 1;
    EXPECT_EQ(read({word(0x100), word(0x104), word(0x114), word(0x200)}), 4u);
    EXPECT_EQ(line.requests, (Requests{"block 256 24", "block 512 4"}));
}

TEST_F(BatchReader, findsTheOneThatIsRefusedAndReadsItSinglyFromThen)
{
    line.refused = {0x1000 + 8 * 50};
    EXPECT_EQ(read(words(128)), 127u);
    EXPECT_TRUE(isLineGood);
    EXPECT_EQ(line.requests.size(), 15u); // the batch, and two of each half on the way down
    EXPECT_FALSE(reader.isBatchable(word(0x1000 + 8 * 50)));
    EXPECT_TRUE(reader.isBatchable(word(0x1000 + 8 * 51)));
}

TEST_F(BatchReader, learnsHowManyRegistersACameraTakes)
{
    line.takes = 40;
    EXPECT_EQ(read(words(128)), 128u);
    EXPECT_EQ(read(words(128)), 128u);
    EXPECT_EQ(line.requests, (Requests(4, "batch of 32")));
}

TEST_F(BatchReader, asksNoMoreForBatchesThatAreAllRefused)
{
    line.takes = 1;
    read(words(128));
    EXPECT_LE(line.requests.size(), 10u);
    line.requests.clear();
    EXPECT_EQ(reader.requests(words(2)), 1u) << "a block, for they lie close";
}

TEST_F(BatchReader, asksOnceOnlyWhereABatchIsNotAnswered)
{
    line.mute = {0x1000 + 8 * 5};
    EXPECT_EQ(read(words(100)), 0u);
    EXPECT_FALSE(isLineGood);
    EXPECT_EQ(line.requests.size(), 1u);
    EXPECT_FALSE(reader.isBatchable(word(0x1000)));
    reader.answered(word(0x1000));
    EXPECT_TRUE(reader.isBatchable(word(0x1000))) << "it was not the one";
    EXPECT_FALSE(reader.isBatchable(word(0x1008)));
}

TEST_F(BatchReader, asksForNoBatchesAnyMoreWhenOneIsAnsweredWithSomethingElse)
{
    line.batchStatus = KX_E_MALFORMED_ANSWER;
    EXPECT_EQ(read(words(10)), 0u);
    EXPECT_EQ(line.requests.size(), 1u);
    EXPECT_EQ(read({word(0x5000), word(0x5004)}), 2u);
    EXPECT_EQ(line.requests, (Requests{"block 20480 8"}));
}

TEST_F(BatchReader, givesUpOnACameraThatRefusesEverything)
{
    for (uint64_t i = 0; i < 128; ++i)
        line.refused.push_back(0x1000 + 8 * i);
    EXPECT_EQ(read(words(128)), 0u);
    EXPECT_LE(line.requests.size(), 40u);
}

} // namespace
