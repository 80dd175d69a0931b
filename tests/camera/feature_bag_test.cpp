// How the entries of a feature bag are applied.
#include "camera/FakeNodes.h"

#include <gtest/gtest.h>

using namespace kx;
using tests::channels;
using tests::FakeNodes;

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

// By counts: each name was asked for what it selects once, and each entry looked through all that had failed.
TEST(FeatureBagLoad, namesThatNobodyKnowsCostNothingBesides)
{
    FakeNodes fake;
    fake.addSelector("Sel", {"A", "B"}, {"Gain"});
    fake.selectedNodes["Gain"] = {{"Sel=A;", {"1"}}, {"Sel=B;", {"2"}}};
    std::vector<BagEntry> entries;
    for (int i = 0; i < 100000; ++i)
        entries.push_back({"Unknown" + std::to_string(i), {}, std::string(5000, 'v')});
    entries.push_back({"Gain", {}, "5"});
    BagLoadReport report;
    EXPECT_EQ(applyBag(fake, entries, report), KX_E_INCOMPLETE);
    EXPECT_EQ(fake.askedForSelected, 1u) << "of the one selector that there is";
    EXPECT_EQ(fake.at("Gain").value, "5");
    EXPECT_EQ(report.failed, 100000u);
    EXPECT_EQ(report.failures.size(), BagLoadReport::mostFailures);
    EXPECT_EQ(report.failures.back().name, "Unknown999");
    const std::string text = report.text();
    EXPECT_LT(text.size(), 2u << 20);
    EXPECT_EQ(text.rfind("1 of 100001 entries took their value in 2 passes.\nUnknown0 = vvv", 0), 0u);
    EXPECT_EQ(text.substr(text.rfind('\n')), "\nand 99000 more");
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
