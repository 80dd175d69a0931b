// Where descriptions are kept on POSIX systems, and who else may write there.
#include "camera/DescriptionCacheFixture.h"

using tests::DescriptionCache;
using tests::text;
namespace fs = std::filesystem;

TEST_F(DescriptionCache, switchedOffLeavesNothingOnTheDisk)
{
    setenv("KX_DESCRIPTION_CACHE", "off", 1);
    setPlace("XDG_DATA_HOME", folder / "data");
    fetch();
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_TRUE(hasReadWhole());
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(DescriptionCache, liesInTheUsersDataFolderUnlessTold)
{
    unsetenv("KX_DESCRIPTION_CACHE");
    setPlace("XDG_DATA_HOME", folder / "data");
    fetch();
    EXPECT_FALSE(fs::is_empty(folder / "data/VELA/descriptions"));
    EXPECT_EQ(fs::status(folder / "data/VELA/descriptions").permissions(), fs::perms::owner_all);

    setenv("XDG_DATA_HOME", "not/absolute", 1);
    setPlace("HOME", folder / "home");
    device.names.model = "Another";
    fetch();
    EXPECT_FALSE(fs::is_empty(folder / "home/.local/share/VELA/descriptions"));
}

TEST_F(DescriptionCache, aFolderOfTheSystemIsNoError)
{
    setPlace("KX_DESCRIPTION_CACHE", "/proc/nowhere");
    EXPECT_EQ(fetch(), text());
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_TRUE(hasReadWhole());
}

// Whoever may write there could say what a camera's description is.
TEST_F(DescriptionCache, aFolderThatOthersMayWriteToIsNotUsed)
{
    fetch();
    for (const auto open : {fs::perms::others_write, fs::perms::group_write}) {
        fs::permissions(folder / "cache", open, fs::perm_options::add);
        forgetMemory();
        EXPECT_EQ(fetch(), text());
        EXPECT_TRUE(hasReadWhole());
        device.offer(text('y'));
        forgetMemory();
        EXPECT_EQ(fetch(), text('y'));
        EXPECT_EQ(files("").size(), 1u) << "nothing is written there either";
        device.offer(text());
        fs::permissions(folder / "cache", open, fs::perm_options::remove);
    }
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_FALSE(hasReadWhole());
}
