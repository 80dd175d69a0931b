// The feature bag over nodes that a test makes up: what is saved in which order, and how a file is applied.
#include "KXCameraControl/bag/BagLoader.h"
#include "KXCameraControl/bag/BagSaver.h"
#include "camera/FakePort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

using namespace kx;

namespace
{

// Nodes in a table; the value of a selected feature depends on its selectors.
class FakeNodes : public BagNodes
{
public:
    struct Node
    {
        std::string value;
        KX_XML_AccessMode mode = KX_AM_READ_WRITE;
    };

    std::vector<std::string> order;
    std::map<std::string, Node> nodes;
    std::map<std::string, std::map<std::string, Node>> selectedNodes; // feature -> selector state -> node
    std::map<std::string, std::vector<std::string>> selects;
    std::map<std::string, std::vector<std::string>> values;                    // of selectors
    std::map<std::string, std::function<KX_Status(const std::string&)>> rules; // what a write meets
    std::vector<std::string> log;
    KX_Status lineStatus = KX_OK;
    std::string failsToRead;
    KX_Status failure = KX_E_GC_ACCESS;

    void addSelector(const std::string& name, std::vector<std::string> all, std::vector<std::string> selected)
    {
        order.push_back(name);
        nodes[name].value = all.front();
        values[name] = std::move(all);
        selects[name] = std::move(selected);
    }

    std::string stateFor(const std::string& feature)
    {
        std::string state;
        for (const auto& [selector, selected] : selects)
            if (std::count(selected.begin(), selected.end(), feature))
                state += stateFor(selector) + selector + "=" + at(selector).value + ";";
        return state;
    }

    Node& at(const std::string& feature)
    {
        const auto selected = selectedNodes.find(feature);
        return selected == selectedNodes.end() ? nodes.at(feature) : selected->second.at(stateFor(feature));
    }

    std::vector<std::string> streamableFeatures() override { return order; }
    std::vector<std::string> selectors() override
    {
        std::vector<std::string> names;
        for (const auto& selector : selects)
            names.push_back(selector.first);
        return names;
    }
    std::vector<std::string> selectedFeatures(const std::string& feature) override
    {
        const auto found = selects.find(feature);
        return found == selects.end() ? std::vector<std::string>() : found->second;
    }
    std::vector<std::string> selectorValues(const std::string& selector, size_t limit, bool& isMore) override
    {
        const std::vector<std::string>& all = values[selector];
        isMore = all.size() > limit;
        return isMore ? std::vector<std::string>() : all;
    }
    bool exists(const std::string& feature) override
    {
        return nodes.count(feature) || selectedNodes.count(feature);
    }
    KX_Status accessMode(const std::string& feature, KX_XML_AccessMode& mode) override
    {
        if (lineStatus == KX_OK)
            mode = at(feature).mode;
        return lineStatus;
    }
    KX_Status readText(const std::string& feature, std::string& text) override
    {
        if (lineStatus != KX_OK)
            return lineStatus;
        if (!exists(feature))
            return KX_E_GC_PROPERTY;
        if (feature == failsToRead)
            return failure;
        text = at(feature).value;
        return KX_OK;
    }
    KX_Status writeText(const std::string& feature, const std::string& text) override
    {
        log.push_back(feature + "=" + text);
        if (lineStatus != KX_OK)
            return lineStatus;
        if (!exists(feature))
            return KX_E_GC_PROPERTY;
        const auto rule = rules.find(feature);
        const KX_Status status = rule == rules.end() ? KX_OK : rule->second(text);
        if (status == KX_OK)
            at(feature).value = text;
        return status;
    }
    KX_Status execute(const std::string& command) override
    {
        log.push_back(command + "()");
        return lineStatus;
    }
};

FakeNodes channels()
{
    FakeNodes fake;
    fake.order = {"Width"};
    fake.nodes["Width"].value = "640";
    fake.addSelector("GainSelector", {"All", "Red", "Blue"}, {"Gain"});
    fake.order.push_back("Gain");
    fake.selectedNodes["Gain"] = {{"GainSelector=All;", {"1", KX_AM_READ_WRITE}},
                                  {"GainSelector=Red;", {"2", KX_AM_READ_WRITE}},
                                  {"GainSelector=Blue;", {"3", KX_AM_READ_ONLY}}};
    fake.nodes["GainSelector"].value = "Red";
    return fake;
}

std::string saved(FakeNodes& fake)
{
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_OK);
    EXPECT_EQ(bag.remark, "");
    std::string out;
    for (const BagEntry& entry : bag.entries)
        out += entry.name + "=" + entry.value + " ";
    return out;
}

