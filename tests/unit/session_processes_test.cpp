// Copies of a program: those of the same session, and no others.
#include "SuiteTools/widgets/SessionProcesses.h"
#include "support/QtPrinting.h"

#include <gtest/gtest.h>

namespace
{

using VELAInterface::copiesInSession;

const std::vector<VELAInterface::RunningProcess> kMachine = {
    {4, "System", 0},       {10, "Program.exe", 0}, {11, "Program.exe", 1},
    {12, "Other.exe", 1},   {13, "Program.exe", 2}, {14, "Program.exe", std::nullopt},
    {15, "Program.exe", 1},
};

TEST(SessionProcesses, AreThoseOfTheNameInTheSession)
{
    EXPECT_EQ(copiesInSession(kMachine, "Program", 1), (QList<qint64>{11, 15}));
    EXPECT_EQ(copiesInSession(kMachine, "Program", 2), QList<qint64>{13});
    EXPECT_EQ(copiesInSession(kMachine, "Other", 1), QList<qint64>{12});
}

TEST(SessionProcesses, ServicesAreASessionToo)
{
    EXPECT_EQ(copiesInSession(kMachine, "Program", 0), QList<qint64>{10});
}

TEST(SessionProcesses, WhoseSessionIsNotKnownIsNobodys)
{
    EXPECT_EQ(copiesInSession(kMachine, "Program", std::nullopt), QList<qint64>());
    EXPECT_EQ(copiesInSession(kMachine, "Program", 3), QList<qint64>());
}

TEST(SessionProcesses, NamesAreWholeAndWithoutTheExtension)
{
    EXPECT_EQ(copiesInSession(kMachine, "Prog", 1), QList<qint64>());
    EXPECT_EQ(copiesInSession(kMachine, "Program.exe", 1), QList<qint64>());
    EXPECT_EQ(copiesInSession({{7, "a.b.exe", 1}}, "a.b", 1), QList<qint64>{7});
}

} // namespace
