// Opening what somebody else may have prepared: files, and what only looks like one.
#include "jobs/file/RegularFile.h"
#include "support/QtPrinting.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using ie::LinkRule;

namespace
{

class RegularFile : public ::testing::Test
{
protected:
    RegularFile()
    {
        QFile file(path("file"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("text") == 4);
        EXPECT_EQ(symlink("file", name("link").constData()), 0);
    }

    QString path(const QString& name) const { return folder.filePath(name); }
    QByteArray name(const QString& name) const { return QFile::encodeName(path(name)); }

    // Why it is not open.
    QString refusal(const QString& name, QIODevice::OpenMode mode = QIODevice::ReadOnly,
                    LinkRule links = LinkRule::Followed)
    {
        QFile file(path(name));
        const QString cause = ie::openRegular(file, mode, links);
        EXPECT_EQ(file.isOpen(), cause.isEmpty());
        return cause;
    }

    QTemporaryDir folder;
};

const QString kNoFile = "it is no regular file";

} // namespace

TEST_F(RegularFile, IsOpenedAsAsked)
{
    QFile read(path("file")), appended(path("file")), changed(path("file"));
    EXPECT_EQ(ie::openRegular(read, QIODevice::ReadOnly), QString());
    EXPECT_EQ(read.readAll(), QByteArray("text"));
    EXPECT_EQ(ie::openRegular(appended, QIODevice::WriteOnly | QIODevice::Append), QString());
    EXPECT_EQ(appended.write("more"), 4);
    EXPECT_TRUE(appended.flush());
    EXPECT_EQ(ie::openRegular(changed, QIODevice::ReadWrite), QString());
    EXPECT_EQ(changed.readAll(), QByteArray("textmore"));
    EXPECT_EQ(changed.write("!"), 1);
    EXPECT_TRUE(changed.flush());
    EXPECT_EQ(read.readAll(), QByteArray("more!"));
}

TEST_F(RegularFile, OfTwoWhoAppendKeepsWhatBothHaveWritten)
{
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Append;
    QFile one(path("file")), other(path("file"));
    EXPECT_EQ(ie::openRegular(one, mode), QString());
    EXPECT_EQ(ie::openRegular(other, mode), QString());
    for (QFile* file : {&one, &other, &one})
        EXPECT_TRUE(file->write("+") == 1 && file->flush());
    EXPECT_EQ(QFileInfo(path("file")).size(), 7);
}

TEST_F(RegularFile, IsMadeForWritersAlone)
{
    const mode_t mask = umask(0);
    EXPECT_EQ(refusal("open", QIODevice::WriteOnly), QString());
    umask(mask);
    struct stat about = {};
    EXPECT_EQ(stat(name("open").constData(), &about), 0);
    EXPECT_EQ(about.st_mode & 07777, 0666u);
    EXPECT_EQ(refusal("new"), QString("No such file or directory"));
    EXPECT_EQ(refusal("new", QIODevice::WriteOnly), QString());
    EXPECT_EQ(refusal("other", QIODevice::ReadWrite), QString());
    EXPECT_TRUE(QFile::exists(path("new")));
    EXPECT_EQ(refusal("none/new", QIODevice::WriteOnly), QString("No such file or directory"));
}

TEST_F(RegularFile, IsFollowedToByLinksUnlessTheyAreRefused)
{
    EXPECT_EQ(refusal("link"), QString());
    EXPECT_EQ(refusal("link", QIODevice::ReadOnly, LinkRule::Refused), QString("it is a link"));
    EXPECT_EQ(refusal("file", QIODevice::ReadOnly, LinkRule::Refused), QString());
}

TEST_F(RegularFile, IsNoPipeAndNoFolder)
{
    ASSERT_EQ(mkfifo(name("pipe").constData(), 0600), 0);
    EXPECT_EQ(refusal("pipe"), kNoFile); // and nobody waits for a writer
    EXPECT_EQ(refusal("pipe", QIODevice::WriteOnly), kNoFile);
    EXPECT_EQ(refusal("pipe", QIODevice::ReadWrite), kNoFile);
    EXPECT_EQ(refusal("."), kNoFile);
    EXPECT_EQ(refusal(".", QIODevice::WriteOnly), kNoFile);
    QFile zero("/dev/zero");
    EXPECT_EQ(ie::openRegular(zero, QIODevice::ReadOnly), kNoFile);
}