class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        char name[] = "/tmp/feature_bag_XXXXXX";
        m_path = mkdtemp(name);
    }
    ~TemporaryFolder() { std::filesystem::remove_all(m_path); }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

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

TEST(FeatureBagSave, everyCombinationStandsBehindItsSelectorAndTheOriginalComesLast)
{
    FakeNodes fake = channels();
    EXPECT_EQ(saved(fake),
              "Width=640 GainSelector=All Gain=1 GainSelector=Red Gain=2 GainSelector=Red GainSelector=Red ");
    EXPECT_EQ(fake.nodes["GainSelector"].value, "Red") << "the camera is left as it was";
}

TEST(FeatureBagSave, nestedSelectorsAreWrittenFromTheOutside)
{
    FakeNodes fake;
    fake.addSelector("Inner", {"x", "y"}, {"Value"});
    fake.addSelector("Outer", {"1", "2"}, {"Inner"});
    fake.selectedNodes["Inner"] = {{"Outer=1;", {"x"}}, {"Outer=2;", {"y"}}};
    fake.nodes.erase("Inner");
    fake.order = {"Outer", "Inner", "Value"};
    for (const char* outer : {"1", "2"})
        for (const char* inner : {"x", "y"})
            fake.selectedNodes["Value"][std::string("Outer=") + outer + ";Inner=" + inner + ";"].value =
                std::string(outer) + inner;
    EXPECT_EQ(saved(fake), "Outer=1 Inner=x Outer=2 Inner=y Outer=1 "
                           "Outer=1 Inner=x Value=1x Outer=1 Inner=y Value=1y "
                           "Outer=2 Inner=x Value=2x Outer=2 Inner=y Value=2y Outer=1 Inner=x Outer=1 ");
}

TEST(FeatureBagSave, onlyReadableAndWritableFeaturesOfOneLine)
{
    FakeNodes fake;
    fake.order = {"ReadOnly", "WriteOnly", "Locked", "Text", "Plain"};
    fake.nodes["ReadOnly"] = {"1", KX_AM_READ_ONLY};
    fake.nodes["WriteOnly"] = {"1", KX_AM_WRITE_ONLY};
    fake.nodes["Locked"] = {"1", KX_AM_NOT_AVAILABLE};
    fake.nodes["Text"] = {"two\nlines"};
    fake.nodes["Plain"] = {"a\tb"};
    EXPECT_EQ(saved(fake), "Plain=a\tb ");
}

// Read again they would be other entries, of any feature that the camera's maker likes.
TEST(FeatureBagSave, whatACameraSaysForgesNoEntries)
{
    FakeNodes fake;
    fake.order = {"Braces", "Tab", "Forged", "Named\nWidth\t7", "Tab\tbed", "#note"};
    for (const std::string& name : fake.order)
        fake.nodes[name] = {"1"};
    fake.nodes["Braces"] = {"{A=1}"};
    fake.nodes["Tab"] = {"a\tb"};
    fake.nodes["Forged"] = {"{UserSetSelector=Default}\tx"};
    Bag bag;
    ASSERT_EQ(collectBag(fake, bag), KX_OK);
    const std::string text = bagText({"V\nWidth\t8", "M\rGain\t9", std::string("1\0", 2)}, bag.entries,
                                     {"a remark of S\nHeight\t10"});
    EXPECT_EQ(text, "# {05D8C294-F295-4dfb-9D01-096BD04049F4}\n# GenApi persistence file (version 3.0.0)\n"
                    "# Device = V Width\t8::M Gain\t9 -- Device version = 1 \n"
                    "# a remark of S Height\t10\nBraces\t{A=1}\nTab\ta\tb\n");
}

