// Files that are written whole or not at all, against everything that gets in between.
#include "jobs/file/WholeFile.h"
#include "support/FullDisk.h"
#include "support/OrdinaryUser.h"
#include "support/QtPrinting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

std::atomic<int> g_syncs{0};
std::atomic<qint64> g_storedSize{0}; // of the last file
std::atomic<int> g_syncError{0};
std::atomic<int> g_interruptions{0}; // of the next ones

} // namespace

// In the place of the system's own.
extern "C" int fsync(int file)
{
    ++g_syncs;
    struct stat status = {};
    g_storedSize = fstat(file, &status) == 0 ? qint64(status.st_size) : -1;
    if (g_interruptions > 0) {
        --g_interruptions;
        errno = EINTR;
        return -1;
    }
    if (g_syncError == 0)
        return static_cast<int>(syscall(SYS_fsync, file));
    errno = g_syncError;
    return -1;
}

namespace
{

class WholeFile : public ::testing::Test
{
protected:
    WholeFile()
    {
        g_syncs = 0;
        g_syncError = 0;
    }

    QString path(const QString& name = "Cam.fpk") const { return folder.filePath(name); }

    void put(const QByteArray& bytes)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    QByteArray bytes(const QString& name = "Cam.fpk") const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    QStringList names() const
    {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    mode_t mode() const
    {
        struct stat status = {};
        EXPECT_EQ(stat(path().toLocal8Bit().constData(), &status), 0);
        return status.st_mode & 07777;
    }

    ino_t inode() const
    {
        struct stat status = {};
        EXPECT_EQ(stat(path().toLocal8Bit().constData(), &status), 0);
        return status.st_ino;
    }

    QTemporaryDir folder;
};

using tests::FullDisk;

const QString kText(100000, 'n');

} // namespace

TEST_F(WholeFile, IsTheTextAndNothingElseStays)
{
    EXPECT_TRUE(ie::writeWholeFile(path(), kText));
    EXPECT_EQ(bytes(), kText.toLatin1());
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
}

TEST_F(WholeFile, ReplacesAnOlderOneByAnother)
{
    put("old");
    const int held = open(path().toLocal8Bit().constData(), O_RDONLY); // its inode is not given out again
    const ino_t before = inode();
    EXPECT_TRUE(ie::writeWholeFile(path(), kText));
    EXPECT_EQ(bytes(), kText.toLatin1());
    EXPECT_NE(inode(), before);
    close(held);
}

TEST_F(WholeFile, OfTwoWritersTheLastOneWinsWhole)
{
    const QByteArray first = QByteArray(70000, 'a') + "end of a";
    const QByteArray second = QByteArray(200000, 'b') + "end of b";
    put(first);
    for (int round = 0; round < 200; ++round) {
        std::thread other([&] { EXPECT_TRUE(ie::writeWholeFile(path(), QString(first))); });
        EXPECT_TRUE(ie::writeWholeFile(path(), QString(second)));
        const QByteArray meanwhile = bytes();
        EXPECT_TRUE(meanwhile == first || meanwhile == second) << round;
        other.join();
        const QByteArray after = bytes();
        EXPECT_TRUE(after == first || after == second) << round;
    }
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
}

TEST_F(WholeFile, AFullDiskKeepsTheOlderFile)
{
    put("old");
    {
        const FullDisk disk(50000);
        EXPECT_FALSE(ie::writeWholeFile(path(), kText));
    }
    EXPECT_EQ(bytes(), QByteArray("old"));
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
}

TEST_F(WholeFile, AFullDiskLeavesNoNewFile)
{
    {
        const FullDisk disk(50000);
        EXPECT_FALSE(ie::writeWholeFile(path(), kText));
    }
    EXPECT_EQ(names(), QStringList());
}

TEST_F(WholeFile, IsStoredBeforeTheOlderOneGoes)
{
    put("old");
    g_syncError = EIO;
    EXPECT_FALSE(ie::writeWholeFile(path(), kText));
    EXPECT_GE(g_syncs, 1);
    EXPECT_EQ(g_storedSize, kText.size());
    EXPECT_FALSE(ie::writeWholeFile(path(), "new")); // which no buffer has passed on by itself
    EXPECT_EQ(g_storedSize, 3);
    EXPECT_EQ(bytes(), QByteArray("old"));
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
}

TEST_F(WholeFile, AFileSystemThatCannotBeAskedIsTrusted)
{
    for (const int error : {EINVAL, ENOTSUP}) {
        put("old");
        g_syncError = error;
        EXPECT_TRUE(ie::writeWholeFile(path(), kText)) << error;
        EXPECT_EQ(bytes(), kText.toLatin1());
    }
}

TEST_F(WholeFile, KeepsThePermissionsOfTheOlderOne)
{
    for (const mode_t permissions : {0600, 0664, 0444 | 0200, 0640}) {
        put("old");
        ASSERT_EQ(chmod(path().toLocal8Bit().constData(), permissions), 0);
        EXPECT_TRUE(ie::writeWholeFile(path(), kText));
        EXPECT_EQ(mode(), permissions);
    }
}

TEST_F(WholeFile, ANewOneHasThePermissionsOfAnyNewFile)
{
    const mode_t before = umask(027);
    EXPECT_TRUE(ie::writeWholeFile(path(), kText));
    umask(before);
    EXPECT_EQ(mode(), mode_t(0640));
}

TEST_F(WholeFile, FollowsALinkAndReplacesWhatItLeadsTo)
{
    ASSERT_TRUE(QDir(folder.path()).mkdir("store"));
    ASSERT_TRUE(ie::writeWholeFile(path("store/real.fpk"), "old"));
    ASSERT_EQ(symlink("store/real.fpk", path().toLocal8Bit().constData()), 0);
    EXPECT_TRUE(ie::writeWholeFile(path(), kText));
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(bytes("store/real.fpk"), kText.toLatin1());
    {
        const FullDisk disk(50000);
        EXPECT_FALSE(ie::writeWholeFile(path(), kText + kText));
    }
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(bytes("store/real.fpk"), kText.toLatin1());
}

TEST_F(WholeFile, MakesTheFileThatALinkLeadsTo)
{
    ASSERT_EQ(symlink("real.fpk", path().toLocal8Bit().constData()), 0);
    EXPECT_TRUE(ie::writeWholeFile(path(), kText));
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(bytes("real.fpk"), kText.toLatin1());
}

TEST_F(WholeFile, ALinkToItselfCannotBeOpened)
{
    ASSERT_EQ(symlink("Cam.fpk", path().toLocal8Bit().constData()), 0);
    EXPECT_FALSE(ie::writeWholeFile(path(), kText));
    EXPECT_TRUE(QFileInfo(path()).isSymLink());
}

TEST_F(WholeFile, WritesIntoAPipe)
{
    const QByteArray name = path().toLocal8Bit();
    ASSERT_EQ(mkfifo(name.constData(), 0600), 0);
    const int reader = open(name.constData(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(ie::writeWholeFile(path(), "short"));
    char buffer[16] = {};
    EXPECT_EQ(read(reader, buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "short");
    close(reader);
    struct stat status = {};
    EXPECT_EQ(lstat(name.constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(WholeFile, IsWrittenInPlaceWhereTheFolderAllowsNoSecondFile)
{
    put("old");
    ASSERT_EQ(chmod(path().toLocal8Bit().constData(), 0666), 0);
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0555), 0);
    const ino_t before = inode();
    const uid_t user = geteuid();
    if (user == 0) {
        ASSERT_EQ(seteuid(65534), 0); // root may write into any folder
    }
    EXPECT_TRUE(ie::writeWholeFile(path(), kText));
    EXPECT_FALSE(ie::writeWholeFile(path("New.fpk"), kText));
    if (user == 0) {
        ASSERT_EQ(seteuid(0), 0);
    }
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0755), 0);
    EXPECT_EQ(bytes(), kText.toLatin1());
    EXPECT_EQ(inode(), before);
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
}

// Half of it could not be told from a small one.
TEST_F(WholeFile, IsEmptyWhereADiskFillsUpAndTheFolderLetsNobodyRemoveIt)
{
    put("old");
    ASSERT_EQ(chmod(path().toLocal8Bit().constData(), 0666), 0);
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0555), 0);
    const uid_t user = geteuid();
    if (user == 0) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    {
        const FullDisk disk(50000);
        EXPECT_FALSE(ie::writeWholeFile(path(), kText));
    }
    if (user == 0) {
        ASSERT_EQ(seteuid(0), 0);
    }
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0755), 0);
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
    EXPECT_EQ(bytes(), "");
}

