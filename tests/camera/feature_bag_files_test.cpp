// Feature bags as text and as files.
#include "camera/FakeNodes.h"
#include "camera/FakePort.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace kx;
using tests::channels;
using tests::FakeNodes;

namespace
{

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "feature_bag_XXXXXX").string();
        m_path = mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    std::string names() const
    {
        std::string all;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            all += entry.path().filename().string();
        return all;
    }

private:
    std::string m_path;
};

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream out;
    out << file.rdbuf();
    return out.str();
}

} // namespace

TEST(FeatureBagText, beginsWithTheIdentificationAndTheVersion)
{
    EXPECT_EQ(bagText({"Maker", "Model", "1.2"}, {{"Width", {}, "640"}}),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# GenApi persistence file (version 3.0.0)\n"
              "# Device = Maker::Model -- Device version = 1.2\nWidth\t640\n");
}

TEST(FeatureBagText, parsingTakesOtherLineEndsAndRefusesOtherFiles)
{
    std::vector<BagEntry> entries;
    std::string error;
    EXPECT_TRUE(
        parseBag("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\r\n# note\r\n\r\nA\t1\r\nB\t\r\nC\tx\ty\r\n",
                 entries, error));
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[0].value, "1");
    EXPECT_EQ(entries[1].value, "");
    EXPECT_EQ(entries[2].value, "x\ty") << "only {Selector=Value} is taken off";
    EXPECT_FALSE(parseBag("", entries, error));
    EXPECT_EQ(error, "it is empty");
    EXPECT_FALSE(parseBag("<?xml version=\"1.0\"?>\n", entries, error));
    EXPECT_FALSE(parseBag("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nno tab\n", entries, error));
    EXPECT_EQ(error, "line 2 is no \"name<TAB>value\"");
}

// 64 MiB of the shortest lines would take a hundred bytes for each four of them.
TEST(FeatureBagText, hasNoMoreEntriesThanABound)
{
    std::string text = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n";
    for (size_t i = 0; i < mostBagEntries; ++i)
        text += "a\t\n";
    std::vector<BagEntry> entries;
    std::string error;
    EXPECT_TRUE(parseBag(text, entries, error)) << error;
    EXPECT_EQ(entries.size(), mostBagEntries);
    EXPECT_EQ(entries.capacity(), mostBagEntries);
    entries.clear();
    EXPECT_FALSE(parseBag(text + "a\t", entries, error));
    EXPECT_EQ(error, "line 1048578 is one more than the 1048576 entries that are possible");
}

TEST(FeatureBagText, bracesThatAreNoSelectorsBelongToTheValue)
{
    std::vector<BagEntry> entries;
    std::string error;
    ASSERT_TRUE(
        parseBag("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nA\t{S=1,=2}\t3\nA\t{}\t3\n", entries, error));
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].value, "{S=1,=2}\t3");
    EXPECT_TRUE(entries[0].selectors.empty()) << "not even the first";
    EXPECT_EQ(entries[1].value, "{}\t3");
}

TEST(FeatureBagFiles, saveThenLoadBringsTheCameraBack)
{
    TemporaryFolder folder;
    FakeNodes fake = channels();
    std::string message;
    uint32_t count = 0;
    ASSERT_EQ(saveBag(fake, {"M", "C", "1"}, folder / "a.fpk", message, count), KX_OK);
    EXPECT_EQ(folder.names(), "a.fpk");
    fake.nodes["Width"].value = "1";
    fake.selectedNodes["Gain"]["GainSelector=All;"].value = "10";
    fake.nodes["GainSelector"].value = "Blue";
    EXPECT_EQ(loadBag(fake, folder / "a.fpk", message), KX_OK) << message;
    EXPECT_EQ(fake.nodes["Width"].value, "640");
    EXPECT_EQ(fake.selectedNodes["Gain"]["GainSelector=All;"].value, "1");
    EXPECT_EQ(fake.nodes["GainSelector"].value, "Red");
}

TEST(FeatureBagFiles, aBagThatWasCutSaysSoAndIsReadAsAnyOther)
{
    TemporaryFolder folder;
    FakeNodes fake = channels();
    fake.values["GainSelector"].resize(65537);
    std::string message;
    uint32_t count = 0;
    EXPECT_EQ(saveBag(fake, {"M", "C", "1"}, folder / "a.fpk", message, count), KX_E_INCOMPLETE);
    EXPECT_EQ(message,
              "The selector GainSelector has more than 65536 values: its features are saved for the one "
              "that it has. ");
    EXPECT_EQ(count, 5u);
    EXPECT_NE(contentOf(folder / "a.fpk").find("\n# The selector GainSelector has more than 65536 values: "),
              std::string::npos);
    EXPECT_EQ(loadBag(fake, folder / "a.fpk", message), KX_OK) << message;
}

TEST(FeatureBagFiles, anEmptyBagIsASuccessThatSaysSo)
{
    TemporaryFolder folder;
    FakeNodes fake;
    std::string message;
    uint32_t count = 99;
    EXPECT_EQ(saveBag(fake, {"M", "C", "1"}, folder / "a.fpk", message, count), KX_OK);
    EXPECT_EQ(message, "");
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(contentOf(folder / "a.fpk"),
              "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# GenApi persistence file (version 3.0.0)\n"
              "# Device = M::C -- Device version = 1\n"
              "# No feature of this camera is streamable, readable and writable: nothing is saved.\n");
    EXPECT_EQ(loadBag(fake, folder / "a.fpk", message), KX_OK) << message;
}

