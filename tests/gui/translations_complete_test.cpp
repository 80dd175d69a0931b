// Every text of the sources stands in the translation sources, and none lacks its Chinese.
#include <QDomDocument>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace
{

using Messages = QMap<QString, QString>; // "context: text" -> translation; empty when there is none

Messages messagesOf(const QString& path)
{
    QFile file(path);
    QDomDocument document;
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return {};
    Messages messages;
    const QDomNodeList contexts = document.elementsByTagName("context");
    for (int i = 0; i < contexts.size(); ++i) {
        const QDomElement context = contexts.at(i).toElement();
        const QString name = context.firstChildElement("name").text();
        for (QDomElement message = context.firstChildElement("message"); !message.isNull();
             message = message.nextSiblingElement("message")) {
            const QDomElement translation = message.firstChildElement("translation");
            const bool finished = !translation.hasAttribute("type");
            messages[name + ": " + message.firstChildElement("source").text()] =
                finished ? translation.text() : QString();
        }
    }
    return messages;
}

} // namespace

class TranslationsCompleteTest : public QObject
{
    Q_OBJECT

private slots:
    void everyTextHasItsChinese_data()
    {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("file");
        QTest::newRow("program") << "VELA_Import_Export_Features"
                                 << "Import_Export_Features_zh_CN.ts";
        QTest::newRow("widgets") << "StyledCtl"
                                 << "StyledCtl_zh_CN.ts";
        QTest::newRow("tools") << "SuiteTools"
                               << "SuiteTools_zh_CN.ts";
        QTest::newRow("tree") << "DevListMgr"
                              << "DevListMgr_zh_CN.ts";
    }

    void everyTextHasItsChinese()
    {
        QFETCH(QString, folder);
        QFETCH(QString, file);
        const QString sources = QString(IE_SOURCES) + "/" + folder;
        const Messages kept = messagesOf(sources + "/Translation/" + file);
        for (auto it = kept.begin(); it != kept.end(); ++it)
            QVERIFY2(!it.value().isEmpty(), qPrintable(it.key()));

        QTemporaryDir temporary;
        const QString fresh = temporary.filePath("fresh.ts");
        QCOMPARE(QProcess::execute(IE_LUPDATE, {"-silent", "-locations", "none", sources, "-ts", fresh}), 0);
        const QStringList texts = messagesOf(fresh).keys();
        QVERIFY(!texts.isEmpty());
        for (const QString& text : texts)
            QVERIFY2(kept.contains(text), qPrintable(text));
        for (const QString& text : kept.keys())
            QVERIFY2(texts.contains(text), qPrintable("no longer in the sources: " + text));
    }

    void theWindowsTitleIsExactlyThis()
    {
        const Messages kept = messagesOf(
            QString(IE_SOURCES) + "/VELA_Import_Export_Features/Translation/Import_Export_Features_zh_CN.ts");
        QCOMPARE(kept.value("MainWidget: Import/Export Features"), QString("导入/导出属性"));
    }
};

QTEST_GUILESS_MAIN(TranslationsCompleteTest)
#include "translations_complete_test.moc"