TEST(FeatureBagSave, aRefusedFeatureIsLeftOutAndAFailedLineEndsIt)
{
    FakeNodes fake = channels();
    fake.failsToRead = "Width";
    EXPECT_EQ(saved(fake).rfind("GainSelector=All", 0), 0u);

    fake.failure = KX_E_NO_ANSWER;
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_E_NO_ANSWER);
    EXPECT_TRUE(bag.entries.empty());
}

TEST(FeatureBagSave, aFailureUnderASelectorStillPutsTheSelectorBack)
{
    FakeNodes fake = channels();
    fake.failsToRead = "Gain";
    fake.failure = KX_E_NO_ANSWER;
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_E_NO_ANSWER);
    EXPECT_EQ(fake.nodes["GainSelector"].value, "Red");
    EXPECT_EQ(fake.log, (std::vector<std::string>{"GainSelector=All", "GainSelector=Red"}));
}

TEST(FeatureBagSave, aSelectorThatCannotBeSetBackIsTold)
{
    FakeNodes fake = channels();
    fake.rules["GainSelector"] = [&](const std::string& text) {
        return text == "Red" && fake.nodes["GainSelector"].value == "Blue" ? KX_E_GC_ACCESS : KX_OK;
    };
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_OK);
    EXPECT_EQ(bag.remark, "The selector GainSelector could not be set back to Red. ");
}

TEST(FeatureBagSave, aSelectorNeedNotBeStreamableItself)
{
    FakeNodes fake = channels();
    fake.order = {"Width", "Gain"};
    EXPECT_EQ(saved(fake), "Width=640 GainSelector=All Gain=1 GainSelector=Red Gain=2 GainSelector=Red ");
}

TEST(FeatureBagSave, aSelectorWhoseValuesCannotBeToldKeepsTheOneThatIsSet)
{
    FakeNodes fake = channels();
    fake.values["GainSelector"].clear();
    EXPECT_EQ(saved(fake), "Width=640 GainSelector=Red Gain=2 GainSelector=Red GainSelector=Red ");
    EXPECT_TRUE(fake.log.empty()) << "no selector was touched";
}

TEST(FeatureBagSave, tooManySelectorValuesKeepTheOneThatIsSetAndAreTold)
{
    FakeNodes fake = channels();
    fake.values["GainSelector"].resize(65537);
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_OK);
    EXPECT_EQ(bag.entries.size(), 5u);
    EXPECT_TRUE(fake.log.empty()) << "no selector was touched";
    EXPECT_EQ(bag.cuts, (std::vector<std::string>{"The selector GainSelector has more than 65536 values: its "
                                                  "features are saved for the one that it has."}));
    EXPECT_EQ(bag.remark, bag.cuts[0] + " ");
}

TEST(FeatureBagSave, whatCannotBeSavedOrMovedAnywayIsNoCut)
{
    FakeNodes fake = channels();
    fake.values["GainSelector"].resize(65537);
    fake.selectedNodes["Gain"]["GainSelector=Red;"].mode = KX_AM_READ_ONLY;
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_OK);
    EXPECT_EQ(bag.remark, "");

    fake = channels();
    fake.values["GainSelector"].resize(65537);
    fake.nodes["GainSelector"].mode = KX_AM_READ_ONLY;
    Bag fixed;
    EXPECT_EQ(collectBag(fake, fixed), KX_OK);
    EXPECT_EQ(fixed.remark, "");
}

// Two selectors of 512 values make 262,144 combinations; one value more is one too many.
TEST(FeatureBagSave, combinationsBeyondTheLimitAreToldNotLeftOutInSilence)
{
    const auto combinations = [](size_t first, size_t second, std::vector<std::string>& cuts) {
        FakeNodes fake;
        fake.addSelector("A", std::vector<std::string>(first, "a"), {"Value"});
        fake.addSelector("B", std::vector<std::string>(second, "b"), {"Value"});
        fake.selectedNodes["Value"]["A=a;B=b;"].value = "1";
        fake.order = {"Value"};
        Bag bag;
        EXPECT_EQ(collectBag(fake, bag), KX_OK);
        cuts = bag.cuts;
        return std::count_if(bag.entries.begin(), bag.entries.end(),
                             [](const BagEntry& entry) { return entry.name == "Value"; });
    };
    std::vector<std::string> cuts;
    EXPECT_EQ(combinations(512, 512, cuts), 262144);
    EXPECT_TRUE(cuts.empty());
    EXPECT_EQ(combinations(513, 512, cuts), 262144);
    EXPECT_EQ(cuts,
              (std::vector<std::string>{"There are more than 262144 combinations of A, B: features are saved "
                                        "for the first ones."}));
}

