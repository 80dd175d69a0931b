// The words of a register: whole ones, in scratch or heap, as files have them, and what an import makes of a
// file's.
#include "jobs/nodes/RegisterWords.h"
#include "jobs/rules/ImportRules.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

using namespace ie;

namespace
{

std::size_t g_allocated = 0;

void* counted(std::size_t bytes)
{
    g_allocated += bytes;
    return std::calloc(1, bytes);
}

class RegisterWordsTest : public ::testing::Test
{
protected:
    RegisterWordsTest()
    {
        g_allocated = 0;
        setAllocateHook(counted);
    }
    ~RegisterWordsTest() override { setAllocateHook(nullptr); }
};

RegisterValue entry(const QString& content, const QString& to = {})
{
    RegisterValue value;
    value.content = content;
    value.to = to;
    return value;
}

QString taken(qint64 length, const RegisterValue& value)
{
    RegisterWords words(length, false);
    for (int i = 0; i < words.count(); ++i)
        words.setRaw(i, 9);
    words.take(value);
    return words.text();
}

} // namespace

TEST_F(RegisterWordsTest, AreWholeAndZero)
{
    for (const auto& pair : {std::pair<qint64, int>{-8, 0}, {0, 0}, {1, 1}, {4, 1}, {5, 2}, {256, 64}}) {
        RegisterWords words(pair.first, false);
        ASSERT_TRUE(words.isAllocated());
        EXPECT_EQ(words.count(), pair.second);
        EXPECT_EQ(words.words(), QVector<quint32>(pair.second));
    }
    EXPECT_EQ(g_allocated, 0u);
}

TEST_F(RegisterWordsTest, ThoseBeyondTheScratchAreAllocatedUpToTheLimit)
{
    EXPECT_TRUE(RegisterWords(257, false).isAllocated());
    EXPECT_EQ(g_allocated, 260u);
    EXPECT_TRUE(RegisterWords(RegisterWords::kMaximumLength, false).isAllocated());
    g_allocated = 0;
    EXPECT_FALSE(RegisterWords(RegisterWords::kMaximumLength + 1, false).isAllocated());
    EXPECT_FALSE(RegisterWords(std::numeric_limits<qint64>::max(), false).isAllocated());
    EXPECT_EQ(g_allocated, 0u);
    setAllocateHook([](std::size_t) -> void* { return nullptr; });
    EXPECT_FALSE(RegisterWords(257, false).isAllocated());
    EXPECT_TRUE(RegisterWords(256, false).isAllocated());
}

TEST_F(RegisterWordsTest, AreLittleEndianAndSwappedOnGigEAtFourBytesOnly)
{
    const uchar bytes[] = {1, 2, 3, 4, 5};
    const auto text = [&](qint64 length, bool isGigE) {
        RegisterWords words(length, isGigE);
        std::memcpy(words.data(), bytes, std::size_t(length));
        return words.text();
    };
    EXPECT_EQ(text(4, false), QString("67305985"));
    EXPECT_EQ(text(4, true), QString("16909060"));
    EXPECT_EQ(text(5, true), QString("67305985,5"));
    EXPECT_EQ(text(3, true), QString("197121"));

    RegisterWords words(4, true);
    words.setWord(0, 0x01020304);
    EXPECT_EQ(std::memcmp(words.data(), bytes, 4), 0);
    EXPECT_EQ(words.raw(0), 0x04030201u);
    EXPECT_EQ(words.word(0), 0x01020304u);
}

TEST_F(RegisterWordsTest, TakeWhatAFileGivesAndKeepTheRest)
{
    EXPECT_EQ(taken(12, entry("1,2")), QString("1,2,9"));
    EXPECT_EQ(taken(8, entry("1,2,3,4")), QString("1,2"));
    EXPECT_EQ(taken(12, entry(",0x10,")), QString("0,16,0"));
    EXPECT_EQ(taken(8, entry("25.000000", "7")), QString("7,9"));
    EXPECT_EQ(taken(0, entry("1")), QString(""));
    EXPECT_EQ(taken(0, entry("1", "7")), QString(""));
}

TEST_F(RegisterWordsTest, AnEntryTellsHowManyWordsItGives)
{
    QStringList texts;
    const auto take = [&](int index, const QString& text) { texts += QString::number(index) + '=' + text; };
    EXPECT_EQ(forEachImportedWord(entry("1,,3"), 2, take), 3);
    EXPECT_EQ(forEachImportedWord(entry("1,2,3", "8"), 2, take), 1);
    EXPECT_EQ(texts, QStringList({"0=1", "1=", "0=8"}));
}

TEST_F(RegisterWordsTest, AWordIsFaithfulWhereTheTextIsItsNumber)
{
    const auto word = [](const char* text) {
        const Imported<quint32> imported = importedWord(text);
        return QString::number(imported.value) + (imported.isFaithful ? "" : "!");
    };
    EXPECT_EQ(word("4294967295"), QString("4294967295"));
    EXPECT_EQ(word("0x10"), QString("16"));
    EXPECT_EQ(word("000"), QString("0"));
    EXPECT_EQ(word("0x0"), QString("0"));
    EXPECT_EQ(word("4294967296"), QString("0!"));
    EXPECT_EQ(word("-1"), QString("0!"));
    EXPECT_EQ(word(""), QString("0!"));
    EXPECT_EQ(word("x"), QString("0!"));
}

TEST_F(RegisterWordsTest, AreZeroOnUsedMemoryToo)
{
    setAllocateHook(nullptr);
    constexpr std::size_t size = 400;
    void* blocks[20] = {};
    for (void*& block : blocks) {
        block = std::malloc(size);
        std::memset(block, 0xFF, size);
    }
    for (void* const block : blocks)
        std::free(block);
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(RegisterWords(size, false).words(), QVector<quint32>(size / 4));
}