TEST_F(WholeFile, ANameWithoutRoomForASecondOneIsWrittenInPlace)
{
    const QString longest(255, 'x');
    EXPECT_TRUE(ie::writeWholeFile(path(longest), kText));
    EXPECT_EQ(bytes(longest), kText.toLatin1());
    EXPECT_EQ(names(), QStringList({longest}));
}

TEST_F(WholeFile, WhatCannotBeWrittenInPlaceLeavesNoHalf)
{
    ASSERT_EQ(symlink("/dev/full", path().toLocal8Bit().constData()), 0);
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0777), 0);
    {
        const tests::OrdinaryUser user;
        EXPECT_FALSE(ie::writeWholeFile(path(), kText));
    }
    EXPECT_TRUE(QFileInfo::exists("/dev/full") && !QFileInfo("/dev/full").isFile());
    EXPECT_EQ(names(), QStringList());
    const QString longest(255, 'x'), link = "link.fpk";
    ASSERT_EQ(symlink(longest.toLatin1().constData(), path(link).toLocal8Bit().constData()), 0);
    {
        const FullDisk disk(50000);
        EXPECT_FALSE(ie::writeWholeFile(path(longest), kText));
        EXPECT_FALSE(ie::writeWholeFile(path(link), kText));
    }
    EXPECT_EQ(names(), QStringList({link}));
}

TEST_F(WholeFile, MayBeOfBytesAsTheyAre)
{
    const QByteArray odd("a\0\xFF\r\nb", 6);
    EXPECT_TRUE(ie::writeWholeBytes(path(), odd));
    EXPECT_EQ(bytes(), odd);
    EXPECT_EQ(names(), QStringList({"Cam.fpk"}));
    {
        const FullDisk disk(1000);
        EXPECT_FALSE(ie::writeWholeBytes(path(), kText.toLatin1()));
    }
    EXPECT_EQ(bytes(), odd);
}

TEST_F(WholeFile, IsStoredThoughSignalsInterruptIt)
{
    put("old");
    g_interruptions = 2;
    EXPECT_TRUE(ie::writeWholeBytes(path(), "new"));
    EXPECT_EQ(g_interruptions, 0);
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "new");
}
