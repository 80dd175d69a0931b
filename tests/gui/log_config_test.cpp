// The log as the program's own configuration writes it.
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QMessageLogger>
#include <QTemporaryDir>
#include <QtTest>

class LogConfigTest : public QObject
{
    Q_OBJECT

private slots:
    void aMissingFileLeavesTheLoggerAsItIs()
    {
        static QString seen;
        const QtMessageHandler before = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { seen = text; });
        VELAInterface::initLog4qtConfig("/nowhere/log.conf");
        qCritical("still here");
        qInstallMessageHandler(before);
        QCOMPARE(seen, QString("still here"));
    }

    void linesGoToAFileWithTimeLevelPlaceAndText()
    {
        QTemporaryDir folder;
        qputenv("VELA_USER_DATA", folder.path().toUtf8());
        const QtMessageHandler before = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(before);
        VELAInterface::initLog4qtConfig(IE_LOG_CONFIG);
        QMessageLogger("..\\..\\some\\File", 17, "void Class::function(int)").critical()
            << QString("a \"text\"");
        qInfo("plain");
        qInstallMessageHandler(before);

        QFile file(folder.path() + "/Log/Import_Export_Features.log");
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
        const QStringList lines = QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        const QRegularExpression first(
            R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} ERROR \[\w+\] \.\.\\\.\.\\some\\File:17 .* - "a \\"text\\""$)");
        QVERIFY2(first.match(lines[0]).hasMatch(), qPrintable(lines[0]));
        QVERIFY2(lines[0].contains("function"), qPrintable(lines[0]));
        QVERIFY2(lines[1].contains(" INFO ") && lines[1].endsWith(" - plain"), qPrintable(lines[1]));
    }
};

QTEST_GUILESS_MAIN(LogConfigTest)
#include "log_config_test.moc"
