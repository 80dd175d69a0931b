// The log as a configuration writes it. The bytes are those that log4j's rules give; filters in the field
// depend on them.
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QMessageLogger>
#include <QTemporaryDir>
#include <QtTest>

#include <thread>

namespace
{

const char* const head = "log4j.rootLogger=INFO, f\n"
                         "log4j.appender.f=org.apache.log4j.RollingFileAppender\n"
                         "log4j.appender.f.File=${VELA_LOG_FOLDER}/l\n"
                         "log4j.appender.f.MaxFileSize=1MB\n"
                         "log4j.appender.f.MaxBackupIndex=2\n"
                         "log4j.appender.f.layout=org.apache.log4j.PatternLayout\n"
                         "log4j.appender.f.layout.ConversionPattern=%p %m%n\n";

// A log of its own for each test: a folder, and the handler that was there before.
class Logged
{
public:
    Logged() : m_before(qInstallMessageHandler(nullptr))
    {
        qInstallMessageHandler(m_before);
        qputenv("VELA_USER_DATA", m_folder.path().toUtf8());
        QDir().mkpath(m_folder.path() + "/Log");
    }
    ~Logged() { end(); }

    void begin(const QByteArray& configuration)
    {
        const QString name = m_folder.path() + "/log.conf";
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(configuration) == configuration.size());
        file.close();
        VELAInterface::initLog4qtConfig(name);
    }
    void end() { qInstallMessageHandler(m_before); }

    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(m_folder.path() + "/Log/" + name);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    // Null for a file that is not there.
    QByteArray bytes(const QString& name) const
    {
        QFile file(m_folder.path() + "/Log/" + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() + "" : QByteArray();
    }
    QStringList names() const { return QDir(m_folder.path() + "/Log").entryList(QDir::Files, QDir::Name); }

private:
    QTemporaryDir m_folder;
    QtMessageHandler m_before;
};

void sayOneOfEach()
{
    const QMessageLogger logger("..\\..\\src\\File", 17, "void Class::function(int)");
    logger.debug("d");
    logger.info("i");
    logger.warning("w");
    logger.critical("c");
}

} // namespace

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

    void whatCannotBeUsedLeavesTheLoggerAsItIs_data()
    {
        QTest::addColumn<QByteArray>("configuration");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no file") << QByteArray(head).replace(".File=", ".Other=");
        QTest::newRow("another class") << QByteArray(head).replace("RollingFileAppender", "SyslogAppender");
        QTest::newRow("a folder in its place") << QByteArray(head).replace("FOLDER}/l", "FOLDER}");
    }
    void whatCannotBeUsedLeavesTheLoggerAsItIs()
    {
        QFETCH(QByteArray, configuration);
        static QString seen;
        const QtMessageHandler before = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString& text) { seen = text; });
        {
            Logged log;
            log.begin(configuration);
            qCritical("still here");
        }
        qInstallMessageHandler(before);
        QCOMPARE(seen, QString("still here"));
    }

    void theProgramsOwnLinesHaveTimeLevelThreadPlaceAndText()
    {
        Logged log;
        const QDateTime begin = QDateTime::currentDateTime();
        VELAInterface::initLog4qtConfig(IE_LOG_CONFIG);
        QMessageLogger("..\\..\\some\\File", 17, "void Class::function(int)").critical()
            << QString("a \"text\"");
        QMessageLogger().info("plain %d", 5);
        QMessageLogger("a", 1, "main").debug("below the level");
        log.end();

        const QList<QByteArray> lines = log.bytes("Import_Export_Features.log").split('\n');
        QCOMPARE(lines.size(), 3);
        const QByteArray time = lines[0].left(23);
        const QDateTime told = QDateTime::fromString(time, "yyyy-MM-dd HH:mm:ss.zzz");
        QVERIFY2(told >= begin.addMSecs(-1) && told <= QDateTime::currentDateTime(), time);
        const auto thread = reinterpret_cast<quintptr>(QThread::currentThreadId());
        const QByteArray id = " [0x" + QByteArray::number(thread, 16) + "] ";
        QCOMPARE(lines[0].mid(23), " ERROR" + id + "..\\..\\some\\File:17 function - \"a \\\"text\\\"\"");
        QCOMPARE(lines[1].mid(23), " INFO " + id + ":0  - plain 5");
        QCOMPARE(lines[2], QByteArray());
    }

    void patternsAreWrittenAsLog4jHasThem_data()
    {
        QTest::addColumn<QByteArray>("pattern");
        QTest::addColumn<QByteArray>("lines");
        QTest::newRow("padded")
            << QByteArray("%5p|%-7p|%c|%%|%n")
            << QByteArray(" INFO|INFO   |root|%|\n WARN|WARN   |root|%|\nERROR|ERROR  |root|%|\n");
        QTest::newRow("cut") << QByteArray("%.2p|%-5.2p|%20.3p|%10m|%-4m|%n")
                             << QByteArray("FO|FO|NFO|         i|i   |\nRN|RN|ARN|         w|w   |\n"
                                           "OR|OR|ROR|         c|c   |\n");
        const QByteArray blanks(1000 - 5, ' ');
        QTest::newRow("wider than anybody means")
            << QByteArray("%99999999p%99999999999p%-99999999.99999999999m")
            << blanks + " INFO" + blanks + " INFOi" + QByteArray(999, ' ') + blanks + " WARN" + blanks +
                   " WARNw" + QByteArray(999, ' ') + blanks + "ERROR" + blanks + "ERRORc" +
                   QByteArray(999, ' ');
        QTest::newRow("place") << QByteArray("%F:%L %M;")
                               << QByteArray("..\\..\\src\\File:17 function;").repeated(3);
        QTest::newRow("unknown") << QByteArray("%q%h%m%") << QByteArray("%q%hi%%q%hw%%q%hc%");
        QTest::newRow("escapes") << QByteArray("a\\tb\\nc%m\\\\x%n")
                                 << QByteArray("a\tb\ncix\na\tb\ncwx\na\tb\nccx\n");
        QTest::newRow("variable") << QByteArray("${VELA_NONE}${x${y}%m${log4j.appender.f.MaxFileSize}%n")
                                  << QByteArray("i1MB\nw1MB\nc1MB\n");
        QTest::newRow("blanks at the end") << QByteArray("  %m  ") << QByteArray("i  w  c  ");
    }
    void patternsAreWrittenAsLog4jHasThem()
    {
        QFETCH(QByteArray, pattern);
        QFETCH(QByteArray, lines);
        Logged log;
        log.begin(QByteArray(head).replace("%p %m%n", pattern));
        sayOneOfEach();
        log.end();
        QCOMPARE(log.bytes("l"), lines);
    }

    void datesAreWrittenByTheirLetters()
    {
        Logged log;
        log.begin(
            QByteArray(head).replace("%p %m%n", "%d|%d{ISO8601}|%d{ABSOLUTE}|%d{y-MM-dd HH.mm.ss SSS}%n"));
        qInfo("x");
        log.end();
        const QList<QByteArray> parts = log.bytes("l").trimmed().split('|');
        QCOMPARE(parts.size(), 4);
        QVERIFY(QRegularExpression(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d,\d{3}$)").match(parts[0]).hasMatch());
        QCOMPARE(parts[1], parts[0]);
        QCOMPARE(parts[2], parts[0].mid(11));
        QCOMPARE(QByteArray(parts[3]).replace('.', ':').replace(19, 1, ","), parts[0]);
    }

    void theBareNameIsTakenOutOfTheSignature_data()
    {
        QTest::addColumn<QByteArray>("signature");
        QTest::addColumn<QByteArray>("name");
        for (const auto& [signature, name] : std::initializer_list<std::pair<const char*, const char*>>{
                 {"int main(int, char**)", "main"},
                 {"main", "main"},
                 {"", ""},
                 {"Class::~Class()", "~Class"},
                 {"static std::map<int, std::pair<A, B> > NS::Cls<T>::f(std::function<void (int)>) const",
                  "f"},
                 {"bool VELAInterface::operator()(const QString&) const", "operator"},
                 {"operator bool", "bool"},
                 {"void (anonymous namespace)::Foo::g()", ""}, // odd, and meant to stay
                 {"std::map<int, int> f(int)", "map<int, int> f"},
                 {"const char *f(int)", "char *f"},
                 {"void a :: b (int)", " b "},
                 {"a:::b()", "b"},
                 {"%n%m", "%n%m"}})
            QTest::newRow(signature) << QByteArray(signature) << QByteArray(name);
    }
    void theBareNameIsTakenOutOfTheSignature()
    {
        QFETCH(QByteArray, signature);
        QFETCH(QByteArray, name);
        Logged log;
        log.begin(QByteArray(head).replace("%p %m%n", "%M"));
        QMessageLogger("f", 1, signature.constData()).info("x");
        log.end();
        QCOMPARE(log.bytes("l"), name.isNull() ? QByteArray("") : name);
    }

    void levelsDecideWhatIsWritten_data()
    {
        QTest::addColumn<QByteArray>("root");
        QTest::addColumn<QByteArray>("more");
        QTest::addColumn<QByteArray>("lines");
        const QByteArray all("DEBUG d\nINFO i\nWARN w\nERROR c\n");
        const QByteArray warnings = all.mid(all.indexOf("WARN"));
        QTest::newRow("small") << QByteArray("warn,f") << QByteArray() << warnings;
        QTest::newRow("blanks") << QByteArray(" WARN , f ") << QByteArray() << warnings;
        QTest::newRow("none") << QByteArray(", f") << QByteArray() << all;
        QTest::newRow("unknown") << QByteArray("LOUD, f") << QByteArray() << all;
        QTest::newRow("trace") << QByteArray("TRACE, f") << QByteArray() << all;
        QTest::newRow("off") << QByteArray("OFF, f") << QByteArray() << QByteArray("");
        QTest::newRow("fatal") << QByteArray("FATAL, f") << QByteArray() << QByteArray("");
        QTest::newRow("twice") << QByteArray("WARN, f, g, f") << QByteArray() << warnings;
        QTest::newRow("file's") << QByteArray("ALL, f") << QByteArray("log4j.appender.f.Threshold=WARN\n")
                                << warnings;
        QTest::newRow("all files'") << QByteArray("ALL, f") << QByteArray("log4j.threshold=WARN\n")
                                    << warnings;
    }
    void levelsDecideWhatIsWritten()
    {
        QFETCH(QByteArray, root);
        QFETCH(QByteArray, more);
        QFETCH(QByteArray, lines);
        Logged log;
        log.begin(QByteArray(head).replace("=INFO, f", "=" + root) + more);
        sayOneOfEach();
        log.end();
        QCOMPARE(log.bytes("l"), lines);
    }

    void linesOfTheConfigurationAreRead_data()
    {
        QTest::addColumn<QByteArray>("last");
        QTest::addColumn<QByteArray>("written");
        const QByteArray key("log4j.appender.f.layout.ConversionPattern");
        QTest::newRow("tab") << key + "\t%m;" << QByteArray("i;w;c;");
        QTest::newRow("blanks around")
            << "\t" + key + " = %m = x # y;" << QByteArray("i = x # y;w = x # y;c = x # y;");
        QTest::newRow("colon") << key + ":%m;" << QByteArray("i;w;c;");
        QTest::newRow("goes on") << key + "=%m\\\n   ;%m" << QByteArray("i;iw;wc;c");
        QTest::newRow("comments") << "# " + key + "=x\n  ! " + key + "=x\n\n" + key + "=%m;"
                                  << QByteArray("i;w;c;");
        QTest::newRow("CR LF") << key + "=%m;\r\n" << QByteArray("i;w;c;");
    }
    void linesOfTheConfigurationAreRead()
    {
        QFETCH(QByteArray, last);
        QFETCH(QByteArray, written);
        Logged log;
        log.begin(head + last);
        sayOneOfEach();
        log.end();
        QCOMPARE(log.bytes("l"), written);
    }

    void aFileIsRolledOnceItHasItsSize_data()
    {
        QTest::addColumn<QByteArray>("size");
        QTest::addColumn<QByteArray>("backups");
        QTest::addColumn<QByteArray>("files"); // name and size of each
        QTest::newRow("two") << QByteArray("100") << QByteArray("2") << QByteArray("l 33 l.1 110 l.2 110 ");
        QTest::newRow("small") << QByteArray("50") << QByteArray("2") << QByteArray("l 33 l.1 55 l.2 55 ");
        QTest::newRow("a line") << QByteArray("11") << QByteArray("1") << QByteArray("l 11 l.1 11 ");
        QTest::newRow("none is one") << QByteArray("100") << QByteArray("0") << QByteArray("l 33 l.1 110 ");
        QTest::newRow("kB") << QByteArray("1Kb") << QByteArray("1") << QByteArray("l 363 ");
        QTest::newRow("never") << QByteArray("-5") << QByteArray("1") << QByteArray("l 363 ");
        QTest::newRow("no size") << QByteArray("") << QByteArray("1") << QByteArray("l 363 ");
    }
    void aFileIsRolledOnceItHasItsSize()
    {
        QFETCH(QByteArray, size);
        QFETCH(QByteArray, backups);
        QFETCH(QByteArray, files);
        Logged log;
        log.begin(
            QByteArray(head).replace("1MB", size).replace("Index=2", "Index=" + backups).replace("%p ", ""));
        for (int i = 0; i < 33; ++i)
            qInfo("0123456789");
        log.end();
        QByteArray seen;
        for (const QString& name : log.names())
            seen += name.toUtf8() + ' ' + QByteArray::number(log.bytes(name).size()) + ' ';
        QCOMPARE(seen, files);
    }

    // What an earlier start left behind counts; a file behind a gap in the numbers stays.
    void theFileOfAnEarlierStartIsGoneOnWith()
    {
        for (const int before : {99, 100}) {
            Logged log;
            log.put("l", QByteArray(before, 'x'));
            log.put("l.2", "two");
            log.begin(QByteArray(head).replace("1MB", "100").replace("Index=2", "Index=4"));
            qInfo("i");
            log.end();
            const QByteArray old(before, 'x');
            QCOMPARE(log.bytes("l"), before < 100 ? old + "INFO i\n" : QByteArray("INFO i\n"));
            QCOMPARE(log.bytes("l.1"), before < 100 ? QByteArray() : old);
            QCOMPARE(log.bytes("l.2"), QByteArray("two"));
        }
    }

    void appendFalseBeginsAnew_data()
    {
        QTest::addColumn<QByteArray>("word");
        QTest::addColumn<QByteArray>("left");
        QTest::newRow("false") << QByteArray("false") << QByteArray();
        QTest::newRow("FALSE") << QByteArray("FALSE") << QByteArray();
        QTest::newRow("true") << QByteArray("true") << QByteArray("old\n");
        QTest::newRow("unknown") << QByteArray("xx") << QByteArray("old\n");
    }
    void appendFalseBeginsAnew()
    {
        QFETCH(QByteArray, word);
        QFETCH(QByteArray, left);
        Logged log;
        log.put("l", "old\n");
        log.begin(head + QByteArray("log4j.appender.f.Append=") + word);
        qInfo("i");
        log.end();
        QCOMPARE(log.bytes("l"), left + "INFO i\n");
    }

    void textsAreUtf8WithLineFeedsWhateverTheSystem()
    {
        Logged log;
        log.begin(QByteArray(head).replace("FOLDER}/l", "FOLDER}/\xE7\x9B\xB8 \xE6\x9C\xBA/l"));
        qInfo().noquote() << QString::fromUtf8("\xE7\x9B\xB8\xE6\x9C\xBA\nsecond");
        log.end();
        QCOMPARE(log.bytes(QString::fromUtf8("\xE7\x9B\xB8 \xE6\x9C\xBA/l")),
                 QByteArray("INFO \xE7\x9B\xB8\xE6\x9C\xBA\nsecond\n"));
    }

    void severalFilesTakeTheSameLines()
    {
        Logged log;
        log.begin(QByteArray(head).replace("INFO, f", "INFO, f, g") +
                  "log4j.appender.g=org.apache.log4j.FileAppender\n"
                  "log4j.appender.g.File=${VELA_LOG_FOLDER}/g\n"
                  "log4j.appender.g.layout=org.apache.log4j.PatternLayout\n"
                  "log4j.appender.g.layout.ConversionPattern=%m;\n");
        sayOneOfEach();
        log.end();
        QCOMPARE(log.bytes("l"), QByteArray("INFO i\nWARN w\nERROR c\n"));
        QCOMPARE(log.bytes("g"), QByteArray("i;w;c;"));
    }

    void linesOfSeveralThreadsStayWhole()
    {
        Logged log;
        log.begin(QByteArray(head).replace("1MB", "1000").replace("Index=2", "Index=13"));
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([] {
                for (int k = 0; k < 100; ++k)
                    qInfo("0123456789");
            });
        for (std::thread& thread : threads)
            thread.join();
        log.end();
        QByteArray all;
        for (const QString& name : log.names())
            all += log.bytes(name);
        QCOMPARE(all, QByteArray("INFO 0123456789\n").repeated(400));
    }
};

QTEST_GUILESS_MAIN(LogConfigTest)
#include "log_config_test.moc"
