// The two settings of the window in the suite's shared file.
#include "WindowFixture.h"
#include "window/LocalConfig.h"

namespace
{

class LocalConfigFile : public WindowFixture
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
#if defined(Q_OS_WIN)
        const QIODevice::OpenMode mode = QIODevice::ReadOnly | QIODevice::Text; // lines end as the system's
#else
        const QIODevice::OpenMode mode = QIODevice::ReadOnly;
#endif
        return file.open(mode) ? file.readAll() : QByteArray();
    }
    bool isBoxChecked(int id) const
    {
        return probe->box(id).isChecked();
    }
    QList<int> checkedBoxes() const
    {
        QList<int> ids;
        for (int id = 0; id < 8; ++id)
            if (isBoxChecked(id))
                ids << id;
        return ids;
    }
    QVariantMap otherSettings() const
    {
        QSettings settings(configFile(), QSettings::IniFormat);
        QVariantMap values;
        for (const QString& key : settings.allKeys())
            if (key != kMaskKey)
                values.insert(key, settings.value(key));
        return values;
    }
};

// Some of each kind that the suite's other programs keep.
QVariantMap foreignSettings()
{
    return {{"General/SupportOtherCameraFeature", true},
            {"General/EncodingType", 1},
            {"General/CtiFilePath", "/opt/some where/a.cti"},
            {"Feature/Langue", 1},
            {"Recording/ImgSavePreFileName", "Bild_äöü_图"},
            {"Recording/RecSaveFileNameIndex", 4294967296LL},
            {"View/StatusShowFlage", 511},
            {"View/MultiStatusShowFlage", "0x1F"},
            {"ShortcutKey/Grabbing", QStringList({"Ctrl", "G"})},
            {"CrossHelperEditor/CrossColor", "#ff0000"},
            {"CustomLayout", QByteArray("\x01\x02\xFF", 3)},
            {"LayoutName", ""}};
}

} // namespace

TEST_F(LocalConfigFile, WithoutAFileTheDefaultColumnsAreShown)
{
    open();
    EXPECT_EQ(hiddenColumns(), (QList<int>{3, 5, 6}));
    EXPECT_EQ(checkedBoxes(), (QList<int>{0, 1, 3, 5, 6}));
    EXPECT_EQ(tests::suiteCalls("SetEncodingType"), QStringList("SetEncodingType(0)"));
}

TEST_F(LocalConfigFile, NeitherStartNorChooserNorEndMakesTheFile)
{
    open();
    window->show();
    window->OnCheckListBtn();
    window->OnCheckListBtn();
    find(freeCameras(2));
    find({{"S1", KX_AVAILABILITY_IN_USE}});
    closeWindow();
    EXPECT_FALSE(QFile::exists(configFile()));
}

TEST_F(LocalConfigFile, EachBitGovernsItsColumn)
{
    const int columns[] = {1, 2, 3, 4, 6, 7, 8}; // none for column 5
    for (int bit = 0; bit < 7; ++bit) {
        setSetting(kMaskKey, 1 << bit);
        open();
        QList<int> hidden = {1, 2, 3, 4, 5, 6, 7, 8};
        hidden.removeOne(columns[bit]);
        EXPECT_EQ(hiddenColumns(), hidden) << "bit " << bit;
        EXPECT_EQ(checkedBoxes(), QList<int>{bit});
    }
}

