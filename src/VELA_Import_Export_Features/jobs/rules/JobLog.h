// The worker's log lines: critical level, one context file for every source file of the worker, the line, and
// the full signature of the function. Texts are kept letter for letter, odd words and double blanks included:
// other tools search for them.
#pragma once

#include <QDebug>
#include <QMessageLogger>

namespace ie
{

// Not __FILE__ on purpose: log filters of the suite match this text.
constexpr char kJobLogFile[] = "..\\..\\src\\VELA_Import_Export_Features\\QOperateThread";

} // namespace ie

// The line of an operation that the suite knows as the worker's, wherever it stands: with that signature.
#define IE_JOB_LOG_OF(signature, text)                                                                       \
    QMessageLogger(ie::kJobLogFile, __LINE__, signature).critical() << QString(text)
// A composed text: a QString, which the debug stream prints in quotes.
#define IE_JOB_LOG(text) QMessageLogger(ie::kJobLogFile, __LINE__, Q_FUNC_INFO).critical() << QString(text)
// A fixed text, printed as it is.
#define IE_JOB_LOG_PLAIN(text) QMessageLogger(ie::kJobLogFile, __LINE__, Q_FUNC_INFO).critical() << text
