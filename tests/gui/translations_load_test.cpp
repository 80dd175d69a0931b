// Which translations are in force after which of their files could be loaded.
#include "window/Translations.h"

#include <StyledCtl/StyledCtl.h>

#include <QDir>
#include <QFile>
#include <QtTest>

class TranslationsLoadTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void allFive();
    void theFirstThatIsMissingEndsIt_data();
    void theFirstThatIsMissingEndsIt();
    void englishRemovesThemAll();
    void otherWordsDoNothing_data();
    void otherWordsDoNothing();

private:
    static QString folder() { return QCoreApplication::applicationDirPath() + "/Translation"; }
    static QString fileOf(const QString& name) { return folder() + "/" + name + "_zh_CN.qm"; }
    static bool isChinese(const char* context, const char* text)
    {
        return QCoreApplication::translate(context, text) != text;
    }
    // Which of the five speak, in the order of their files; the common tools have no text of their own.
    static QStringList speaking()
    {
        QStringList names;
        if (isChinese("MainWidget", "Export"))
            names << "Import_Export_Features";
        if (isChinese("QPlatformTheme", "Cancel"))
            names << "qt";
        if (isChinese("ORBCustomMessageBox", "Show details"))
            names << "StyledCtl";
        if (isChinese("VELADeviceTree", "All Devices"))
            names << "DevListMgr";
        return names;
    }
};

void TranslationsLoadTest::init()
{
    QVERIFY(LoadTranslations("ENG"));
    QDir(folder()).removeRecursively();
    QVERIFY(QDir().mkpath(folder()));
    for (const QString& file : QDir(IE_TRANSLATIONS).entryList({"*.qm"}))
        QVERIFY(QFile::copy(QString(IE_TRANSLATIONS) + "/" + file, folder() + "/" + file));
    QCOMPARE(speaking(), QStringList());
    QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageEnglish);
}

void TranslationsLoadTest::allFive()
{
    QVERIFY(LoadTranslations("CH"));
    QCOMPARE(speaking(), QStringList({"Import_Export_Features", "qt", "StyledCtl", "DevListMgr"}));
    QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageChinese);
    QVERIFY(LoadTranslations("CH")); // a second time, as with an argument at the start
    QVERIFY(LoadTranslations("ENG"));
    QCOMPARE(speaking(), QStringList());
}

void TranslationsLoadTest::theFirstThatIsMissingEndsIt_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("own") << "Import_Export_Features" << QStringList();
    QTest::newRow("qt") << "qt" << QStringList({"Import_Export_Features"});
    QTest::newRow("widgets") << "StyledCtl" << QStringList({"Import_Export_Features", "qt"});
    QTest::newRow("tools") << "SuiteTools" << QStringList({"Import_Export_Features", "qt", "StyledCtl"});
    QTest::newRow("tree") << "DevListMgr" << QStringList({"Import_Export_Features", "qt", "StyledCtl"});
}

void TranslationsLoadTest::theFirstThatIsMissingEndsIt()
{
    QFETCH(QString, missing);
    QFETCH(QStringList, left);
    QVERIFY(QFile::remove(fileOf(missing)));
    QVERIFY(!LoadTranslations("CH"));
    QCOMPARE(speaking(), left);
    QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageChinese); // chosen before the files
}

void TranslationsLoadTest::englishRemovesThemAll()
{
    QVERIFY(LoadTranslations("CH"));
    QVERIFY(LoadTranslations("ENG"));
    QCOMPARE(speaking(), QStringList());
    QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageEnglish);
}

void TranslationsLoadTest::otherWordsDoNothing_data()
{
    QTest::addColumn<QString>("word");
    for (const char* word : {"", "eng", "ch", "CHS", "English"})
        QTest::newRow(*word ? word : "none") << word;
}

void TranslationsLoadTest::otherWordsDoNothing()
{
    QFETCH(QString, word);
    QVERIFY(LoadTranslations(word));
    QCOMPARE(speaking(), QStringList());
    QVERIFY(LoadTranslations("CH"));
    QVERIFY(LoadTranslations(word));
    QCOMPARE(speaking().size(), 4);
    QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageChinese);
}

QTEST_MAIN(TranslationsLoadTest)
#include "translations_load_test.moc"
