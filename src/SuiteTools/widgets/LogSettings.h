// What a log4j properties file says of the log, as far as this program's log knows it.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace VELAInterface
{

// As the configuration's words order them; Off is above everything that can be logged.
enum class LogLevel
{
    All,
    Trace,
    Debug,
    Info,
    Warn,
    Error,
    Fatal,
    Off
};

// One file that lines go to.
struct LogAppender
{
    QString file;
    bool append = true;  // false: the file begins anew with each start
    qint64 maxSize = -1; // bytes from which on a file is rolled before the next line; negative: never
    int backups = 7;     // how many rolled files are kept, 1 to 13
    QByteArray pattern;  // see LogPattern.h
    LogLevel threshold = LogLevel::All; // lines below it are left out
};

struct LogSettings
{
    LogLevel level = LogLevel::Debug;
    std::vector<LogAppender> appenders;
};

// Reads the text of a properties file. Keys: log4j.rootLogger (LEVEL, NAME...), log4j.threshold and, for each
// name, log4j.appender.NAME (a class that ends in RollingFileAppender or FileAppender) with File, Append,
// Threshold, MaxFileSize (bytes, or with KB, MB, GB), MaxBackupIndex and layout.ConversionPattern. ${NAME}
// stands for a variable of the environment or a value of the file. An appender of another class, or without a
// file, is left out.
LogSettings readLogSettings(const QByteArray& properties);

} // namespace VELAInterface
