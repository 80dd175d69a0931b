// Files that another program has open: waited for, for about a second, by whoever reads or writes them.
#include "KXCameraControl/bag/BagFile.h"
#include "held_files/HeldFiles.h"
#include "jobs/file/RegularFile.h"
#include "jobs/file/WholeFile.h"
#include "support/QtPrinting.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

namespace
{

// Has a file open, for nobody else, until its time is over.
class Holder
{
public:
    Holder(const QString& path, DWORD milliseconds)
        : m_file(CreateFileW(reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(path).utf16()),
                             GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)),
          m_thread([this, milliseconds] {
              Sleep(milliseconds);
              CloseHandle(m_file);
          })
    {
        EXPECT_NE(m_file, INVALID_HANDLE_VALUE);
    }
    ~Holder() { m_thread.join(); }

private:
    const HANDLE m_file;
    std::thread m_thread;
};

constexpr DWORD kMoment = 500;   // ms; less than what is waited
constexpr DWORD kForGood = 4000; // more

class HeldFiles : public testing::Test
{
protected:
    HeldFiles()
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("old") == 3);
    }
    QByteArray content() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }

    QTemporaryDir folder;
    const QString path = folder.filePath("file");
};

// What `attempt` gives: `error` so often, and then success.
int attemptsAt(DWORD error, int failures, DWORD& result)
{
    int attempts = 0;
    result = held_files::retried([&] { return ++attempts <= failures ? error : DWORD(ERROR_SUCCESS); });
    return attempts;
}

} // namespace

TEST_F(HeldFiles, AreTriedThreeTimesMore)
{
    DWORD result = 0;
    EXPECT_EQ(attemptsAt(ERROR_SHARING_VIOLATION, 3, result), 4);
    EXPECT_EQ(result, DWORD(ERROR_SUCCESS));
    EXPECT_EQ(attemptsAt(ERROR_SHARING_VIOLATION, 9, result), 4);
    EXPECT_EQ(result, DWORD(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(attemptsAt(ERROR_ACCESS_DENIED, 1, result), 2);
}

TEST_F(HeldFiles, OtherErrorsAreToldAtOnce)
{
    DWORD result = 0;
    EXPECT_EQ(attemptsAt(ERROR_DISK_FULL, 1, result), 1);
    EXPECT_EQ(result, DWORD(ERROR_DISK_FULL));
}

TEST_F(HeldFiles, AreReadWhenTheyAreFree)
{
    const Holder holder(path, kMoment);
    QFile file(path);
    EXPECT_EQ(ie::openRegular(file, QIODevice::ReadOnly), "");
    EXPECT_EQ(file.readAll(), "old");
}

TEST_F(HeldFiles, ThatStayHeldAreNotRead)
{
    const Holder holder(path, kForGood);
    QFile file(path);
    EXPECT_NE(ie::openRegular(file, QIODevice::ReadOnly), "");
}

TEST_F(HeldFiles, AreReplacedWhenTheyAreFree)
{
    const Holder holder(path, kMoment);
    EXPECT_TRUE(ie::writeWholeFile(path, "new"));
    EXPECT_EQ(content(), "new");
}

TEST_F(HeldFiles, ThatStayHeldAreNotReplaced)
{
    {
        const Holder holder(path, kForGood);
        EXPECT_FALSE(ie::writeWholeFile(path, "new"));
    }
    EXPECT_EQ(content(), "old");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList("file"));
}

TEST_F(HeldFiles, BagsToo)
{
    {
        const Holder holder(path, kMoment);
        EXPECT_EQ(kx::writeBagFile(path.toStdString(), "bag"), "");
    }
    EXPECT_EQ(content(), "bag");
    {
        const Holder holder(path, kForGood);
        EXPECT_NE(kx::writeBagFile(path.toStdString(), "other"), "");
    }
    EXPECT_EQ(content(), "bag");
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList("file"));
}