TEST(FeatureBagFiles, whatNobodyCouldLoadIsNotSaved)
{
    TemporaryFolder folder;
    FakeNodes fake;
    fake.nodes["Width"].value = "640";
    fake.order.assign(mostBagEntries + 1, "Width");
    std::string message;
    uint32_t count = 0;
    EXPECT_EQ(saveBag(fake, {}, folder / "a.fpk", message, count), KX_E_FILE);
    EXPECT_EQ(message, "The bag would have 1048577 entries, and 1048576 are possible: nothing is saved.");
    EXPECT_FALSE(std::filesystem::exists(folder / "a.fpk"));
}

TEST(FeatureBagFiles, aFailedSaveLeavesTheOldFile)
{
    TemporaryFolder folder;
    std::ofstream(folder / "a.fpk") << "old";
    FakeNodes fake = channels();
    fake.failsToRead = "Width";
    fake.failure = KX_E_NO_ANSWER;
    std::string message;
    uint32_t count = 0;
    EXPECT_EQ(saveBag(fake, {}, folder / "a.fpk", message, count), KX_E_NO_ANSWER);
    EXPECT_EQ(contentOf(folder / "a.fpk"), "old");
}

TEST(FeatureBagFiles, haveNamesInUtf8)
{
    const std::string name = "J\u00FCrgen \u95E8.fpk";
    TemporaryFolder folder;
    FakeNodes fake = channels();
    std::string message;
    uint32_t count = 0;
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(saveBag(fake, {"M", "C", "1"}, folder / name, message, count), KX_OK) << message;
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::u8path(folder / name)));
    EXPECT_EQ(loadBag(fake, folder / name, message), KX_OK) << message;
}

TEST(FeatureBagFiles, whatCannotBeOpenedSaysSo)
{
    TemporaryFolder folder;
    FakeNodes fake = channels();
    std::string message;
    uint32_t count = 0;
    EXPECT_EQ(saveBag(fake, {}, folder / "missing/a.fpk", message, count), KX_E_FILE);
    EXPECT_NE(message.find("cannot be written: No such file"), std::string::npos) << message;
    fake.log.clear();
    EXPECT_EQ(loadBag(fake, folder / "none.fpk", message), KX_E_FILE);
    EXPECT_NE(message.find("cannot be opened: No such file"), std::string::npos) << message;
    EXPECT_EQ(loadBag(fake, folder / "", message), KX_E_FILE);
    EXPECT_NE(message.find("it is no file"), std::string::npos) << message;
    EXPECT_EQ(loadBag(fake, "/dev/zero", message), KX_E_FILE) << "a device is not read for ever";
    std::ofstream(folder / "other.fpk") << "<FeaturesFile/>";
    EXPECT_EQ(loadBag(fake, folder / "other.fpk", message), KX_E_FILE_FORMAT);
    EXPECT_TRUE(fake.log.empty()) << "no write to the camera";
}

// A camera whose one feature is selected by an index from 0 to `last`; saved to `path`.
static KX_Status saveIndexed(int last, const std::string& path, uint32_t& count)
{
    tests::FakeCamera camera(
        "<RegisterDescription SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\"><Category Name=\"Root\">"
        "<pFeature>Entry</pFeature></Category><Integer Name=\"Index\"><Value>0</Value><Min>0</Min><Max>" +
        std::to_string(last) +
        "</Max><pSelected>Entry</pSelected></Integer><Integer Name=\"Entry\"><Value>7</Value>"
        "<Streamable>Yes</Streamable></Integer></RegisterDescription>");
    KX_CC_SetCallObserver(
        camera.handle,
        [](void* user, const KX_CallEvent* event) {
            if (event->operation == KX_OP_FEATURE_SAVE && event->finished && event->value)
                *static_cast<uint32_t*>(user) = *static_cast<const uint32_t*>(event->value);
            return 0;
        },
        &count);
    return KX_CC_FeatureSave(camera.handle, path.c_str());
}

TEST(FeatureBagOfACamera, tellsTheObserverHowManyEntriesItHas)
{
    TemporaryFolder folder;
    uint32_t count = 99;
    EXPECT_EQ(saveIndexed(1, folder / "a.fpk", count), KX_OK);
    EXPECT_EQ(count, 5u); // an index and an entry twice, and the index as it was found
}

TEST(FeatureBagOfACamera, aSelectorOf65536ValuesIsWholeAndOfMoreIsNot)
{
    TemporaryFolder folder;
    uint32_t count = 99;
    EXPECT_EQ(saveIndexed(65535, folder / "a.fpk", count), KX_OK);
    EXPECT_EQ(count, 2 * 65536u + 1);
    EXPECT_EQ(saveIndexed(65536, folder / "a.fpk", count), KX_E_INCOMPLETE);
    EXPECT_EQ(count, 2 * 65536u + 1); // told with a success only
    EXPECT_NE(contentOf(folder / "a.fpk").find("# The selector Index has more than 65536 values: "),
              std::string::npos);
}
