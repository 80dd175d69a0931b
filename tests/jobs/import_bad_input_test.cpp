// Files that are broken, hostile or no files: a clear end, no harm to memory or time, and nothing written to
// the camera before the checks have passed.
#include "ImportFixture.h"

#include <QElapsedTimer>

#include <iostream>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

enum class Refusal
{
    NotOpened,
    NotLoaded,
    NoVersion,
    Mismatch
};

class ImportBadInput : public ImportFixture
{
protected:
    ImportBadInput()
    {
        camera->setInteger("F", 1);
        camera->setBool("B", false);
    }

    // The last import ended with that word to the user, and the camera was not written to.
    void expectRefused(Refusal refusal)
    {
        const QString open = "info 7 failed Failed to import features.";
        static const QMap<Refusal, QString> texts = {
            {Refusal::NotOpened, "Failed to open xml."},
            {Refusal::NotLoaded, "Failed to load xml."},
            {Refusal::NoVersion, " Possible version incompatibility."},
            {Refusal::Mismatch, " Camera models mismatch."}};
        EXPECT_EQ(infos(), QStringList({open + texts[refusal]}));
        expectNothingWritten();
        EXPECT_EQ(trace().mid(trace().size() - 3, 2), QStringList({"CloseDevice", "DestroyHandle"}));
        EXPECT_EQ(tests::livingHandles(), 0);
    }
    void expectNothingWritten()
    {
        EXPECT_EQ(trace().filter(QRegularExpression("^(Set|WriteMemory|ExecuteCommand|FeatureLoad)")),
                  QStringList());
    }
    void importOneEntry(const QByteArray& len, const QByteArray& entry)
    {
        importFeatures(registerFeature("R", {}, len, entry));
    }
};

const QByteArray kWriteF = plainFeature("F", "Integer", "2");
const QByteArray kFile = fittingFile(kWriteF + registerFeature("R", {}, "4", registerEntry("4096", "5")));

QByteArray utf16(const QByteArray& text, bool bigEndian)
{
    QByteArray bytes;
    for (const char c : text)
        bytes += bigEndian ? QByteArray("\0", 1) + c : c + QByteArray("\0", 1);
    return bytes;
}

} // namespace

TEST_F(ImportBadInput, NoTruncationOfAFileReachesTheCamera)
{
    import(kFile);
    ASSERT_EQ(writes().size(), 2);
    for (int size = 0; size < kFile.size(); ++size) {
        import(kFile.left(size));
        expectRefused(size == 0 ? Refusal::NotOpened : Refusal::NotLoaded);
        if (HasFailure())
            FAIL() << "cut to " << size;
    }
}

TEST_F(ImportBadInput, AByteOrderMarkIsDropped)
{
    import("\xEF\xBB\xBF" + kFile);
    EXPECT_EQ(camera->node("F").integer->current, 2);
    expectSilentEnd();
    import("\xEF\xBB\xBF");
    expectRefused(Refusal::NotOpened); // an empty text
}

TEST_F(ImportBadInput, OtherEncodingsDoNotLoad)
{
    import("\xFF\xFE" + utf16(kFile, false));
    expectRefused(Refusal::NotLoaded);
    import("\xFE\xFF" + utf16(kFile, true));
    expectRefused(Refusal::NotLoaded);
    import(utf16(kFile, false));
    expectRefused(Refusal::NotLoaded);
    import(utf16(kFile, true));
    expectRefused(Refusal::NotOpened); // begins with a zero byte
    import(QByteArray("\x1F\x8B\x08") + QByteArray(100, '\xA5'));
    expectRefused(Refusal::NotLoaded);
}

// What the declaration says of the encoding does not matter: the text is UTF-8.
TEST_F(ImportBadInput, TheDeclaredEncodingIsIgnored)
{
    camera->setString("S", "a");
    const QByteArray file = fittingFile(plainFeature("S", "StringReg", "\xC3\xA9"));
    for (const char* name : {"UTF-16", "ISO-8859-1", "nonsense"}) {
        camera->setString("S", "a");
        import(QByteArray(file).replace("UTF-8", name));
        EXPECT_EQ(writes().size(), 1) << name;
        EXPECT_EQ(camera->node("S").text->current, std::string("\xC3\xA9")) << name;
    }
}

TEST_F(ImportBadInput, ATextEndsAtItsFirstZeroByte)
{
    import(kFile + QByteArray("\0<broken", 8));
    EXPECT_EQ(camera->node("F").integer->current, 2);
    expectSilentEnd();
    camera->setInteger("F", 1);
    import(QByteArray(kFile).replace("<Type>", QByteArray("<Ty\0pe>", 7)));
    expectRefused(Refusal::NotLoaded);
    import(QByteArray("\0", 1) + kFile);
    expectRefused(Refusal::NotOpened);
}

