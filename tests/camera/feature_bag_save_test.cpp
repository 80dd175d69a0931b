// Which entries a feature bag gets, and in which order.
#include "camera/FakeNodes.h"

#include <gtest/gtest.h>

using namespace kx;
using tests::channels;
using tests::FakeNodes;

namespace
{

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
    EXPECT_EQ(bag.notes.size(), 4u);
    EXPECT_EQ(bag.notes.front(), "The value of Forged has no form in this file: it is left out.");
    EXPECT_EQ(bag.remark, "") << "all that could be cut off is there";
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
    EXPECT_EQ(bag.notes,
              (std::vector<std::string>{"The selector GainSelector has more than 65536 values: its "
                                        "features are saved for the one that it has."}));
    EXPECT_EQ(bag.remark, bag.notes[0] + " ");
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
        cuts = bag.notes;
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
    EXPECT_EQ(bag.notes,
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
