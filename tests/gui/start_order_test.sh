#!/usr/bin/env bash
# The order of the program's steps from start to end, which nothing shows from outside.
# usage: start_order_test.sh SOURCE-FOLDER-OF-THE-PROGRAM
set -euo pipefail
failures=0

# in_order FILE TEXT...: every text stands in the file, each behind the one before.
in_order() {
    local file=$1 line=0 found text
    shift
    for text in "$@"; do
        found=$(tail -n +$((line + 1)) "$file" | grep -nF -m 1 -- "$text" | cut -d: -f1 || true)
        if [ -z "$found" ]; then
            echo "FAILED: $file: not behind line $line: $text"
            failures=$((failures + 1))
            return
        fi
        line=$((line + found))
    done
}

in_order "$1/main.cpp" \
    'QApplication application(argc, argv);' \
    'QApplication::setStyle(QStyleFactory::create("Fusion"));' \
    'Startup::registerResources();' \
    'Startup::addPlugInPath();' \
    'Startup::configureLog();' \
    'Startup::addFonts();' \
    'QCoreApplication::setAttribute(Qt::AA_NativeWindows, false);' \
    'Startup::loadLanguage(argc, argv);' \
    'ProcessGuards::installCrashFilter();' \
    'QApplication::setWindowIcon(QIcon(":/VELA/AppIcon/FeatureBag.ico"));' \
    'if (IsAlreadyRunning())' \
    'return 0;' \
    'std::make_unique<MainWidget>();' \
    'Startup::runEventLoop(application, *window);' \
    'ProcessGuards::closeInstanceMutex();' \
    'VELAInterface::killProcess("Import_Export_Features");' \
    'window.reset();' \
    'return exitCode;'
in_order "$1/startup/Startup.cpp" \
    'registerResource(besideTheProgram("/rcc/vela.rcc"));' \
    'registerResource(besideTheProgram("/rcc/ToolBarBtn.rcc"));' \
    'addLibraryPath(besideTheProgram("/plugins"));' \
    'initLog4qtConfig(besideTheProgram("/log4qt/log4qt_IEFeatures.conf"));' \
    'QDir(folder).entryList())' \
    'LoadTranslations(VELAInterface::language());' \
    'LoadTranslations(argument);' \
    'window.show();' \
    'application.installNativeEventFilter(filter.get());' \
    'QApplication::exec();' \
    'application.removeNativeEventFilter(filter.get());'
[ "$failures" -eq 0 ] && echo "in order"
