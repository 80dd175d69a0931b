#include "iefeatures/running/NetChanges.h"

#include "support/QtPrinting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace companion;
using ::testing::ElementsAre;

namespace
{

const Selectors kSelectors = {{"Gain", {"Channel"}}, {"Inner", {"Outer"}}, {"Depth", {"Inner", "Outer"}}};

Change changed(const char* feature, const char* from, const char* to)
{
    return {feature, false, 0, from ? QString(from) : QString(), to};
}

Change poked(int64_t address, const char* from, const char* to)
{
    return {{}, true, address, from, to};
}

std::vector<std::string> net(const std::vector<Change>& changes)
{
    std::vector<std::string> lines;
    for (const Change& change : netChanges(changes, kSelectors))
        lines.push_back((titleOf(change) + ": " + change.from + " -> " + change.to).toStdString());
    return lines;
}

} // namespace

TEST(NetChanges, AreNoneWhereAValueCameBack)
{
    EXPECT_THAT(net({changed("Mode", "1", "2"), changed("Mode", "2", "1")}), ElementsAre());
    EXPECT_THAT(net({poked(256, "01", "02"), poked(256, "02", "01")}), ElementsAre());
}

TEST(NetChanges, HaveTheFirstValueAndTheLast)
{
    EXPECT_THAT(net({changed("Width", "1", "2"), poked(256, "01", "02"), changed("Height", "5", "6"),
                     changed("Width", "2", "3"), poked(256, "02", "03")}),
                ElementsAre("Width: 1 -> 3", "register 0x00000100: 01 -> 03", "Height: 5 -> 6"));
}

TEST(NetChanges, KeepWhatNobodyHasReadBefore)
{
    EXPECT_THAT(net({changed("Width", nullptr, "2")}), ElementsAre("Width:  -> 2"));
}

// The same values the other way round are two changes, and the selector's walk is none.
TEST(NetChanges, TellTheChannelsOfASelectedFeatureApart)
{
    EXPECT_THAT(net({changed("Gain", "10", "5"), changed("Channel", "Red", "Blue"),
                     changed("Gain", "5", "10"), changed("Channel", "Blue", "Red")}),
                ElementsAre("Gain (Channel=Red): 10 -> 5", "Gain (Channel=Blue): 5 -> 10"));
}

TEST(NetChanges, KeepASelectorThatDidNotComeBack)
{
    EXPECT_THAT(net({changed("Channel", "Red", "Blue"), changed("Channel", "Blue", "Green")}),
                ElementsAre("Channel: Red -> Green"));
}

TEST(NetChanges, KnowTheSelectorsOfSelectors)
{
    EXPECT_THAT(net({changed("Depth", "1", "2"), changed("Outer", "a", "b"), changed("Depth", "1", "2"),
                     changed("Outer", "b", "a")}),
                ElementsAre("Depth (Outer=a): 1 -> 2", "Depth (Outer=b): 1 -> 2"));
}

TEST(NetChanges, ReadTheSelectorsInADescription)
{
    const Selectors found = selectorsIn(R"(<?xml version="1.0"?><RegisterDescription>
        <Enumeration Name="Outer"><EnumEntry Name="A"><Value>1</Value></EnumEntry><pValue>R</pValue>
          <pSelected>Line</pSelected></Enumeration>
        <Integer Name="Plain"><Value>3</Value><pSelected>Inner</pSelected><pSelected> Depth </pSelected></Integer>
        <Group><Integer Name="Inner"><pSelected>Depth</pSelected><pSelected>Inner</pSelected></Integer></Group>
        </RegisterDescription>)");
    EXPECT_EQ(found,
              (Selectors{{"Line", {"Outer"}}, {"Inner", {"Plain", "Inner"}}, {"Depth", {"Plain", "Inner"}}}));
    EXPECT_EQ(selectorsIn("no description"), Selectors());
}
