// Statuses of the camera library as codes, as printed forms and as sentences.
#include <KXCameraControl/KXCameraControl.h>
#include <SuiteTools/SuiteTools.h>

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>

#include <map>
#include <set>
#include <string>

using namespace VELAInterface;

namespace
{

QString headerText()
{
    QFile header(QStringLiteral(CAMERA_HEADER));
    EXPECT_TRUE(header.open(QIODevice::ReadOnly));
    return QString::fromUtf8(header.readAll());
}

// Name and value of every status that the camera library's header defines.
std::map<std::string, unsigned> definedStatuses()
{
    const QRegularExpression define(
        QStringLiteral("#\\s*define\\s+(KX_OK|KX_E_\\w+)\\s+\\(\\(KX_Status\\)(0x[0-9A-Fa-f]+|0)u\\)"));
    std::map<std::string, unsigned> statuses;
    const QString header = headerText();
    for (auto found = define.globalMatch(header); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        statuses[match.captured(1).toStdString()] = match.captured(2).toUInt(nullptr, 0);
    }
    return statuses;
}

QString sentence(unsigned status)
{
    return GenerateVELAErrorDesc(SDKCode2VELACode(status));
}

class ErrorTexts : public testing::TestWithParam<const char*>
{
protected:
    void SetUp() override { qputenv("VELA_LANGUAGE", GetParam()); }
    void TearDown() override { qunsetenv("VELA_LANGUAGE"); }
    static bool isChinese() { return std::string(GetParam()) == "CH"; }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Languages, ErrorTexts, testing::Values("ENG", "CH"));

TEST(ErrorHeader, isReadWhole)
{
    const QRegularExpression name(QStringLiteral("#\\s*define\\s+KX_(OK|E_\\w+)"));
    const QString header = headerText();
    size_t mentioned = 0;
    for (auto found = name.globalMatch(header); found.hasNext(); found.next())
        ++mentioned;
    const auto statuses = definedStatuses();
    EXPECT_EQ(statuses.size(), mentioned);
    EXPECT_GE(statuses.size(), 28u);
    EXPECT_EQ(statuses.at("KX_E_CONNECTION_LOST"), KX_E_CONNECTION_LOST);
}

TEST_P(ErrorTexts, everyStatusHasASentenceOfItsOwn)
{
    const QString unknown = sentence(0x8000FFFFu);
    std::set<QString> seen{unknown};
    for (const auto& [name, status] : definedStatuses())
        EXPECT_TRUE(seen.insert(sentence(status)).second) << name << ": " << sentence(status).toStdString();
}

TEST_P(ErrorTexts, sentencesAreInTheLanguageAndReadWellBehindTheCode)
{
    auto statuses = definedStatuses();
    statuses["unknown"] = 0x8000FFFFu;
    statuses["positive"] = 42;
    for (const auto& [name, status] : statuses) {
        const QString text = sentence(status);
        ASSERT_GT(text.size(), 3) << name;
        EXPECT_FALSE(text.contains(QLatin1Char('%'))) << name; // nobody fills it in
        if (isChinese()) {
            EXPECT_GE(text.at(0).unicode(), 0x4E00) << name;
            EXPECT_EQ(text.at(text.size() - 1), QChar(0x3002)) << name;
        } else {
            EXPECT_EQ(text.at(0), QLatin1Char(' ')) << name;
            EXPECT_TRUE(text.at(1).isUpper()) << name;
            EXPECT_EQ(text.at(text.size() - 1), QLatin1Char('.')) << name;
            EXPECT_EQ(QString::fromLatin1(text.toLatin1()), text) << name;
        }
    }
}

TEST(ErrorCodes, keepTheirBits)
{
    EXPECT_EQ(SDKCode2VELACode(0), 0);
    EXPECT_EQ(SDKCode2VELACode(KX_E_CONNECTION_LOST), -2147483135);
    EXPECT_EQ(SDKCode2VELACode(0xFFFFFFFFu), -1);
    EXPECT_EQ(SDKCode2VELACode(0x7FFFFFFFu), 2147483647);
}

TEST(ErrorCodes, arePrintedWithEightDigits)
{
    EXPECT_EQ(GenerateSDKCode(static_cast<unsigned>(SDKCode2VELACode(KX_E_CONNECTION_LOST))),
              QStringLiteral("[0x80000201]"));
    EXPECT_EQ(GenerateSDKCode(0), QStringLiteral("[0x00000000]"));
    EXPECT_EQ(GenerateSDKCode(0xABCDEF01u), QStringLiteral("[0xABCDEF01]"));
}

TEST(ErrorCodes, codeAndSentenceTogether)
{
    const QString code = GenerateSDKCode(KX_E_CONNECTION_LOST);
    qputenv("VELA_LANGUAGE", "ENG");
    EXPECT_EQ(code + sentence(KX_E_CONNECTION_LOST),
              QStringLiteral("[0x80000201] The connection to the camera is lost."));
    qputenv("VELA_LANGUAGE", "CH");
    EXPECT_EQ(code + sentence(KX_E_CONNECTION_LOST), QString::fromUtf8("[0x80000201]与相机的连接已断开。"));
    qunsetenv("VELA_LANGUAGE");
}
