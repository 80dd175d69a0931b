#include "LogFile.h"
#include "LogPattern.h"
#include "SuiteTools/SuiteTools.h"
#include "SuiteTools/SuiteToolsWidgets.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <cstdio>
#include <memory>
#include <mutex>
#include <vector>

namespace VELAInterface
{

namespace
{

// The files that all messages of the process go to; any thread.
class Log
{
public:
    // Opens the files of the settings. Keeps what was there where none can be opened.
    bool configure(const LogSettings& settings)
    {
        std::vector<std::unique_ptr<LogFile>> files;
        for (const LogAppender& appender : settings.appenders) {
            auto file = std::make_unique<LogFile>(appender);
            if (file->open())
                files.push_back(std::move(file));
            else
                std::fprintf(stderr, "The log %s cannot be opened.\n", qUtf8Printable(appender.file));
        }
        if (files.empty())
            return false;
        const std::lock_guard lock(m_mutex);
        m_level = settings.level;
        m_files = std::move(files);
        return true;
    }

    void write(LogLevel level, const LogLine& line)
    {
        const std::lock_guard lock(m_mutex);
        if (level < m_level)
            return;
        for (const auto& file : m_files) {
            if (level >= file->settings().threshold)
                file->write(formatted(line, file->settings().pattern));
        }
    }

private:
    std::mutex m_mutex;
    LogLevel m_level = LogLevel::Off;
    std::vector<std::unique_ptr<LogFile>> m_files;
};

// Never destroyed: other threads may still have something to say when the program ends.
Log& theLog()
{
    static Log* const log = new Log;
    return *log;
}

LogLevel levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return LogLevel::Debug;
    case QtInfoMsg:
        return LogLevel::Info;
    case QtWarningMsg:
        return LogLevel::Warn;
    case QtCriticalMsg:
        return LogLevel::Error;
    default:
        return LogLevel::Fatal;
    }
}

QByteArray wordOf(LogLevel level)
{
    switch (level) {
    case LogLevel::Debug:
        return "DEBUG";
    case LogLevel::Info:
        return "INFO";
    case LogLevel::Warn:
        return "WARN";
    case LogLevel::Error:
        return "ERROR";
    default:
        return "FATAL";
    }
}

// The message keeps its own place in the source: the file as it was given, the line and the function's
// signature.
void writeToLog(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const LogLevel level = levelOf(type);
    LogLine line;
    line.time = QDateTime::currentDateTime();
    line.level = wordOf(level);
    line.thread = "0x" + QByteArray::number(reinterpret_cast<quintptr>(QThread::currentThreadId()), 16);
    line.file = context.file;
    line.line = context.line;
    line.function = context.function;
    line.text = message.toUtf8();
    theLog().write(level, line);
}

} // namespace

void initLog4qtConfig(const QString& configFile)
{
    QFile file(configFile);
    if (!QFileInfo(configFile).isFile() || !file.open(QIODevice::ReadOnly))
        return;
    qputenv("VELA_LOG_FOLDER", (userDataPath() + "/Log").toUtf8()); // the configuration names it
    if (theLog().configure(readLogSettings(file.readAll())))
        qInstallMessageHandler(writeToLog);
}

} // namespace VELAInterface
