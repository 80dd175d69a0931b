// Where the program's log lines go while a command runs: nowhere, to the message stream, to the end of a
// file.
#pragma once

#include "iefeatures/console/Console.h"

#include <QFile>
#include <QtGlobal>

#include <mutex>
#include <string>

namespace CLI
{
class App;
}

namespace companion
{

struct LogOptions
{
    bool verbose = false;
    std::string file; // empty: none

    void addOptions(CLI::App& app);
};

// Takes Qt's messages while it lives; one at a time. Fatal ones are always shown.
class LogSink
{
public:
    LogSink(Console& console, const LogOptions& options);
    ~LogSink();
    LogSink(const LogSink&) = delete;
    LogSink& operator=(const LogSink&) = delete;

    // False when the chosen file could not be opened (one that is no regular file never is), or a line could
    // not be written to it.
    bool isGood() const;
    const QString& openingFailure() const { return m_openingFailure; } // why it could not be opened

private:
    static void handle(QtMsgType level, const QMessageLogContext& context, const QString& text);
    void take(QtMsgType level, const QString& text);

    Console& m_console;
    const LogOptions m_options;
    mutable std::mutex m_mutex;
    QFile m_file;
    QString m_openingFailure;
    bool m_isWritten = true; // all that came
    QtMessageHandler m_previous;
};

} // namespace companion
