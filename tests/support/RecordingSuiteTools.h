// Takes the common library's place under the jobs: records every call, answers from a script where a test
// sets one, and passes on to the library's own functions where it does not.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace tests
{

// Set while no worker runs. A null function or text means: as the library does.
struct SuiteScript
{
    QString softwareVersion = "7.8.9"; // fixed, so that expected files do not follow the build's version
    QString language;
    QString programDataPath = "/nonexistent/program-data";
    std::optional<unsigned int> toolsSupportNum;
    std::function<int(unsigned int status)> velaCode;
    std::function<QString(unsigned int code)> sdkCode;
    std::function<QString(int code)> errorDescription;
    std::function<double(const char* expression, bool& ok)> compute;
    // Told of each call as it is made, on the calling thread, in the words of suiteCalls().
    std::function<void(const QString& call)> onCall;
};

SuiteScript& suiteScript();

// Calls so far, e.g. "GetEncodeQStringFromUnChar(-1)", "Compute(1+2)", "string2Int(0x10)".
QStringList suiteCalls();
QStringList suiteCalls(const QString& function);

// A fresh script and no calls.
void resetSuiteTools();

} // namespace tests
