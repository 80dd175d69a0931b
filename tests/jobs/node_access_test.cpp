// The jobs' operations on single nodes and on register memory.
#include "HandleFixture.h"

#include "jobs/nodes/NodeAccess.h"

#include <QTextCodec>

#include <limits>
#include <utility>

namespace
{

class NodeAccess : public HandleFixture
{
protected:
    ie::NodeAccess access{handle};
    // Without a connection.
    const KX_HANDLE none = nullptr;
    ie::NodeAccess closed{none};
    int code = 77;
};

constexpr int kDenied = static_cast<int>(KX_E_GC_ACCESS);
const QString kAccent = QString::fromUtf8("Gr\xC3\xB6\xC3\x9F"
                                          "e");

} // namespace

TEST_F(NodeAccess, GettersReadAndStoreSuccess)
{
    camera->setBool("B", true);
    bool boolean = false;
    EXPECT_TRUE(access.getBoolean("B", &boolean, &code));
    EXPECT_TRUE(boolean);
    EXPECT_EQ(code, 0);

    code = 77;
    camera->setEnumeration("E", 3, {1, 3, 5});
    KX_EnumValue enumeration = {};
    EXPECT_TRUE(access.getEnumeration("E", &enumeration, &code));
    EXPECT_EQ(enumeration.current, 3u);
    EXPECT_EQ(enumeration.supportedCount, 3u);
    EXPECT_EQ(enumeration.supported[2], 5u);
    EXPECT_EQ(code, 0);

    code = 77;
    camera->setFloat("F", 2.5f);
    KX_FloatValue floating = {};
    EXPECT_TRUE(access.getFloat("F", &floating, &code));
    EXPECT_EQ(floating.current, 2.5f);
    EXPECT_EQ(code, 0);

    code = 77;
    camera->setInteger("I", -5, -10, 10, 5);
    KX_IntegerValue integer = {};
    EXPECT_TRUE(access.getInteger("I", &integer, &code));
    EXPECT_EQ(integer.current, -5);
    EXPECT_EQ(integer.maximum, 10);
    EXPECT_EQ(integer.minimum, -10);
    EXPECT_EQ(integer.increment, 5);
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(logs().isEmpty());
}

TEST_F(NodeAccess, RecordsHaveTheSuitesLayout)
{
    EXPECT_EQ(offsetof(KX_IntegerValue, current), 0u);
    EXPECT_EQ(offsetof(KX_IntegerValue, maximum), 8u);
    EXPECT_EQ(offsetof(KX_IntegerValue, minimum), 16u);
    EXPECT_EQ(offsetof(KX_IntegerValue, increment), 24u);
    EXPECT_EQ(sizeof(KX_IntegerValue), 4 * 8 + 16 * 4u);
    EXPECT_EQ(offsetof(KX_EnumValue, current), 0u);
    EXPECT_EQ(offsetof(KX_EnumValue, supportedCount), 4u);
    EXPECT_EQ(offsetof(KX_EnumValue, supported), 8u);
    EXPECT_EQ(offsetof(KX_FloatValue, current), 0u);
    EXPECT_EQ(offsetof(KX_StringValue, maximumLength), 256u);
    EXPECT_EQ(sizeof(KX_StringValue), 256 + 8 + 2 * 4u);
    EXPECT_EQ(int(KX_AM_NOT_IMPLEMENTED), 0);
    EXPECT_EQ(int(KX_AM_NOT_AVAILABLE), 1);
    EXPECT_EQ(int(KX_AM_WRITE_ONLY), 2);
    EXPECT_EQ(int(KX_AM_READ_ONLY), 3);
    EXPECT_EQ(int(KX_AM_READ_WRITE), 4);
    EXPECT_EQ(int(KX_AM_UNDEFINED), 5);
    EXPECT_EQ(int(KX_AM_CYCLE_DETECTED), 6);
}

