#include "Startup.h"

#include "PlatformCalls.h"
#include "Translations.h"

#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QApplication>
#include <QDir>
#include <QFontDatabase>
#include <QResource>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>

namespace
{

QString besideTheProgram(const char* path)
{
    return QCoreApplication::applicationDirPath() + path;
}

void endWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    if (type != QtFatalMsg)
        return;
    std::fputs("Import_Export_Features needs a display and found none. Without one, use iefeatures.\n",
               stderr);
    std::_Exit(1);
}

// Lets a second copy find, show and raise the window. The questions come on another thread; the title is
// asked for there as it stood last, everything else goes through the event loop.
class WindowAnswers : public QObject
{
public:
    explicit WindowAnswers(QWidget& window) : m_window(window)
    {
        Platform::WindowHost host;
        host.hasWindow = [this](const std::wstring& title) {
            return onWindowThread<bool>(
                [this, title] { return m_window.windowTitle() == QString::fromStdWString(title); });
        };
        host.showWithoutActivation = [this] { post([this] { show(); }); };
        host.bringToFront = [this] { post([this] { raise(); }); };
        Platform::setWindowHost(std::move(host));
    }
    ~WindowAnswers() override { Platform::setWindowHost({}); }

private:
    // The event loop runs as long as this object lives, but it may be about to end: the answer is not waited
    // for without a bound.
    template <typename Result, typename Function>
    Result onWindowThread(Function function)
    {
        auto result = std::make_shared<std::promise<Result>>();
        std::future<Result> answer = result->get_future();
        QMetaObject::invokeMethod(
            this, [function, result] { result->set_value(function()); }, Qt::QueuedConnection);
        return answer.wait_for(std::chrono::milliseconds(800)) == std::future_status::ready ? answer.get()
                                                                                            : Result();
    }

    template <typename Function>
    void post(Function function)
    {
        QMetaObject::invokeMethod(this, function, Qt::QueuedConnection);
    }

    void show()
    {
        if (m_window.isMinimized())
            m_window.setWindowState(m_window.windowState() & ~Qt::WindowMinimized);
        m_window.setAttribute(Qt::WA_ShowWithoutActivating);
        m_window.show();
        m_window.setAttribute(Qt::WA_ShowWithoutActivating, false);
    }

    void raise()
    {
        m_window.raise();
        m_window.activateWindow();
    }

    QWidget& m_window;
};

} // namespace

Startup::DisplayGuard::DisplayGuard()
{
    qInstallMessageHandler(endWithoutDisplay);
}

Startup::DisplayGuard::~DisplayGuard()
{
    qInstallMessageHandler(nullptr);
}

void Startup::registerResources()
{
    QResource::registerResource(besideTheProgram("/rcc/vela.rcc"));
    QResource::registerResource(besideTheProgram("/rcc/ToolBarBtn.rcc"));
}

void Startup::addPlugInPath()
{
    QCoreApplication::addLibraryPath(besideTheProgram("/plugins"));
}

void Startup::configureLog()
{
    VELAInterface::initLog4qtConfig(besideTheProgram("/log4qt/log4qt_IEFeatures.conf"));
}

void Startup::addFonts()
{
    const QString folder = besideTheProgram("/FontLato");
    for (const QString& entry : QDir(folder).entryList()) // unfiltered: what is no font is refused
        QFontDatabase::addApplicationFont(folder + "/" + entry);
}

void Startup::loadLanguage(int argc, char* argv[])
{
    LoadTranslations(VELAInterface::language());
    if (argc < 2)
        return;
    const QString argument = QString::fromLocal8Bit(argv[1]);
    if (argument == "CH" || argument == "ENG")
        LoadTranslations(argument);
}

int Startup::runEventLoop(QApplication& application, QWidget& window)
{
    window.show();
    const WindowAnswers answers(window);
    const auto filter = std::make_unique<VELANativeEventFilter>(&window);
    application.installNativeEventFilter(filter.get());
    const int exitCode = QApplication::exec();
    application.removeNativeEventFilter(filter.get());
    return exitCode;
}
