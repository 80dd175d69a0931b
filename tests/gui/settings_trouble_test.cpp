// The settings file when it cannot be used as it should.
#include "WindowFixture.h"

#include <QProcess>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

class SettingsTrouble : public WindowFixture
{
protected:
    void writeRaw(const QByteArray& bytes)
    {
        QFile file(configFile());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    QByteArray raw() const
    {
        QFile file(configFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    // The window with its defaults, and a click that works in the table whether or not it can be stored.
    void expectDefaultsThatCanBeChanged()
    {
        open();
        EXPECT_EQ(hiddenColumns(), (QList<int>{3, 5, 6}));
        probe->box(2).click();
        EXPECT_EQ(hiddenColumns(), (QList<int>{5, 6}));
        find(freeCameras(1));
        find({{"S1", KX_AVAILABILITY_IN_USE}});
        EXPECT_EQ(messages.size(), 0);
    }
};

// While one lives, the process may not write where only root may.
class WithoutRoot
{
public:
    WithoutRoot() : m_user(geteuid()) { m_isSet = m_user != 0 || seteuid(65534) == 0; }
    ~WithoutRoot()
    {
        if (m_user == 0 && seteuid(0) != 0)
            qFatal("cannot become root again");
    }
    bool isSet() const { return m_isSet; }

private:
    const uid_t m_user;
    bool m_isSet = false;
};

} // namespace

TEST_F(SettingsTrouble, AReadOnlyFileIsReadAndLosesChangesSilently)
{
    writeRaw("[View]\nMultiImportExportFeaturesShowFlage=3\n");
    const QByteArray before = raw();
    const QByteArray data = QFile::encodeName(folder.filePath("data"));
    ASSERT_EQ(chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(configFile()).constData(), 0444), 0);
    ASSERT_EQ(chmod(data.constData(), 0555), 0);
    {
        const WithoutRoot user;
        ASSERT_TRUE(user.isSet());
        open();
        EXPECT_EQ(hiddenColumns(), (QList<int>{3, 4, 5, 6, 7, 8}));
        probe->box(3).click();
        EXPECT_FALSE(table().isColumnHidden(Serial));
    }
    EXPECT_EQ(raw(), before);
    EXPECT_EQ(messages.size(), 0);
    closeWindow();
    chmod(data.constData(), 0755);
}

TEST_F(SettingsTrouble, AnUnreadableFileGivesTheDefaults)
{
    writeRaw("[View]\nMultiImportExportFeaturesShowFlage=3\n");
    ASSERT_EQ(chmod(QFile::encodeName(folder.path()).constData(), 0755), 0);
    ASSERT_EQ(chmod(QFile::encodeName(configFile()).constData(), 0), 0);
    const WithoutRoot user;
    ASSERT_TRUE(user.isSet());
    expectDefaultsThatCanBeChanged();
}

TEST_F(SettingsTrouble, AFolderInTheFilesPlace)
{
    QDir(folder.path()).mkpath("data/LocalConfig.ini/inside");
    expectDefaultsThatCanBeChanged();
    EXPECT_TRUE(QDir(folder.filePath("data/LocalConfig.ini/inside")).exists());
}

TEST_F(SettingsTrouble, NoPlaceForTheFile)
{
    tests::suiteScript().programDataPath = "/dev/null/nowhere";
    expectDefaultsThatCanBeChanged();
}

TEST_F(SettingsTrouble, AMissingFolderIsMade)
{
    tests::suiteScript().programDataPath = folder.filePath("not/yet");
    open();
    probe->box(2).click();
    QFile file(folder.filePath("not/yet/LocalConfig.ini"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), "[View]\nMultiImportExportFeaturesShowFlage=111\n");
}

TEST_F(SettingsTrouble, ABrokenFile)
{
    for (const QByteArray& bytes :
         {QByteArray("[View\nMulti"), QByteArray(5000, '\xFF'), QByteArray("\0\0[[%%\\x\n=\n", 12)}) {
        writeRaw(bytes);
        expectDefaultsThatCanBeChanged();
    }
}

TEST_F(SettingsTrouble, WhatCanBeReadOfABrokenFileCounts)
{
    writeRaw("rubbish\n[View]\nMultiImportExportFeaturesShowFlage=3\nmore rubbish\n[Feature]\nLangue=1\n");
    open();
    EXPECT_EQ(hiddenColumns(), (QList<int>{3, 4, 5, 6, 7, 8}));
    probe->box(2).click();
    EXPECT_EQ(setting(kMaskKey).toInt(), 7);
    EXPECT_EQ(setting("Feature/Langue").toInt(), 1);
}

TEST_F(SettingsTrouble, AnotherProgramWritesAtTheSameTime)
{
    constexpr int kKeys = 12;
    open();
    QProcess other;
    other.start(QCoreApplication::applicationFilePath(),
                {"--write-settings", configFile(), QString::number(kKeys)});
    ASSERT_TRUE(other.waitForReadyRead()); // it begins
    for (int click = 0; click < 11; ++click) {
        probe->box(2).click();
        other.waitForFinished(10); // both get at the file now and then
    }
    ASSERT_TRUE(other.state() == QProcess::NotRunning || other.waitForFinished());
    EXPECT_EQ(other.exitCode(), 0);
    EXPECT_EQ(setting(kMaskKey).toInt(), 107 + 4); // the last click
    for (int i = 1; i <= kKeys; ++i)
        EXPECT_EQ(setting(QString("Other/Key%1").arg(i)).toInt(), i);
}