TEST_F(NodeAccess, TypedGettersFailSilently)
{
    failNode("N", KX_E_GC_ACCESS);
    bool boolean = false;
    KX_EnumValue enumeration = {};
    KX_FloatValue floating = {};
    KX_IntegerValue integer = {};
    EXPECT_FALSE(access.getBoolean("N", &boolean, &code));
    EXPECT_EQ(code, kDenied);
    code = 77;
    EXPECT_FALSE(access.getEnumeration("N", &enumeration, &code));
    EXPECT_EQ(code, kDenied);
    code = 77;
    EXPECT_FALSE(access.getFloat("N", &floating, &code));
    EXPECT_EQ(code, kDenied);
    code = 77;
    EXPECT_FALSE(access.getInteger("N", &integer, &code));
    EXPECT_EQ(code, kDenied);
    EXPECT_FALSE(access.getInteger("N", &integer, nullptr));
    EXPECT_TRUE(logs().isEmpty());
}

TEST_F(NodeAccess, WithoutAConnectionGettersLeaveEverythingAlone)
{
    bool boolean = true;
    KX_EnumValue enumeration = {};
    KX_FloatValue floating = {};
    KX_IntegerValue integer = {};
    QString text = "before";
    qint64 maximum = 11;
    EXPECT_FALSE(closed.getBoolean("N", &boolean, &code));
    EXPECT_FALSE(closed.getEnumeration("N", &enumeration, &code));
    EXPECT_FALSE(closed.getFloat("N", &floating, &code));
    EXPECT_FALSE(closed.getInteger("N", &integer, &code));
    EXPECT_FALSE(closed.getString("N", text, &maximum, &code));
    EXPECT_EQ(code, 77);
    EXPECT_EQ(text, QString("before"));
    EXPECT_EQ(maximum, 11);
    EXPECT_TRUE(trace().isEmpty());
}

TEST_F(NodeAccess, TypedGettersSendLatin1AndAllOthersLocal8Bit)
{
    KX_IntegerValue integer = {};
    KX_EnumValue enumeration = {};
    KX_FloatValue floating = {};
    bool boolean = false;
    QString text;
    access.getBoolean(kAccent, &boolean, nullptr);
    access.getEnumeration(kAccent, &enumeration, nullptr);
    access.getFloat(kAccent, &floating, nullptr);
    access.getInteger(kAccent, &integer, nullptr);
    EXPECT_EQ(callNames(), QByteArrayList({"Gr\xF6\xDF"
                                           "e",
                                           "Gr\xF6\xDF"
                                           "e",
                                           "Gr\xF6\xDF"
                                           "e",
                                           "Gr\xF6\xDF"
                                           "e"}));

    takeTrace();
    const auto callAllOthers = [&] {
        access.getString(kAccent, text, nullptr, nullptr);
        access.accessMode(kAccent, nullptr);
        access.setBoolean(kAccent, true, nullptr);
        access.setEnumeration(kAccent, 1, nullptr);
        access.setFloat(kAccent, 1, nullptr);
        access.setInteger(kAccent, 1, nullptr);
        access.setString(kAccent, "x", nullptr);
    };
    callAllOthers();
    for (const QByteArray& name : callNames())
        EXPECT_EQ(name, QByteArray("Gr\xC3\xB6\xC3\x9F"
                                   "e"));
    EXPECT_EQ(callNames().size(), 7);

    takeTrace(); // local 8-bit, not UTF-8: it follows the locale's codec
    QTextCodec* const codec = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    callAllOthers();
    QTextCodec::setCodecForLocale(codec);
    for (const QByteArray& name : callNames())
        EXPECT_EQ(name, QByteArray("Gr\xF6\xDF"
                                   "e"));
}

TEST_F(NodeAccess, StringsComeWithTheirMaximumLength)
{
    camera->setString("S", "text", 64);
    QString text = "before";
    qint64 maximum = 11;
    EXPECT_TRUE(access.getString("S", text, &maximum, &code));
    EXPECT_EQ(text, QString("text"));
    EXPECT_EQ(maximum, 64);
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(access.getString("S", text, nullptr, nullptr));
    EXPECT_EQ(tests::suiteCalls("char2QStringLocale"),
              QStringList({"char2QStringLocale(-1)", "char2QStringLocale(-1)"}));
    EXPECT_TRUE(tests::cameraViolations().isEmpty()); // the record came zeroed
}

