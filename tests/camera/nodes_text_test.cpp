// Features as texts, as feature files have them, and what a description names for such files.
#include "KXCameraControl/nodes/NodeMap.h"
#include "KXCameraControl/nodes/NodeTable.h"
#include "camera/EveryNodeKind.h"
#include "camera/nodes_reference/SeededMemory.h"

namespace
{

class NodeTexts : public testing::Test
{
protected:
    NodeTexts() : m_map(loadedTable(), memory, false) {}

    std::string text(const char* name)
    {
        std::string result;
        const KX_Status status = m_map.getText(name, result);
        return status == KX_OK ? result : "status " + std::to_string(status);
    }

    KX_Status set(const char* name, const std::string& value) { return m_map.setText(name, value); }

    // As a caller writes it, by its address: the map forgets what it read.
    void write(uint8_t value)
    {
        const uint8_t bytes[] = {0, 0, 0, value};
        m_map.writeMemory(0x100, bytes, sizeof bytes);
    }

    tests::SeededMemory memory{0};

private:
    static std::shared_ptr<const kx::NodeTable> loadedTable()
    {
        auto table = std::make_shared<kx::NodeTable>();
        std::string problem;
        EXPECT_TRUE(table->load(tests::testData("every_node_kind.xml"), problem)) << problem;
        return table;
    }

    kx::NodeMap m_map;
};

TEST_F(NodeTexts, anEntryThatIsNotAvailableNowHasItsName)
{
    EXPECT_EQ(text("Rest"), "Gone");
    write(1);
    EXPECT_EQ(text("Rest"), "Here");
    write(21);
    EXPECT_EQ(text("Mode"), "Away");
    write(20);
    EXPECT_EQ(text("Mode"), "Missing");
}

TEST_F(NodeTexts, aNumberWithoutAnEntryStaysANumber)
{
    write(77);
    EXPECT_EQ(text("Mode"), "77");
}

TEST_F(NodeTexts, ofEntriesOfOneNumberTheFirstThatIsAvailableCounts)
{
    EXPECT_EQ(text("Equals"), "First");
}

TEST_F(NodeTexts, entriesBeyond32BitsHaveNamesToo)
{
    EXPECT_EQ(set("Wide", "High"), KX_OK);
    const auto written = memory.takeWrites();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].bytes, "0000000200000000");
    memory.writeRegister(0x110, 1);
    memory.writeRegister(0x114, 5);
    EXPECT_EQ(text("Wide"), "Twin");
}

TEST_F(NodeTexts, anEntryThatIsNotAvailableCannotBeSet)
{
    EXPECT_EQ(set("Rest", "Gone"), KX_E_GC_ARGUMENT);
    EXPECT_EQ(set("Rest", "0"), KX_E_GC_ARGUMENT);
    EXPECT_TRUE(memory.takeWrites().empty());
}

// What the description's texts are as numbers; "-" where they are none.
std::string integerOf(const std::string& text)
{
    int64_t value = 0;
    return kx::parseInteger(text, value) ? std::to_string(value) : "-";
}

double realOf(const std::string& text)
{
    double value = 0;
    return kx::parseReal(text, value) ? value : -1;
}

TEST(NumberTexts, integersAreDecimalOrHexadecimalAndHave64Bits)
{
    EXPECT_EQ(integerOf("+5"), "5");
    EXPECT_EQ(integerOf("-5"), "-5");
    EXPECT_EQ(integerOf("0x1F"), "31");
    EXPECT_EQ(integerOf("0X1f"), "31");
    EXPECT_EQ(integerOf("0xFFFFFFFFFFFFFFFF"), "-1");
    EXPECT_EQ(integerOf("18446744073709551615"), "-1"); // unsigned ones wrap
    for (const char* text : {"", "+", "5x", "x", "0x", "0x1G", "0x10000000000000000", "18446744073709551616",
                             "18446744073709551615x", "1.5"})
        EXPECT_EQ(integerOf(text), "-") << text;
}

TEST(NumberTexts, realsMayBeWrittenAsIntegers)
{
    EXPECT_EQ(realOf("1.5"), 1.5);
    EXPECT_EQ(realOf("+1.5"), 1.5);
    EXPECT_EQ(realOf("1e3"), 1000);
    EXPECT_EQ(realOf("0x1F"), 31);
    for (const char* text : {"", "x", "1.5x", "0x1G"})
        EXPECT_EQ(realOf(text), -1) << text;
}

class FileParts : public testing::Test
{
protected:
    FileParts() : m_map(loaded(), memory, false) {}

    std::vector<std::string> values(const char* selector, size_t limit, bool& isMore)
    {
        std::vector<std::string> result{"of another selector"};
        EXPECT_EQ(m_map.selectorValues(selector, limit, result, isMore), KX_OK);
        return result;
    }

    static std::shared_ptr<const kx::NodeTable> loaded()
    {
        auto table = std::make_shared<kx::NodeTable>();
        std::string problem;
        EXPECT_TRUE(table->load(
            "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\">"
            "<Port Name=\"Device\"/><Category Name=\"Root\"><pInvalidator>Unlisted</pInvalidator>"
            "<pFeature>Steps</pFeature><pFeature>Quiet</pFeature><pFeature>Gone</pFeature></Category>"
            "<Integer Name=\"Unlisted\"><Streamable>Yes</Streamable><Value>1</Value></Integer>"
            "<Integer Name=\"Quiet\"><Streamable>No</Streamable><Value>1</Value></Integer>"
            "<Integer Name=\"Steps\"><Streamable>Yes</Streamable><Value>2</Value><Min>2</Min>"
            "<Max>8</Max><Inc>3</Inc><pSelected>Quiet</pSelected><pSelected>Gone</pSelected></Integer>"
            "<Integer Name=\"Single\"><Value>7</Value><Min>7</Min><Max>7</Max></Integer>"
            "<Integer Name=\"Nothing\"><Value>7</Value><Min>8</Min><Max>7</Max></Integer>"
            "</RegisterDescription>",
            problem))
            << problem;
        return table;
    }

    tests::SeededMemory memory{0};
    kx::NodeMap m_map;
};

TEST_F(FileParts, areStreamableFeaturesOfACategory)
{
    EXPECT_EQ(m_map.streamableFeatures(), std::vector<std::string>{"Steps"});
    EXPECT_EQ(m_map.selectors(), std::vector<std::string>{"Steps"});
    EXPECT_EQ(m_map.selectedFeatures("Steps"), (std::vector<std::string>{"Quiet", "Gone"}));
    EXPECT_EQ(m_map.selectedFeatures("Quiet"), std::vector<std::string>{});
}

TEST_F(FileParts, areTheValuesOfASelectorUpToALimit)
{
    bool isMore = true;
    EXPECT_EQ(values("Steps", 3, isMore), (std::vector<std::string>{"2", "5", "8"}));
    EXPECT_FALSE(isMore);
    EXPECT_EQ(values("Steps", 2, isMore), std::vector<std::string>{});
    EXPECT_TRUE(isMore);
    EXPECT_EQ(values("Single", 3, isMore), std::vector<std::string>{"7"});
    EXPECT_FALSE(isMore);
    EXPECT_EQ(values("Nothing", 3, isMore), std::vector<std::string>{});
    EXPECT_FALSE(isMore);
}

} // namespace
