// Who shares a parsed description, and for how long.
#include "KXCameraControl/camera/ParsedDescriptions.h"
#include "camera/FakePort.h"

#include <gtest/gtest.h>

#include <thread>

namespace
{

std::string description(const std::string& node, size_t padding = 0)
{
    return "<RegisterDescription><Integer Name=\"" + node + "\"><Value>7</Value></Integer><!--" +
           std::string(padding, 'x') + "--></RegisterDescription>";
}

std::shared_ptr<const kx::ParsedDescription> parsed(const std::string& text)
{
    return kx::parsedDescription(kx::Description(text, text));
}

TEST(ParsedDescription, isTheSameForEqualTexts)
{
    const auto first = parsed(description("Same"));
    EXPECT_EQ(parsed(description("Same")), first);
    EXPECT_NE(parsed(description("Other")), first);
    EXPECT_NE(first->nodes.find("Same"), nullptr);
    EXPECT_EQ(first->nodes.find("Other"), nullptr);
}

TEST(ParsedDescription, isTheSameForAllWhoAskAtOnce)
{
    const std::string text = description("AtOnce", 1 << 20);
    std::vector<std::shared_ptr<const kx::ParsedDescription>> got(8);
    std::vector<std::thread> threads;
    for (auto& mine : got)
        threads.emplace_back([&] { mine = parsed(text); });
    for (std::thread& thread : threads)
        thread.join();
    for (const auto& one : got) {
        EXPECT_EQ(one, got[0]);
        EXPECT_NE(one->nodes.find("AtOnce"), nullptr);
    }
}

TEST(ParsedDescription, ofABadTextIsEmptyAndSaysWhy)
{
    const auto bad = parsed("<RegisterDescription>");
    EXPECT_EQ(bad->problem, "The description cannot be used: it is cut short.");
    EXPECT_TRUE(bad->nodes.nodes().empty());
    EXPECT_EQ(parsed("<Other/>")->problem,
              "The description cannot be used: its document element is no RegisterDescription.");
}

TEST(ParsedDescription, staysAfterItsLastUseUntilOthersTakeItsPlace)
{
    const std::weak_ptr<const kx::ParsedDescription> lastUsed = parsed(description("Last"));
    EXPECT_FALSE(lastUsed.expired());
    for (int i = 0; i < 20; ++i)
        parsed(description("Later" + std::to_string(i)));
    EXPECT_TRUE(lastUsed.expired());
}

TEST(ParsedDescription, ofLongTextsOnlyAFewStay)
{
    const std::weak_ptr<const kx::ParsedDescription> lastUsed = parsed(description("Long"));
    parsed(description("VeryLong", 5 << 20));
    EXPECT_TRUE(lastUsed.expired());
}

TEST(ParsedDescription, inUseIsSharedHoweverManyOthersCome)
{
    const auto inUse = parsed(description("InUse"));
    for (int i = 0; i < 20; ++i)
        parsed(description("Later" + std::to_string(i)));
    EXPECT_EQ(parsed(description("InUse")), inUse);
}

TEST(ParsedDescription, isSharedByCamerasAndTheirValuesAreNot)
{
    const std::string text = description("Shared");
    const auto shared = parsed(text);
    const long before = shared.use_count();
    const tests::FakeCamera first(text);
    const tests::FakeCamera second(text);
    EXPECT_EQ(shared.use_count(), before + 2);

    // A value that stands in the description is written into the handle, not into the description.
    EXPECT_EQ(KX_CC_SetIntValueEx(first.handle, "Shared", 8), KX_OK);
    KX_IntegerValue value{};
    EXPECT_EQ(KX_CC_GetIntValueEx(second.handle, "Shared", &value), KX_OK);
    EXPECT_EQ(value.current, 7);
    EXPECT_EQ(KX_CC_GetIntValueEx(first.handle, "Shared", &value), KX_OK);
    EXPECT_EQ(value.current, 8);
}

} // namespace