// Each selects the next one.
TEST(FeatureBagSave, whatIsBehindThirtyTwoSelectorsIsSavedAndBehindMoreForTheirValues)
{
    FakeNodes fake;
    for (int i = 0; i < 34; ++i)
        fake.addSelector("S" + std::to_string(10 + i), {"1"}, {"S" + std::to_string(11 + i)});
    fake.nodes["S44"].value = "end";
    fake.order = {"S42", "S43", "S44"}; // behind 32, 33 and 34
    Bag bag;
    EXPECT_EQ(collectBag(fake, bag), KX_OK);
    EXPECT_EQ(bag.cuts,
              (std::vector<std::string>{"There are features behind more than 32 selectors: they are "
                                        "saved for the values that those have."}));
    std::vector<std::string> names;
    for (const BagEntry& entry : bag.entries)
        names.push_back(entry.name);
    const std::vector<std::string> plain(names.begin(), names.begin() + 1);
    EXPECT_EQ(plain, std::vector<std::string>{"S44"}); // with no selector before it
    EXPECT_EQ(std::count(names.begin(), names.end(), "S42"), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), "S41"), 2); // set, and set back
    EXPECT_EQ(names.back(), "S43");
}

TEST(FeatureBagLoad, unchangedValuesAreNotWritten)
{
    FakeNodes fake = channels();
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, {{"Width", {}, "640"}, {"GainSelector", {}, "Red"}, {"Gain", {}, "5"}}, report),
              KX_OK);
    EXPECT_EQ(fake.log, std::vector<std::string>{"Gain=5"});
    EXPECT_EQ(report.text(), "3 of 3 entries took their value in 1 pass.");
}

TEST(FeatureBagLoad, passesGoOnAsLongAsSomethingSettles)
{
    FakeNodes fake;
    fake.nodes["Width"].value = "640";
    fake.nodes["OffsetX"].value = "64";
    fake.rules["Width"] = [&](const std::string& text) {
        return std::stoi(text) + std::stoi(fake.nodes["OffsetX"].value) > 704 ? KX_E_GC_RANGE : KX_OK;
    };
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, {{"Width", {}, "704"}, {"OffsetX", {}, "0"}}, report), KX_OK);
    EXPECT_EQ(report.passes, 2u);
    EXPECT_EQ(fake.nodes["Width"].value, "704");
}

TEST(FeatureBagLoad, whatDoesNotTakeIsListedWithItsReason)
{
    FakeNodes fake;
    fake.nodes["Width"].value = "640";
    fake.rules["Width"] = [](const std::string&) { return KX_E_GC_RANGE; };
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, {{"Width", {}, "9999"}, {"Missing", {}, "1"}}, report), KX_E_INCOMPLETE);
    EXPECT_EQ(report.passes, 2u) << "a second pass that settles nothing is the last";
    EXPECT_EQ(report.text(), "0 of 2 entries took their value in 2 passes.\nWidth = 9999: " +
                                 std::string(KX_CC_StatusText(KX_E_GC_RANGE)) +
                                 "\nMissing = 1: " + KX_CC_StatusText(KX_E_GC_PROPERTY));
}

TEST(FeatureBagLoad, nothingIsWrittenUnderASelectorThatDidNotTake)
{
    FakeNodes fake = channels();
    BagLoadReport report;
    fake.rules["GainSelector"] = [](const std::string& text) {
        return text == "Green" ? KX_E_GC_ARGUMENT : KX_OK;
    };
    const std::vector<BagEntry> entries{
        {"GainSelector", {}, "Green"}, {"Gain", {}, "9"}, {"GainSelector", {}, "All"}, {"Gain", {}, "7"}};
    EXPECT_EQ(applyBag(fake, entries, report), KX_E_INCOMPLETE);
    EXPECT_EQ(fake.selectedNodes["Gain"]["GainSelector=Red;"].value, "2");
    EXPECT_EQ(fake.selectedNodes["Gain"]["GainSelector=All;"].value, "7");
    ASSERT_EQ(report.failures.size(), 2u);
    EXPECT_EQ(report.failures[1].reason, "its selector GainSelector did not take its value");
}

