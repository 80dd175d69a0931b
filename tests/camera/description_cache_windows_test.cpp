// Where descriptions are kept on Windows.
#include "camera/DescriptionCacheFixture.h"

using tests::DescriptionCache;
using tests::text;
namespace fs = std::filesystem;

TEST_F(DescriptionCache, switchedOffLeavesNothingOnTheDisk)
{
    setenv("KX_DESCRIPTION_CACHE", "off", 1);
    setPlace("LOCALAPPDATA", folder / "data");
    fetch();
    forgetMemory();
    EXPECT_EQ(fetch(), text());
    EXPECT_TRUE(hasReadWhole());
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(DescriptionCache, liesInTheUsersDataFolderUnlessTold)
{
    unsetenv("KX_DESCRIPTION_CACHE");
    setPlace("LOCALAPPDATA", folder / "data");
    fetch();
    EXPECT_FALSE(fs::is_empty(folder / "data/VELA/descriptions"));

    setenv("LOCALAPPDATA", "not/absolute", 1);
    device.names.model = "Another";
    fetch();
    forgetMemory();
    fetch();
    EXPECT_TRUE(hasReadWhole());
    EXPECT_FALSE(fs::exists("not"));
}
