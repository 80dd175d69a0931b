// Which features a selector selects, and what that makes of the values behind it.
#include "EvaluatorFixture.h"

namespace
{

class SelectedFeature : public EvaluatorFixture
{
protected:
    void SetUp() override
    {
        describe(
            "<Integer Name=\"Sel\"><pValue>N</pValue></Integer><Integer "
            "Name=\"Sel2\"><pValue>N</pValue></Integer>"
            "<Enumeration Name=\"En\"><Value>1</Value></Enumeration><Boolean "
            "Name=\"Bool\"><pValue>B</pValue></Boolean>"
            "<Integer Name=\"N\"><Value>5</Value></Integer><Integer Name=\"B\"><Value>5</Value></Integer>");
        camera.setInteger("Sel", 2, 1, 3);
        camera.setInteger("Sel2", 2, 8, 9);
        camera.setEnumeration("En", 4, {4, 6});
        camera.setInteger("N", 77, 70, 79);
    }
};

} // namespace

TEST_F(SelectedFeature, IsOneThatSomePairNames)
{
    EXPECT_FALSE(evaluator->isSelectedFeature("F"));
    select("Sel", "F");
    EXPECT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_FALSE(evaluator->isSelectedFeature("f"));
    EXPECT_FALSE(evaluator->isSelectedFeature("Sel"));
}

TEST_F(SelectedFeature, ItsSelectorIsReadInsteadOfTheNode)
{
    select("Sel", "F");
    EXPECT_VALUES(integer("N"), {"5"}); // nothing has asked for the feature yet
    ASSERT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_VALUES(integer("N"), {"1", "2", "3"});
    EXPECT_EQ(takeCalls(), QStringList({"GetIntValueEx Sel"}));
    EXPECT_VALUES(value("Sel"), {"1", "2", "3"}); // through its link
}

TEST_F(SelectedFeature, ASelectorWithoutALinkStandsForItself)
{
    select("En", "F");
    ASSERT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_VALUES(integer("En"), {"4", "6"});
    EXPECT_EQ(takeCalls(), QStringList({"GetEnumValue En"}));
}

TEST_F(SelectedFeature, TheFirstSelectorOfANodeStays)
{
    select("Sel2", "F");
    select("Sel", "F");
    select("Sel", "G");
    ASSERT_TRUE(evaluator->isSelectedFeature("G"));
    ASSERT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_VALUES(integer("N"), {"1", "2", "3"});
    startRun();
    ASSERT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_VALUES(integer("N"), {"8", "9"});
}

TEST_F(SelectedFeature, WhatWasAskedForEarlierStaysForTheRun)
{
    select("Sel", "A");
    select("En", "B");
    evaluator->isSelectedFeature("A");
    evaluator->isSelectedFeature("B");
    EXPECT_VALUES(integer("N"), {"1", "2", "3"});
    EXPECT_VALUES(integer("En"), {"4", "6"});
    startRun();
    EXPECT_VALUES(integer("N"), {"5"});
}

TEST_F(SelectedFeature, OtherSelectorsSelectButStandForNothing)
{
    select("Bool", "F");
    select("Unknown", "G");
    EXPECT_TRUE(evaluator->isSelectedFeature("F"));
    EXPECT_TRUE(evaluator->isSelectedFeature("G"));
    EXPECT_VALUES(integer("B"), {"5"});
    EXPECT_EQ(takeCalls(), QStringList());
}

TEST_F(SelectedFeature, ASelectorThatCannotBeReadFails)
{
    select("Sel", "F");
    evaluator->isSelectedFeature("F");
    camera.setAccessMode("Sel", KX_AM_NOT_AVAILABLE);
    EXPECT_FAILURE(integer("N"), {"getIntValue failed:Sel GetIntegerNodePropertyValue failed"});
    select("En", "F");
    evaluator->isSelectedFeature("F");
    camera.setAccessMode("En", KX_AM_NOT_AVAILABLE);
    EXPECT_FAILURE(integer("En"), {"getIntValue failed:En GetEnumerationNodePropertyValue failed"});
    handle = nullptr;
    EXPECT_FAILURE(integer("En"), {"getIntValue failed:En GetEnumerationNodePropertyValue failed"});
}

// The element that stands for a node is kept as it is; its name and tag are looked at when it is read.
TEST_F(SelectedFeature, ASelectorThatLostItsNameOrKindFails)
{
    select("Sel", "F");
    evaluator->isSelectedFeature("F");
    nodes["Sel"].removeAttribute("Name");
    EXPECT_FAILURE(integer("N"), {"getIntValue failed: domName isNull"});
    nodes["Sel"].setAttribute("Name", "Sel");
    nodes["Sel"].setTagName("Float");
    EXPECT_FAILURE(integer("N"), {"getIntValue failed:Sel tagNameFloat unsupport"});
}

TEST_F(SelectedFeature, RangesGoByTheirIncrement)
{
    select("Sel", "F");
    evaluator->isSelectedFeature("F");
    camera.setInteger("Sel", 0, -2, 5, 3);
    EXPECT_VALUES(integer("N"), {"-2", "1", "4"});
    camera.setInteger("Sel", 0, 4, 4, 1);
    EXPECT_VALUES(integer("N"), {"4"});
    camera.setInteger("Sel", 0, 5, 4, 1);
    EXPECT_VALUES(integer("N"), {});
}

TEST_F(SelectedFeature, ARangeWithoutAStepIsItsMinimum)
{
    select("Sel", "F");
    evaluator->isSelectedFeature("F");
    for (const qint64 increment : {0, -1}) {
        camera.setInteger("Sel", 2, 1, 3, increment);
        EXPECT_VALUES(integer("N"), {"1"});
    }
}