TEST(FeatureBagLoad, whatWasNotReachedHasNotTaken)
{
    FakeNodes fake;
    for (const char* name : {"A", "B", "C", "D"})
        fake.nodes[name].value = "0";
    int writesOfB = 0;
    fake.rules["B"] = [&](const std::string&) { return ++writesOfB < 2 ? KX_E_GC_RANGE : KX_E_NO_ANSWER; };
    fake.rules["D"] = [](const std::string&) { return KX_E_GC_RANGE; };
    const std::vector<BagEntry> entries{{"A", {}, "1"}, {"B", {}, "1"}, {"C", {}, "1"}, {"D", {}, "1"}};
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, entries, report), KX_E_NO_ANSWER);
    EXPECT_EQ(report.text(), "2 of 4 entries took their value in 2 passes.\nB = 1: " +
                                 std::string(KX_CC_StatusText(KX_E_NO_ANSWER)) +
                                 "\nD = 1: " + KX_CC_StatusText(KX_E_GC_RANGE))
        << "what the first pass has found out of D still holds";

    fake.nodes["A"].value = "0";
    fake.rules["A"] = [](const std::string&) { return KX_E_NO_ANSWER; };
    BagLoadReport first;
    EXPECT_EQ(applyBag(fake, entries, first), KX_E_NO_ANSWER);
    EXPECT_EQ(first.text(), "0 of 4 entries took their value in 1 pass. The last 3 were not tried."
                            "\nA = 1: " +
                                std::string(KX_CC_StatusText(KX_E_NO_ANSWER)));
}

TEST(FeatureBagLoad, selectorsInBracesAreSetFirst)
{
    FakeNodes fake = channels();
    std::vector<BagEntry> entries;
    std::string error;
    ASSERT_TRUE(
        parseBag("# {05D8C294-F295-4dfb-9D01-096BD04049F4}\nGain\t{GainSelector=All}\t8\n", entries, error));
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, entries, report), KX_OK);
    EXPECT_EQ(fake.selectedNodes["Gain"]["GainSelector=All;"].value, "8");
}

TEST(FeatureBagLoad, streamingCommandsEncloseTheWritesAndTheEndIsSentOnEveryWay)
{
    FakeNodes fake;
    fake.nodes["Width"].value = "640";
    fake.nodes["DeviceRegistersStreamingStart"] = {};
    fake.nodes["DeviceRegistersStreamingEnd"] = {};
    fake.nodes["DeviceRegistersValid"].value = "0";
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, {{"Width", {}, "1"}}, report), KX_OK);
    EXPECT_EQ(fake.log, (std::vector<std::string>{"DeviceRegistersStreamingStart()", "Width=1",
                                                  "DeviceRegistersStreamingEnd()"}));
    EXPECT_EQ(report.text(),
              "1 of 1 entries took their value in 1 pass. The camera says that its registers are not "
              "valid together.");

    fake.log.clear();
    fake.rules["Width"] = [&](const std::string&) {
        fake.lineStatus = KX_E_CONNECTION_LOST;
        return KX_E_CONNECTION_LOST;
    };
    report = {};
    EXPECT_EQ(applyBag(fake, {{"Width", {}, "2"}, {"Width", {}, "3"}}, report), KX_E_CONNECTION_LOST);
    EXPECT_EQ(fake.log, (std::vector<std::string>{"DeviceRegistersStreamingStart()", "Width=2",
                                                  "DeviceRegistersStreamingEnd()"}));
}

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
    EXPECT_FALSE(std::filesystem::exists(folder / "a.fpk.part"));
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

TEST(FeatureBagFiles, aFullDiskIsReported)
{
    FakeNodes fake = channels();
    TemporaryFolder folder;
    std::filesystem::create_symlink("/dev/full", folder / "a.fpk.part");
    std::string message;
    uint32_t count = 0;
    EXPECT_EQ(saveBag(fake, {}, folder / "a.fpk", message, count), KX_E_FILE);
    EXPECT_NE(message.find("No space left"), std::string::npos) << message;
    EXPECT_FALSE(std::filesystem::exists(folder / "a.fpk"));
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