TEST_F(ImportBadInput, BrokenUtf8IsReplacedAndNotFatal)
{
    importFeatures(plainFeature("F\xFF\xC3", "Integer", "2"));
    EXPECT_EQ(writes().size(), 11); // no such feature
    expectSilentEnd();
}

TEST_F(ImportBadInput, EntitiesThatMultiplyDoNotLoad)
{
    QByteArray bomb = "<!DOCTYPE r [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 30; ++i)
        bomb += "<!ENTITY a" + QByteArray::number(i) + " \"" +
                QByteArray("&a" + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
    bomb += "]>";
    const QByteArray root = "<FeaturesFile version=\"7.8.9\">";
    QElapsedTimer timer;
    timer.start();
    import(bomb + root + "&a29;</FeaturesFile>");
    expectRefused(Refusal::NotLoaded);
    import("<!DOCTYPE r [<!ENTITY a \"" + QByteArray(100000, 'a') + "\">]>" + root +
           QByteArray("&a;").repeated(100000) + "</FeaturesFile>");
    expectRefused(Refusal::NotLoaded);
    import("<!DOCTYPE r [<!ENTITY a \"&a;\">]>" + root + "&a;</FeaturesFile>");
    expectRefused(Refusal::NotLoaded);
    EXPECT_LT(timer.elapsed(), 10000);
}

// No entity brings another file's text in.
TEST_F(ImportBadInput, ForeignEntitiesAreNotFetched)
{
    QFile secret(folder.filePath("secret"));
    ASSERT_TRUE(secret.open(QIODevice::WriteOnly));
    secret.write("2");
    secret.close();
    import("<!DOCTYPE r [<!ENTITY a SYSTEM \"file://" + secret.fileName().toLocal8Bit() + "\">]>" +
           fittingFile(plainFeature("F", "Integer", "&a;")).mid(kFile.indexOf("<FeaturesFile")));
    EXPECT_EQ(camera->node("F").integer->current, 1);
    expectNothingWritten();
}

// Refused before the parser sees them: it would overflow the thread's stack.
TEST_F(ImportBadInput, DeepNestingDoesNotLoad)
{
    const auto nested = [](int levels) {
        return QByteArray("<a>").repeated(levels) + QByteArray("</a>").repeated(levels);
    };
    importFeatures(nested(998)); // 1,000 with the root and <Features>
    expectSilentEnd();
    importFeatures(nested(999));
    expectRefused(Refusal::NotLoaded);
    for (const int levels : {100000, 1000000}) {
        importFeatures(nested(levels));
        expectRefused(Refusal::NotLoaded);
        importFeatures(QByteArray("<a>").repeated(levels)); // not well-formed either
        expectRefused(Refusal::NotLoaded);
    }
}

TEST_F(ImportBadInput, DeepTextInAValueIsItsWholeText)
{
    importFeatures("<Feature><Name>F</Name><Type>Integer</Type><Value>" + QByteArray("<a>").repeated(990) +
                   "2" + QByteArray("</a>").repeated(990) + "</Value></Feature>");
    EXPECT_EQ(writes(), QStringList({"SetIntValueEx F 2"}));
}

TEST_F(ImportBadInput, ManyFeaturesTakeLinearTime)
{
    constexpr int kMany = 200000;
    QByteArray features;
    for (int i = 0; i < kMany; ++i)
        features += plainFeature("F", "Integer", "1");
    QElapsedTimer timer;
    timer.start();
    importFeatures(features);
    EXPECT_LT(timer.elapsed(), 30000);
    EXPECT_EQ(recorder.calls("GetIntValueEx").size(), kMany);
    expectNothingWritten();
}

TEST_F(ImportBadInput, AHugeValueIsCutAndNotFatal)
{
    camera->setString("S", "a");
    importFeatures(plainFeature("S", "StringReg", QByteArray(100 * 1000 * 1000, 'x')));
    EXPECT_EQ(camera->node("S").text->current, std::string(255, 'x'));
    EXPECT_EQ(recorder.calls("SetStringValue").size(), 1);
    expectSilentEnd();
}

TEST_F(ImportBadInput, HugeNumbersAreZeroOrInfinite)
{
    camera->setFloat("D", 1);
    importFeatures(plainFeature("F", "Integer", QByteArray(10 * 1000 * 1000, '9')) +
                   plainFeature("D", "Float", QByteArray(10 * 1000 * 1000, '9')));
    EXPECT_EQ(count("SetIntValueEx F 0"), 11); // as often as the other one fails
    EXPECT_EQ(count("SetFloatValue D inf -> 80000102"), 11);
    expectSilentEnd();
}

// Of a hundred million values the block takes two; the rest is not even taken apart.
TEST_F(ImportBadInput, AHugeRegisterTextIsReadAsFarAsTheBlockReaches)
{
    camera->afterWrite(0x1000, [](tests::ScriptedDevice& self) { self.loseConnection(); });
    importOneEntry("8", registerEntry("4096", "1,2" + QByteArray(100 * 1000 * 1000, ',')));
    EXPECT_EQ(camera->memory(0x1000, 16), QByteArray("\x01\0\0\0\x02\0\0\0\0\0\0\0\0\0\0\0", 16));
    expectSilentEnd();
}

TEST_F(ImportBadInput, AttributesWithoutValuesDoNotLoad)
{
    for (const char* root :
         {"<FeaturesFile version>", "<FeaturesFile version=>", "<FeaturesFile version=7.8.9>",
          "<FeaturesFile version=\"7.8.9\" version=\"7.8.9>"}) {
        import(QByteArray(root) + "</FeaturesFile>");
        expectRefused(Refusal::NotLoaded);
    }
    importFeatures("<ComplexFeature name len=\"4\"/>");
    expectRefused(Refusal::NotLoaded);
}

TEST_F(ImportBadInput, OtherDocumentsAreNotTaken)
{
    import("<html/>");
    expectRefused(Refusal::NoVersion);
    import("<?xml version=\"1.0\"?><a version=\"1\"/>");
    expectRefused(Refusal::Mismatch);
    for (const char* text : {"PK\x03\x04", "{}", " ", "\n", "<!-- -->", "<?xml version=\"1.0\"?>"}) {
        import(text);
        expectRefused(Refusal::NotLoaded);
    }
    import(kFile + kFile);
    expectRefused(Refusal::NotLoaded);
}

TEST_F(ImportBadInput, LengthsThatAreNoneReachTheLibraryWhichRefusesThem)
{
    // Zero and what is no number; a negative length has no words.
    const QByteArray kMinusFour = "0xFFFFFFFFFFFFFFFC";
    for (const QByteArray& length : {QByteArray("0"), QByteArray("-4"), QByteArray("junk"), kMinusFour,
                                     QByteArray("99999999999999999999")}) {
        importOneEntry(length, registerEntry("4096", "1,2,3,4") + registerEntry("4096", "1", "to=\"5\""));
        const QString call = QString("ReadMemory 4096 %1").arg(length == kMinusFour ? -4 : 0);
        EXPECT_EQ(count(call + " -> 80000004"), 22) << length.constData();
        EXPECT_EQ(recorder.calls("WriteMemory").size(), 22) << length.constData();
        EXPECT_EQ(camera->memory(0x1000, 16), QByteArray(16, '\0'));
        expectSilentEnd();
    }
}

TEST_F(ImportBadInput, LengthsThatDifferFromTheValuesNeverLeaveTheBuffer)
{
    QByteArray values = "1";
    for (int i = 2; i <= 1000; ++i)
        values += ",4294967295";
    for (int length = 1; length <= 520; ++length) {
        camera->setMemory(0x1000, QByteArray(1024, '\0'));
        importOneEntry(QByteArray::number(length), registerEntry("4096", values));
        EXPECT_EQ(camera->memory(0x1000 + length, 8), QByteArray(8, '\0')) << length;
        EXPECT_EQ(worker.ErrorCode(), 0u);
    }
}

// Formulas and texts that would multiply are not worked out; nobody asks for the result.
TEST_F(ImportBadInput, AFormulaThatGrowsWithoutBoundIsNotComputed)
{
    const QByteArray from = "to=\"5\" from=\"" + QByteArray("TO+").repeated(300000) + "1\"";
    camera->afterWrite(0x1000, [](tests::ScriptedDevice& self) { self.loseConnection(); });
    camera->setMemory(0x1000, QByteArray(65536, '\xFF'));
    importOneEntry("65536", registerEntry("4096", "1", from));
    EXPECT_EQ(camera->word(0x1000), 5u);
    EXPECT_TRUE(tests::suiteCalls("Compute").isEmpty());
    expectSilentEnd();
}

TEST_F(ImportBadInput, AHostileFormulaIsOnlyAFailedComputation)
{
    for (const QByteArray& formula :
         {QByteArray("(").repeated(100000), QByteArray("1/0"), QByteArray("TO"),
          QByteArray("-").repeated(100000), QByteArray("2**99999**99999"), QByteArray("%1%2%n")}) {
        camera->setWord(0x1000, 0);
        importOneEntry("4", registerEntry("4096", "1", "to=\"5\" from=\"" + formula + "\""));
        EXPECT_EQ(camera->word(0x1000), 0x05000000u);
        EXPECT_EQ(tests::suiteCalls("Compute").size(), 1);
        tests::resetSuiteTools();
        expectSilentEnd();
    }
}

TEST_F(ImportBadInput, AddressesBeyond32BitsGoToTheLibraryAsTheyAre)
{
    const QList<QPair<QByteArray, qint64>> addresses = {
        {"0x100000000", 0x100000000}, {"4294967296", 4294967296}, {"0x7FFFFFFFFFFFFFFC", 0x7FFFFFFFFFFFFFFC},
        {"0xFFFFFFFFFFFFFFFC", -4},   {"0x10000000000000000", 0}, {"-4", 0}};
    for (const auto& [text, address] : addresses) {
        importOneEntry("4", registerEntry(text, "0"));
        EXPECT_EQ(applied(), QStringList({QString("ReadMemory %1 4").arg(address)})) << text.constData();
    }
}

TEST_F(ImportBadInput, AFolderIsNoFile)
{
    importPath(folder.path());
    expectRefused(Refusal::NotOpened);
    importPath("");
    expectRefused(Refusal::NotOpened);
    importPath(QString(5000, 'x'));
    expectRefused(Refusal::NotOpened);
}

TEST_F(ImportBadInput, DevicesAreNoFilesAndNobodyWaitsForThem)
{
    const QString fifo = folder.filePath("fifo");
    ASSERT_EQ(mkfifo(fifo.toLocal8Bit().constData(), 0600), 0);
    const QString link = folder.filePath("link");
    ASSERT_TRUE(QFile::link("/dev/zero", link));
    for (const QString& path : {fifo, link, QString("/dev/zero"), QString("/dev/full"), QString("/dev/null"),
                                QString("/proc/self/fd"), QString("/proc/self/maps/x")}) {
        importPath(path);
        expectRefused(Refusal::NotOpened);
    }
}

TEST_F(ImportBadInput, AFileThatMayNotBeReadIsNotOpened)
{
    if (geteuid() == 0) {
        std::cout << "SKIPPED: root reads everything\n";
        return;
    }
    QFile file(source());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(kFile);
    file.close();
    ASSERT_TRUE(file.setPermissions({}));
    importPath(source());
    expectRefused(Refusal::NotOpened);
}

// The camera is opened before the file.
TEST_F(ImportBadInput, AFileThatVanishesWhileTheCameraIsOpenedIsNotOpened)
{
    tests::setCallHook([this](const QByteArray&, const tests::TraceEntry& call) {
        if (call.operation == "OpenDevice")
            QFile::remove(source());
    });
    import(kFile);
    expectRefused(Refusal::NotOpened);
}

TEST_F(ImportBadInput, AFileThatVanishesBehindTheChecksHasBeenRead)
{
    tests::setCallHook([this](const QByteArray&, const tests::TraceEntry& call) {
        if (call.operation == "GetEnumValue")
            QFile::remove(source());
    });
    import(kFile);
    EXPECT_EQ(writes().size(), 2);
    expectSilentEnd();
}

TEST_F(ImportBadInput, AFileOfMoreThanHalfAGigabyteIsNotOpened)
{
    QFile file(source());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_TRUE(file.resize(qint64(5) << 30)); // holes only
    file.close();
    importPath(source());
    expectRefused(Refusal::NotOpened);
}

// Whatever byte of a file is another one: an end, and no write unless the checks have passed.
TEST_F(ImportBadInput, ChangedBytesNeverReachAnUncheckedCamera)
{
    const QByteArray replacements("\0<>&\"/ \xFF", 8);
    for (int i = 0; i < kFile.size(); ++i) {
        for (const char replacement : replacements) {
            QByteArray file = kFile;
            file[i] = replacement;
            import(file);
            ASSERT_EQ(trace().last(), "end 7 2 " + source() + "/Cam_S1.fpk");
            const QStringList events = trace();
            const int checked = events.indexOf("GetStringValue DeviceFirmwareVersion");
            const int written = events.indexOf(QRegularExpression("^(Set\\w+|WriteMemory) .*"));
            ASSERT_TRUE(written < 0 || (checked >= 0 && checked < written)) << i << file.constData();
            if (!infos().isEmpty())
                expectNothingWritten();
        }
    }
}
