// The file of a feature bag is whole or not there, whatever it meets.
#include "KXCameraControl/bag/BagFile.h"
#include "camera/FakeNodes.h"
#include "support/FullDisk.h"
#include "support/OrdinaryUser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using kx::writeBagFile;
namespace fs = std::filesystem;

namespace
{

class BagFile : public ::testing::Test
{
protected:
    BagFile()
    {
        char name[] = "/tmp/bag_file_XXXXXX";
        folder = mkdtemp(name);
    }
    ~BagFile() override { fs::remove_all(folder); }

    std::string path(const std::string& name = "a.fpk") const { return folder + '/' + name; }

    void put(const std::string& text) const { std::ofstream(path()) << text; }

    std::string text(const std::string& name = "a.fpk") const
    {
        std::ostringstream out;
        out << std::ifstream(path(name), std::ios::binary).rdbuf();
        return out.str();
    }

    std::string names() const
    {
        std::string all;
        for (const auto& entry : fs::directory_iterator(folder))
            all += entry.path().filename().string();
        return all;
    }

    struct stat status() const
    {
        struct stat found = {};
        EXPECT_EQ(lstat(path().c_str(), &found), 0);
        return found;
    }

    std::string folder;
    const std::string whole = std::string(100000, 'n');
};

} // namespace

TEST_F(BagFile, OfTwoWritersTheLastOneWinsWhole)
{
    const std::string first(200000, '1'), second(100, '2');
    for (int round = 0; round < 200; ++round) {
        std::thread other([&] { EXPECT_EQ(writeBagFile(path(), first), ""); });
        EXPECT_EQ(writeBagFile(path(), second), "");
        other.join();
        const std::string after = text();
        EXPECT_TRUE(after == first || after == second) << round;
    }
    EXPECT_EQ(names(), "a.fpk");
}

TEST_F(BagFile, KeepsThePermissionsOfTheOlderOneAndMasksThoseOfANewOne)
{
    const mode_t before = umask(027);
    EXPECT_EQ(writeBagFile(path(), whole), "");
    umask(before);
    EXPECT_EQ(status().st_mode & 07777, mode_t(0640));
    ASSERT_EQ(chmod(path().c_str(), 0604), 0);
    EXPECT_EQ(writeBagFile(path(), "new"), "");
    EXPECT_EQ(status().st_mode & 07777, mode_t(0604));
    EXPECT_EQ(text(), "new");
}

TEST_F(BagFile, FollowsALinkAndReplacesWhatItLeadsTo)
{
    fs::create_directory(path("store"));
    fs::create_symlink("store/real.fpk", path());
    EXPECT_EQ(writeBagFile(path(), "first"), "") << "what it leads to is made";
    EXPECT_EQ(writeBagFile(path(), "second"), "");
    EXPECT_TRUE(S_ISLNK(status().st_mode));
    EXPECT_EQ(text("store/real.fpk"), "second");
}

TEST_F(BagFile, ALinkToItselfCannotBeOpened)
{
    fs::create_symlink("a.fpk", path());
    EXPECT_EQ(writeBagFile(path(), whole), "Too many levels of symbolic links");
    EXPECT_TRUE(S_ISLNK(status().st_mode));
}

TEST_F(BagFile, ADeviceIsWrittenInPlaceAndStays)
{
    fs::create_symlink("/dev/full", path());
    ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
    {
        const tests::OrdinaryUser user;
        EXPECT_EQ(writeBagFile(path(), whole), "No space left on device");
    }
    EXPECT_TRUE(S_ISLNK(status().st_mode));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(BagFile, WritesIntoAPipe)
{
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    const int reader = open(path().c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_EQ(writeBagFile(path(), "short"), "");
    char buffer[16] = {};
    EXPECT_EQ(read(reader, buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "short");
    close(reader);
    EXPECT_TRUE(S_ISFIFO(status().st_mode));
}

TEST_F(BagFile, OnAFullDiskIsToldAndTheOlderOneIsKept)
{
    const auto save = [&](std::string& message) {
        tests::FakeNodes fake = tests::channels();
        uint32_t count = 0;
        const tests::FullDisk disk(100);
        return kx::saveBag(fake, {}, path(), message, count);
    };
    std::string message;
    EXPECT_EQ(save(message), KX_E_FILE);
    EXPECT_EQ(message, "The feature file " + path() + " cannot be written: File too large");
    EXPECT_EQ(names(), "");
    put("old");
    EXPECT_EQ(save(message), KX_E_FILE);
    EXPECT_EQ(text(), "old");
    EXPECT_EQ(names(), "a.fpk");
}

TEST_F(BagFile, ANameWithoutRoomForASecondOneIsWrittenInPlaceOrNotAtAll)
{
    const std::string longest(255, 'x');
    EXPECT_EQ(writeBagFile(path(longest), whole), "");
    EXPECT_EQ(text(longest), whole);
    EXPECT_EQ(names(), longest);
    {
        const tests::FullDisk disk(50000);
        EXPECT_EQ(writeBagFile(path(longest), whole), "File too large");
    }
    EXPECT_EQ(names(), "");
}

TEST_F(BagFile, IsWrittenInPlaceWhereTheFolderAllowsNoSecondFile)
{
    put("old");
    ASSERT_EQ(chmod(path().c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
    const ino_t before = status().st_ino;
    const bool isRoot = geteuid() == 0; // who may write into any folder
    if (isRoot) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    EXPECT_EQ(writeBagFile(path(), whole), "");
    EXPECT_EQ(writeBagFile(path("new.fpk"), whole), "Permission denied");
    if (isRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(status().st_ino, before);
    EXPECT_EQ(text(), whole);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    EXPECT_EQ(names(), "a.fpk");
}

// Half of it could not be told from a small one.
TEST_F(BagFile, IsEmptyWhereADiskFillsUpAndTheFolderLetsNobodyRemoveIt)
{
    put("old");
    ASSERT_EQ(chmod(path().c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0555), 0);
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    {
        const tests::FullDisk disk(50000);
        EXPECT_EQ(writeBagFile(path(), whole), "File too large");
    }
    if (isRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    EXPECT_EQ(names(), "a.fpk");
    EXPECT_EQ(text(), "");
}

TEST_F(BagFile, OneThatItsOwnerProtectsIsLeftAlone)
{
    put("old");
    ASSERT_EQ(chmod(path().c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0777), 0);
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    EXPECT_EQ(writeBagFile(path(), whole), "Permission denied");
    if (isRoot) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(text(), "old");
    EXPECT_EQ(names(), "a.fpk");
}
