// Which statuses say that a node does not apply now, and which that the line failed: from C and from C++.
#include <KXCameraControl/KXCameraControl.h>

#include <gtest/gtest.h>

extern "C" {
int isNotApplicableInC(uint32_t status);
int isLineFailureInC(uint32_t status);
}

namespace
{

enum class Group
{
    Neither,
    NotApplicable,
    LineFailure
};

struct Row
{
    uint32_t status;
    Group group;
};

const Row kRows[] = {
    {0, Group::Neither},
    {1, Group::LineFailure},
    {0x7FFFFFFF, Group::LineFailure},
    {KX_E_HANDLE, Group::LineFailure},
    {0x80000003, Group::LineFailure},
    {0x80000004, Group::NotApplicable},
    {0x80000005, Group::LineFailure},
    {KX_E_ABORTED, Group::LineFailure},
    {KX_E_RECORD, Group::LineFailure},
    {0x800000FF, Group::LineFailure},
    {0x80000100, Group::NotApplicable},
    {KX_E_GC_PROPERTY, Group::NotApplicable},
    {0x80000106, Group::NotApplicable},
    {0x80000107, Group::LineFailure},
    {KX_E_NO_ANSWER, Group::LineFailure},
    {KX_E_NO_DEVICE, Group::LineFailure},
    {KX_E_DESCRIPTION, Group::LineFailure},
    {0xFFFFFFFF, Group::LineFailure},
};

TEST(StatusGroups, AreTheSameFromCAndCpp)
{
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.status);
        EXPECT_EQ(KX_IS_NOT_APPLICABLE(row.status), row.group == Group::NotApplicable);
        EXPECT_EQ(KX_IS_LINE_FAILURE(row.status), row.group == Group::LineFailure);
        EXPECT_EQ(isNotApplicableInC(row.status), row.group == Group::NotApplicable);
        EXPECT_EQ(isLineFailureInC(row.status), row.group == Group::LineFailure);
    }
}

// As a caller that puts the call itself in may expect.
TEST(StatusGroups, EvaluateTheirArgumentOnce)
{
    int calls = 0;
    const auto call = [&calls]() -> KX_Status {
        ++calls;
        return KX_E_NO_ANSWER;
    };
    EXPECT_TRUE(KX_IS_LINE_FAILURE(call()));
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(KX_IS_NOT_APPLICABLE(call()));
    EXPECT_EQ(calls, 2);
}

} // namespace