TEST_F(NodeAccess, AFailedStringReadEmptiesTheTextAndLogs)
{
    failNode("S", KX_E_PARAMETER);
    QString text = "before";
    qint64 maximum = 11;
    EXPECT_FALSE(access.getString("S", text, &maximum, &code));
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(maximum, 11);
    EXPECT_EQ(code, -2147483644);
    EXPECT_EQ(logs(), QStringList({"log \"Operate Feature Failed; NodeName : S;  ErrorCode : -7ffffffc\""}));
}

TEST_F(NodeAccess, StatusesAreLoggedAsSignedHexadecimal)
{
    QString text;
    for (const KX_Status status : {0x1Au, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0x80000106u}) {
        failNode("S", status);
        access.getString("S", text, nullptr, nullptr);
    }
    const QString line = "log \"Operate Feature Failed; NodeName : S;  ErrorCode : %1\"";
    EXPECT_EQ(logs(), QStringList({line.arg("1a"), line.arg("7fffffff"), line.arg("-80000000"),
                                   line.arg("-1"), line.arg("-7ffffefa")}));
}

TEST_F(NodeAccess, AccessModeIsTheCamerasOwn)
{
    for (const KX_XML_AccessMode mode : {KX_AM_NOT_AVAILABLE, KX_AM_WRITE_ONLY, KX_AM_READ_WRITE}) {
        camera->setAccessMode("N", mode);
        code = 77;
        EXPECT_EQ(access.accessMode("N", &code), mode);
        EXPECT_EQ(code, 0);
    }
    EXPECT_TRUE(logs().isEmpty());
}

TEST_F(NodeAccess, AFailedAccessModeIsNotImplementedAndLogged)
{
    failNode("N", KX_E_GC_PROPERTY);
    EXPECT_EQ(access.accessMode("N", &code), KX_AM_NOT_IMPLEMENTED);
    EXPECT_EQ(code, static_cast<int>(KX_E_GC_PROPERTY));
    EXPECT_EQ(logs(), QStringList({"log \"Operate Feature Failed; NodeName : N;  ErrorCode : -7ffffefd\""}));
}

TEST_F(NodeAccess, AccessModeAsksTheLibraryEvenWithoutAConnection)
{
    EXPECT_EQ(closed.accessMode("N", &code), KX_AM_NOT_IMPLEMENTED);
    EXPECT_EQ(code, static_cast<int>(KX_E_HANDLE));
    EXPECT_EQ(trace(), QStringList({"GetNodeAccessMode N -> 80000000",
                                    "log \"Operate Feature Failed; NodeName : N;  ErrorCode : -80000000\""}));
}

TEST_F(NodeAccess, SettersWriteAndStoreSuccess)
{
    camera->setBool("B", false);
    camera->setEnumeration("E", 1, {1, 4294967295u});
    camera->setFloat("F", 0);
    camera->setInteger("I", 0);
    camera->setString("S", "");
    EXPECT_TRUE(access.setBoolean("B", true, &code));
    EXPECT_EQ(std::exchange(code, 77), 0);
    EXPECT_TRUE(access.setEnumeration("E", 4294967295u, &code));
    EXPECT_EQ(std::exchange(code, 77), 0);
    EXPECT_TRUE(access.setFloat("F", -0.5f, &code));
    EXPECT_EQ(std::exchange(code, 77), 0);
    EXPECT_TRUE(access.setInteger("I", std::numeric_limits<qint64>::min(), &code));
    EXPECT_EQ(std::exchange(code, 77), 0);
    EXPECT_TRUE(access.setString("S", "text", &code));
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(access.setString("S", "text", nullptr));
    EXPECT_EQ(trace(), QStringList({"SetBoolValue B true", "SetEnumValue E 4294967295",
                                    "SetFloatValue F -0.5", "SetIntValueEx I -9223372036854775808",
                                    "SetStringValue S text", "SetStringValue S text"}));
    EXPECT_EQ(tests::suiteCalls("CovertEncodeCharFromQString").value(0),
              QString("CovertEncodeCharFromQString(text, 255)"));
}

