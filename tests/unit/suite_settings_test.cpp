// What the suite tells its programs: versions, limits, folders, language, the announced record's type.
#include <SuiteTools/StructDeviceInfo.h>
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QMetaType>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QVariant>

using namespace VELAInterface;

namespace
{

// Qt asks for the system's language once per process, so each environment gets a process of its own.
QString languageUnder(const QMap<QString, QString>& variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"VELA_LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"})
        environment.remove(QLatin1String(name));
    for (auto it = variables.begin(); it != variables.end(); ++it)
        environment.insert(it.key(), it.value());
    environment.insert(QStringLiteral("PRINT_LANGUAGE"), QStringLiteral("1"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("/proc/self/exe"), QStringList());
    EXPECT_TRUE(process.waitForFinished());
    return QString::fromLatin1(process.readAllStandardOutput());
}

class Folders : public testing::TestWithParam<const char*>
{
protected:
    void TearDown() override { qunsetenv(GetParam()); }
    static QString path()
    {
        return std::string(GetParam()) == "VELA_PROGRAM_DATA" ? programDataPath() : userDataPath();
    }
};

} // namespace

TEST(Versions, haveThreeAndFourNumbers)
{
    EXPECT_EQ(softwareVersion(), QStringLiteral(EXPECTED_VERSION));
    EXPECT_EQ(curExeVersion(), QStringLiteral(EXPECTED_VERSION ".0"));
    const QRegularExpression four(QStringLiteral("\\A\\d+\\.\\d+\\.\\d+\\.\\d+\\z"));
    EXPECT_TRUE(four.match(curExeVersion()).hasMatch());
}

TEST(Limits, aBatchHoldsThirtyTwoCameras)
{
    EXPECT_EQ(toolsSupportNum(), 32u);
}

INSTANTIATE_TEST_SUITE_P(Both, Folders, testing::Values("VELA_PROGRAM_DATA", "VELA_USER_DATA"));

TEST_P(Folders, theEnvironmentComesFirst)
{
    qputenv(GetParam(), "/tmp/some where");
    EXPECT_EQ(path(), QStringLiteral("/tmp/some where"));
}

TEST_P(Folders, noTrailingSeparator)
{
    qputenv(GetParam(), "/tmp/a/b//");
    EXPECT_EQ(path(), QStringLiteral("/tmp/a/b"));
    qputenv(GetParam(), "/");
    EXPECT_EQ(path() + QStringLiteral("/LocalConfig.ini"), QStringLiteral("/LocalConfig.ini"));
}

TEST_P(Folders, elseTheStandardPlaceOfTheSuite)
{
    qunsetenv(GetParam());
    const QString standard = path();
    EXPECT_TRUE(QDir::isAbsolutePath(standard));
    EXPECT_TRUE(standard.endsWith(QStringLiteral("/VELA"))) << standard.toStdString();
    qputenv(GetParam(), "");
    EXPECT_EQ(path(), standard);
}

TEST(FoldersTogether, areTwoPlaces)
{
    qunsetenv("VELA_PROGRAM_DATA"); // the caller may have set them
    qunsetenv("VELA_USER_DATA");
    EXPECT_EQ(programDataPath(),
              QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/VELA");
    EXPECT_EQ(userDataPath(), QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/VELA");
    EXPECT_NE(programDataPath(), userDataPath());
}

TEST(FoldersTogether, oneVariableMovesOneFolder)
{
    qputenv("VELA_PROGRAM_DATA", "/tmp/shared");
    qputenv("VELA_USER_DATA", "/tmp/own");
    EXPECT_EQ(programDataPath(), QStringLiteral("/tmp/shared"));
    EXPECT_EQ(userDataPath(), QStringLiteral("/tmp/own"));
    qunsetenv("VELA_PROGRAM_DATA");
    qunsetenv("VELA_USER_DATA");
}

TEST(Language, theSuitesOwnVariableComesFirst)
{
    EXPECT_EQ(languageUnder({{"VELA_LANGUAGE", "CH"}, {"LC_ALL", "en_US.UTF-8"}}), QStringLiteral("CH"));
    EXPECT_EQ(languageUnder({{"VELA_LANGUAGE", "ENG"}, {"LC_ALL", "zh_CN.UTF-8"}}), QStringLiteral("ENG"));
}

TEST(Language, otherValuesOfItDoNotCount)
{
    for (const char* value : {"", "ch", "EN", "eng", "CHN", " CH"}) {
        const QString text = QString::fromLatin1(value);
        EXPECT_EQ(languageUnder({{"VELA_LANGUAGE", text}, {"LC_ALL", "en_US.UTF-8"}}), QStringLiteral("ENG"))
            << value;
        EXPECT_EQ(languageUnder({{"VELA_LANGUAGE", text}, {"LC_ALL", "zh_CN.UTF-8"}}), QStringLiteral("CH"))
            << value;
    }
}

TEST(Language, elseTheSystemsOne)
{
    EXPECT_EQ(languageUnder({}), QStringLiteral("ENG"));
    EXPECT_EQ(languageUnder({{"LC_ALL", "C.UTF-8"}}), QStringLiteral("ENG"));
    EXPECT_EQ(languageUnder({{"LANG", "zh_CN.UTF-8"}}), QStringLiteral("CH"));
    EXPECT_EQ(languageUnder({{"LANG", "zh_TW.UTF-8"}}), QStringLiteral("CH"));
    EXPECT_EQ(languageUnder({{"LANG", "de_DE.UTF-8"}}), QStringLiteral("ENG"));
    EXPECT_EQ(languageUnder({{"LANG", "zh_CN.UTF-8"}, {"LC_MESSAGES", "en_US.UTF-8"}}),
              QStringLiteral("ENG"));
}

TEST(MetaType, theRecordIsKnownByItsNameWithoutACall)
{
    const int type = QMetaType::type("StructDeviceInfo");
    ASSERT_NE(type, QMetaType::UnknownType);
    EXPECT_EQ(type, qMetaTypeId<StructDeviceInfo>());
}

TEST(MetaType, theRecordTravelsInAVariant)
{
    StructDeviceInfo info;
    EXPECT_EQ(info.nDeviceID, -1);
    info.nDeviceID = 7;
    info.nStatus = 13;
    info.stDeviceInfo.transportType = KX_TRANSPORT_USB3;
    const auto copy = QVariant::fromValue(info).value<StructDeviceInfo>();
    EXPECT_EQ(copy.nDeviceID, 7);
    EXPECT_EQ(copy.nStatus, 13);
    EXPECT_EQ(copy.stDeviceInfo.transportType, 4u);
}

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet("PRINT_LANGUAGE")) {
        std::fputs(qPrintable(language()), stdout);
        return 0;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
