#include "startup/Startup.h"

#include "startup/PlatformCalls.h"
#include "window/Translations.h"

#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QFontDatabase>
#include <QResource>
#include <QWidget>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

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

// Lets a second copy find, show and raise the window. The questions come on another thread. The title is told
// from a note of it, so that a window which is busy is found too; everything else goes through the event
// loop.
class WindowAnswers : public QObject
{
public:
    explicit WindowAnswers(QWidget& window) : m_window(window)
    {
        noteTitle();
        m_window.installEventFilter(this);
        Platform::WindowHost host;
        host.hasWindow = [this](const std::wstring& title) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            return m_title == title;
        };
        host.showWithoutActivation = [this] { post([this] { show(); }); };
        host.bringToFront = [this] { post([this] { raise(); }); };
        Platform::setWindowHost(std::move(host));
    }
    ~WindowAnswers() override { Platform::setWindowHost({}); }

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::WindowTitleChange)
            noteTitle();
        return false;
    }

private:
    void noteTitle()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_title = m_window.windowTitle().toStdWString();
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
    std::mutex m_mutex;
    std::wstring m_title;
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
