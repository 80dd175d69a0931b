// A test that root runs has no more rights here than anybody: folders keep it out, and devices stay.
#pragma once

#include <gtest/gtest.h>

#include <unistd.h>

namespace tests
{

class OrdinaryUser
{
public:
    OrdinaryUser() { EXPECT_TRUE(geteuid() != 0 || seteuid(65534) == 0); }
    ~OrdinaryUser() { EXPECT_TRUE(getuid() != 0 || seteuid(0) == 0); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};

} // namespace tests