TEST_F(LocalConfigFile, NoneAndAllColumns)
{
    setSetting(kMaskKey, 0);
    open();
    EXPECT_EQ(hiddenColumns(), (QList<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(checkedBoxes(), QList<int>());
    setSetting(kMaskKey, 127);
    open();
    EXPECT_EQ(hiddenColumns(), QList<int>{5});
    EXPECT_EQ(checkedBoxes(), (QList<int>{0, 1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(LocalConfigFile, HigherBitsAreIgnoredAndNotWrittenBack)
{
    setSetting(kMaskKey, 1024 + 107);
    open();
    EXPECT_EQ(checkedBoxes(), (QList<int>{0, 1, 3, 5, 6}));
    probe->box(2).click();
    EXPECT_EQ(setting(kMaskKey).toInt(), 107 + 4);
    setSetting(kMaskKey, 255);
    open();
    EXPECT_TRUE(isBoxChecked(7));
    setSetting(kMaskKey, 128);
    open();
    EXPECT_FALSE(isBoxChecked(7));
}

TEST_F(LocalConfigFile, ANumberThatIsNoneHidesAllSeven)
{
    setSetting(kMaskKey, "many");
    open();
    EXPECT_EQ(hiddenColumns(), (QList<int>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(LocalConfigFile, TheKeyIsSpelledAsItIs)
{
    writeRaw("[View]\nMultiImportExportFeaturesShowFlage=2\nMultiImportExportFeaturesShowFlag=127\n");
    open();
    EXPECT_EQ(checkedBoxes(), QList<int>{1});
    probe->box(0).click();
    EXPECT_TRUE(raw().contains("MultiImportExportFeaturesShowFlage=3\n"));
    EXPECT_TRUE(raw().contains("MultiImportExportFeaturesShowFlag=127\n"));
}

TEST_F(LocalConfigFile, TheEncodingStandsInTheEscapedSection)
{
    writeRaw("[General]\nEncodingType=1\n\n[%General]\nEncodingType=2\n");
    open();
    EXPECT_EQ(tests::suiteCalls("SetEncodingType"), QStringList("SetEncodingType(2)"));
    writeRaw("[General]\nEncodingType=1\n");
    open();
    EXPECT_EQ(tests::suiteCalls("SetEncodingType").last(), "SetEncodingType(0)");
}

TEST_F(LocalConfigFile, TheEncodingGoesOnUnchecked)
{
    setSetting("General/EncodingType", 4711);
    open();
    EXPECT_EQ(tests::suiteCalls("SetEncodingType").last(), "SetEncodingType(4711)");
    setSetting("General/EncodingType", "-3");
    open();
    EXPECT_EQ(tests::suiteCalls("SetEncodingType").last(), "SetEncodingType(-3)");
    setSetting("General/EncodingType", "none");
    open();
    EXPECT_EQ(tests::suiteCalls("SetEncodingType").last(), "SetEncodingType(0)");
}

TEST_F(LocalConfigFile, AChangeIsOnDiskAtOnce)
{
    open();
    probe->box(1).click();
    EXPECT_EQ(raw(), "[View]\nMultiImportExportFeaturesShowFlage=105\n");
    probe->box(1).click();
    EXPECT_EQ(raw(), "[View]\nMultiImportExportFeaturesShowFlage=107\n");
}

TEST_F(LocalConfigFile, SavingBuildsTheMaskFromTheBoxesNotFromTheFile)
{
    open();
    writeRaw("[View]\nMultiImportExportFeaturesShowFlage=0\n");
    probe->box(4).click();
    EXPECT_EQ(setting(kMaskKey).toInt(), 107 + 16);
}

TEST_F(LocalConfigFile, NothingIsCached)
{
    open();
    setSetting(kMaskKey, 2);
    EXPECT_EQ(LocalConfig::columnMask(window.get()), 2);
    writeRaw("[View]\nMultiImportExportFeaturesShowFlage=64\n\n[%General]\nEncodingType=3\n");
    EXPECT_EQ(LocalConfig::columnMask(window.get()), 64);
    EXPECT_EQ(LocalConfig::encodingType(window.get()), 3);
    EXPECT_TRUE(window->findChildren<QSettings*>().isEmpty());
}

TEST_F(LocalConfigFile, TheMaskIsReadAtEveryChoiceOfANode)
{
    open();
    find({{"S1"}, {"U", 1, KX_TRANSPORT_USB3, "USB"}});
    EXPECT_FALSE(table().isColumnHidden(PortId));
    setSetting(kMaskKey, 126);
    select(interfaceOf("S1"));
    EXPECT_TRUE(table().isColumnHidden(PortId));
    setSetting(kMaskKey, 1);
    select(probe->tree->findItem(14, -1));
    EXPECT_FALSE(table().isColumnHidden(PortId));
    EXPECT_FALSE(table().isColumnHidden(Model)); // the others follow only the chooser
}

TEST_F(LocalConfigFile, TheEncodingIsReadAtEveryUpdate)
{
    open();
    find(freeCameras(1));
    setSetting("General/EncodingType", 1);
    find({{"S1", KX_AVAILABILITY_IN_USE}});
    EXPECT_EQ(tests::suiteCalls("SetEncodingType"),
              (QStringList{"SetEncodingType(0)", "SetEncodingType(1)"}));
    find({{"S1", KX_AVAILABILITY_IN_USE}, {"S2"}});
    EXPECT_EQ(tests::suiteCalls("SetEncodingType").size(), 2);
}

TEST_F(LocalConfigFile, OtherProgramsSettingsStay)
{
    const QVariantMap foreign = foreignSettings();
    for (auto it = foreign.cbegin(); it != foreign.cend(); ++it)
        setSetting(it.key(), it.value());
    const QVariantMap before = otherSettings();
    ASSERT_EQ(before.size(), foreign.size());
    open();
    for (int id = 0; id < 8; ++id)
        probe->box(id).click();
    EXPECT_EQ(otherSettings(), before);
    EXPECT_EQ(setting("General/EncodingType").toInt(), 1);
}

TEST_F(LocalConfigFile, AllColumnsAreRememberedForTheNextStart)
{
    open();
    probe->box(7).click();
    EXPECT_EQ(setting(kMaskKey).toInt(), 127);
    open();
    EXPECT_TRUE(isBoxChecked(7));
    EXPECT_EQ(hiddenColumns(), QList<int>{5});
}

TEST_F(LocalConfigFile, StartAndEndDoNotTouchTheFile)
{
    writeRaw("; a comment\n[View]\nMultiImportExportFeaturesShowFlage=1131\n");
    const QByteArray before = raw();
    open();
    window->OnCheckListBtn();
    window->OnCheckListBtn();
    closeWindow();
    EXPECT_EQ(raw(), before);
}