TEST_F(NodeAccess, SettersLogAndReportFailures)
{
    failNode("N", KX_E_GC_ACCESS);
    const auto expectFailure = [this](bool result) {
        EXPECT_FALSE(result);
        EXPECT_EQ(code, kDenied);
        EXPECT_EQ(logs(),
                  QStringList({"log \"Operate Feature Failed; NodeName : N;  ErrorCode : -7ffffefa\""}));
        takeTrace();
        code = 77;
    };
    expectFailure(access.setBoolean("N", true, &code));
    expectFailure(access.setEnumeration("N", 1, &code));
    expectFailure(access.setFloat("N", 1, &code));
    expectFailure(access.setInteger("N", 1, &code));
    expectFailure(access.setString("N", "x", &code));
}

TEST_F(NodeAccess, SettersNeedANameAndAConnection)
{
    const auto callAll = [this](ie::NodeAccess& on, const QString& name) {
        EXPECT_FALSE(on.setBoolean(name, true, &code));
        EXPECT_FALSE(on.setEnumeration(name, 1, &code));
        EXPECT_FALSE(on.setFloat(name, 1, &code));
        EXPECT_FALSE(on.setInteger(name, 1, &code));
        EXPECT_FALSE(on.setString(name, "x", &code));
    };
    callAll(access, "");
    callAll(closed, "N");
    EXPECT_EQ(code, 77);
    EXPECT_TRUE(trace().isEmpty());
}

TEST_F(NodeAccess, LongStringsAreCutTo255Bytes)
{
    camera->setString("S", "");
    EXPECT_TRUE(access.setString("S", QString(300, 'x'), &code));
    EXPECT_EQ(trace(), QStringList({"SetStringValue S " + QString(255, 'x')}));
}

TEST_F(NodeAccess, MemoryIsReadAndWrittenWhereItWasAsked)
{
    camera->setMemory(0x1004, QByteArray("\x01\x02\x03\x04", 4));
    char buffer[4] = {};
    EXPECT_TRUE(access.readMemory(0x1004, buffer, 4, &code));
    EXPECT_EQ(QByteArray(buffer, 4), QByteArray("\x01\x02\x03\x04", 4));
    EXPECT_EQ(code, 0);

    code = 77;
    char other[8] = {8, 7, 6, 5, 4, 3, 2, 1};
    EXPECT_TRUE(access.writeMemory(0x100001000, other, 8, &code));
    EXPECT_EQ(code, 0);
    EXPECT_EQ(trace(), QStringList({"ReadMemory 4100 4", "WriteMemory 4294971392 8 0807060504030201"}));
}

TEST_F(NodeAccess, FailedMemoryOperationsAreSilent)
{
    camera->addRule({"ReadMemory", KX_E_GC_ACCESS});
    camera->addRule({"WriteMemory", KX_E_CONNECTION_LOST});
    char buffer[4] = {};
    EXPECT_FALSE(access.readMemory(0, buffer, 4, &code));
    EXPECT_EQ(code, kDenied);
    EXPECT_FALSE(access.writeMemory(0, buffer, 4, &code));
    EXPECT_EQ(code, static_cast<int>(KX_E_CONNECTION_LOST));
    EXPECT_FALSE(access.writeMemory(0, buffer, 4, nullptr));
    EXPECT_TRUE(logs().isEmpty());
}

TEST_F(NodeAccess, MemoryOperationsNeedABufferAndAConnection)
{
    char buffer[4] = {};
    EXPECT_FALSE(access.readMemory(0, nullptr, 4, &code));
    EXPECT_FALSE(access.writeMemory(0, nullptr, 4, &code));
    EXPECT_FALSE(closed.readMemory(0, buffer, 4, &code));
    EXPECT_FALSE(closed.writeMemory(0, buffer, 4, &code));
    EXPECT_EQ(code, 77);
    EXPECT_TRUE(trace().isEmpty());
}
