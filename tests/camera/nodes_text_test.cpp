// Features as texts, as feature files have them.
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

} // namespace
