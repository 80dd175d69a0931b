#include "SuiteTools/SuiteTools.h"
#include "SuiteTools/SuiteToolsWidgets.h"

#include <QFileInfo>

#include <log4cxx/logger.h>
#include <log4cxx/propertyconfigurator.h>
#include <log4cxx/spi/location/locationinfo.h>

namespace
{

log4cxx::LevelPtr levelOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return log4cxx::Level::getDebug();
    case QtInfoMsg:
        return log4cxx::Level::getInfo();
    case QtWarningMsg:
        return log4cxx::Level::getWarn();
    case QtCriticalMsg:
        return log4cxx::Level::getError();
    default:
        return log4cxx::Level::getFatal();
    }
}

// The message keeps its own place in the source: the file as it was given, the line and the function's
// signature.
void writeToLog(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    const log4cxx::LoggerPtr logger = log4cxx::Logger::getRootLogger();
    const log4cxx::LevelPtr level = levelOf(type);
    if (!logger->isEnabledFor(level))
        return;
    const char* file = context.file ? context.file : "";
    const char* function = context.function ? context.function : "";
    logger->forcedLog(level, message.toStdString(),
                      log4cxx::spi::LocationInfo(file, file, function, context.line));
}

} // namespace

void VELAInterface::initLog4qtConfig(const QString& configFile)
{
    if (!QFileInfo(configFile).isFile())
        return;
    qputenv("VELA_LOG_FOLDER", (userDataPath() + "/Log").toUtf8()); // the configuration names it
    if (log4cxx::PropertyConfigurator::configure(configFile.toStdString()) ==
        log4cxx::spi::ConfigurationStatus::NotConfigured)
        return;
    qInstallMessageHandler(writeToLog);
}
