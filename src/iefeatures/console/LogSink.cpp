#include "iefeatures/console/LogSink.h"

#include "iefeatures/console/OptionChecks.h"

#include "jobs/file/RegularFile.h"

#include <CLI/CLI.hpp>

#include <QDateTime>

#include <atomic>

namespace companion
{
namespace
{

std::atomic<LogSink*> g_sink{nullptr};

const char* levelWord(QtMsgType level)
{
    switch (level) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "critical";
    case QtFatalMsg:
        return "fatal";
    }
    return "";
}

} // namespace

void LogOptions::addOptions(CLI::App& app)
{
    app.add_flag("--verbose", verbose, "Show the log lines of the jobs");
    app.add_option("--log", file, "Append the log lines of the jobs to this file")
        ->type_name("FILE")
        ->check(isGiven("Name a file."));
}

LogSink::LogSink(Console& console, const LogOptions& options) : m_console(console), m_options(options)
{
    if (!options.file.empty()) {
        m_file.setFileName(QString::fromStdString(options.file));
        m_openingFailure = ie::openRegular(
            m_file, QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered, ie::LinkRule::Refused);
    }
    g_sink = this;
    m_previous = qInstallMessageHandler(&LogSink::handle);
}

LogSink::~LogSink()
{
    qInstallMessageHandler(m_previous);
    g_sink = nullptr;
}

bool LogSink::isGood() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_options.file.empty() || (m_file.isOpen() && m_isWritten);
}

void LogSink::handle(QtMsgType level, const QMessageLogContext&, const QString& text)
{
    if (LogSink* sink = g_sink)
        sink->take(level, text);
}

void LogSink::take(QtMsgType level, const QString& text)
{
    const std::string line =
        QString("%1 %2 %3\n")
            .arg(QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs), levelWord(level), text)
            .toStdString();
    if (m_options.verbose || level == QtFatalMsg)
        m_console.note(line);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_file.isOpen())
        m_isWritten = m_file.write(line.data(), qint64(line.size())) == qint64(line.size()) && m_isWritten;
}

} // namespace companion
