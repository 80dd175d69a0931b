#include "own_files/OwnFiles.h"
#include "startup/ProcessGuards.h"
#include "startup/Startup.h"
#include "window/MainWidget.h"

#include <SuiteTools/SuiteToolsWidgets.h>

#include <QApplication>
#include <QIcon>
#include <QStyleFactory>

#include <memory>

// The order of the steps is part of the program's behaviour. On Windows Qt's entry glue turns the wide
// command line into arguments of the local code page and calls main.
int main(int argc, char* argv[])
{
    own_files::keepFromOthers();
    auto displayGuard = std::make_unique<Startup::DisplayGuard>();
    QApplication application(argc, argv);
    displayGuard.reset();
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    Startup::registerResources();
    Startup::addPlugInPath();
    Startup::configureLog();
    Startup::addFonts();
    QCoreApplication::setAttribute(Qt::AA_NativeWindows, false);
    Startup::loadLanguage(argc, argv);
    ProcessGuards::installCrashFilter();
    QApplication::setWindowIcon(QIcon(":/VELA/AppIcon/FeatureBag.ico"));
    if (IsAlreadyRunning())
        return 0;

    auto window = std::make_unique<MainWidget>();
    const int exitCode = Startup::runEventLoop(application, *window);
    ProcessGuards::closeInstanceMutex();
    VELAInterface::killProcess("Import_Export_Features");
    window.reset();
    return exitCode;
}
