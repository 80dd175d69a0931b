#include "RecordingSuiteTools.h"

#include <SuiteTools/SuiteTools.h>

#include <mutex>

// The library's own functions: its sources, compiled under this namespace's name.
namespace RealSuiteTools
{
enum _ENCODING_TYPE_ : int;
void SetEncodingType(_ENCODING_TYPE_ type);
unsigned int toolsSupportNum();
QString int2StringMacAddress(unsigned int high, unsigned int low);
QString GetEncodeQStringFromUnChar(const unsigned char* text, int length);
QString char2QStringLocale(const char* text, int length);
void CovertEncodeCharFromQString(const QString& text, char* buffer, int capacity);
int SDKCode2VELACode(unsigned int status);
QString GenerateSDKCode(unsigned int code);
QString GenerateVELAErrorDesc(int code);
QString language();
QString softwareVersion();
QString programDataPath();
qint64 string2Int(const QString& text);
double Compute(const char* expression, bool& ok);
QString GetCalculatorErro();
} // namespace RealSuiteTools

namespace tests
{
namespace
{

std::mutex g_mutex;
QStringList g_calls;

void record(const char* function, const QString& arguments = {})
{
    const QString call = QString("%1(%2)").arg(QString(function), arguments);
    if (suiteScript().onCall)
        suiteScript().onCall(call);
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_calls.append(call);
}

} // namespace

SuiteScript& suiteScript()
{
    static SuiteScript script;
    return script;
}

QStringList suiteCalls()
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    return g_calls;
}

QStringList suiteCalls(const QString& function)
{
    QStringList calls;
    for (const QString& call : suiteCalls())
        if (call.startsWith(function + '('))
            calls.append(call);
    return calls;
}

void resetSuiteTools()
{
    suiteScript() = SuiteScript();
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_calls.clear();
}

} // namespace tests

namespace VELAInterface
{

using tests::record;
using tests::suiteScript;

void SetEncodingType(_ENCODING_TYPE_ type)
{
    record("SetEncodingType", QString::number(type));
    RealSuiteTools::SetEncodingType(static_cast<RealSuiteTools::_ENCODING_TYPE_>(type));
}

unsigned int toolsSupportNum()
{
    record("toolsSupportNum");
    return suiteScript().toolsSupportNum.value_or(RealSuiteTools::toolsSupportNum());
}

QString int2StringMacAddress(unsigned int high, unsigned int low)
{
    record("int2StringMacAddress", QString("%1, %2").arg(high, 0, 16).arg(low, 0, 16));
    return RealSuiteTools::int2StringMacAddress(high, low);
}

QString GetEncodeQStringFromUnChar(const unsigned char* text, int length)
{
    record("GetEncodeQStringFromUnChar", QString::number(length));
    return RealSuiteTools::GetEncodeQStringFromUnChar(text, length);
}

QString char2QStringLocale(const char* text, int length)
{
    record("char2QStringLocale", QString::number(length));
    return RealSuiteTools::char2QStringLocale(text, length);
}

void CovertEncodeCharFromQString(const QString& text, char* buffer, int capacity)
{
    record("CovertEncodeCharFromQString", QString("%1, %2").arg(text, QString::number(capacity)));
    RealSuiteTools::CovertEncodeCharFromQString(text, buffer, capacity);
}

int SDKCode2VELACode(unsigned int status)
{
    record("SDKCode2VELACode", QString::number(status, 16));
    return suiteScript().velaCode ? suiteScript().velaCode(status) : RealSuiteTools::SDKCode2VELACode(status);
}

QString GenerateSDKCode(unsigned int code)
{
    record("GenerateSDKCode", QString::number(code, 16));
    return suiteScript().sdkCode ? suiteScript().sdkCode(code) : RealSuiteTools::GenerateSDKCode(code);
}

QString GenerateVELAErrorDesc(int code)
{
    record("GenerateVELAErrorDesc", QString::number(static_cast<unsigned int>(code), 16));
    return suiteScript().errorDescription ? suiteScript().errorDescription(code)
                                          : RealSuiteTools::GenerateVELAErrorDesc(code);
}

QString softwareVersion()
{
    record("softwareVersion");
    return suiteScript().softwareVersion.isNull() ? RealSuiteTools::softwareVersion()
                                                  : suiteScript().softwareVersion;
}

QString language()
{
    record("language");
    return suiteScript().language.isNull() ? RealSuiteTools::language() : suiteScript().language;
}

QString programDataPath()
{
    record("programDataPath");
    return suiteScript().programDataPath.isNull() ? RealSuiteTools::programDataPath()
                                                  : suiteScript().programDataPath;
}

qint64 string2Int(const QString& text)
{
    record("string2Int", text);
    return RealSuiteTools::string2Int(text);
}

double Compute(const char* expression, bool& ok)
{
    record("Compute", QString(expression));
    return suiteScript().compute ? suiteScript().compute(expression, ok)
                                 : RealSuiteTools::Compute(expression, ok);
}

QString GetCalculatorErro()
{
    record("GetCalculatorErro");
    return RealSuiteTools::GetCalculatorErro();
}

} // namespace VELAInterface
