// Preloaded into the program: writes down, line by line, the steps of its start and end as they are really
// made. Each function here stands before the one of the same name in a library, notes the call and passes it
// on; Qt's calls of its own functions stay inside Qt and are not seen. Calls of the main thread only.
// IE_START_TRACE names the file.
#include <StyledCtl/StyledCtl.h>
#include <SuiteTools/SuiteTools.h>
#include <SuiteTools/SuiteToolsWidgets.h>

#include <QApplication>
#include <QFontDatabase>
#include <QIcon>
#include <QResource>
#include <QStyle>
#include <QTranslator>
#include <QWidget>

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#define TRACED __attribute__((visibility("default")))

namespace
{

const pid_t g_program = getpid(); // and not what it forks, which closes descriptors by number
int g_lock = -1;                  // the descriptor of the lock file

bool isMainThread()
{
    return syscall(SYS_gettid) == g_program;
}

void note(const std::string& step)
{
    static const char* const path = std::getenv("IE_START_TRACE");
    if (!path || !isMainThread())
        return;
    const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const std::string line = step + "\n";
    if (file < 0 || write(file, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        std::abort();
    ::syscall(SYS_close, file);
}

// Paths are told as seen from the program's folder.
std::string told(const QString& path)
{
    const QString folder = QCoreApplication::applicationDirPath();
    return (path.startsWith(folder) ? "BESIDE" + path.mid(folder.size()) : path).toStdString();
}

std::string taken(bool isTaken)
{
    return isTaken ? ": taken" : ": refused";
}

// The function that this file stands before. A static member is called like any other function, another
// member with its object as the first argument.
template <typename Function>
Function* passedOn(const char* symbol)
{
    void* const function = dlsym(RTLD_NEXT, symbol);
    if (!function)
        std::abort();
    return reinterpret_cast<Function*>(function);
}

} // namespace

// ---- what is set up ---------------------------------------------------------------------------------------

TRACED void QApplication::setStyle(QStyle* style)
{
    note("style " + (style ? style->objectName().toStdString() : "none"));
    passedOn<void(QStyle*)>("_ZN12QApplication8setStyleEP6QStyle")(style);
}

TRACED bool QResource::registerResource(const QString& file, const QString& root)
{
    const bool isTaken = passedOn<bool(const QString&, const QString&)>(
        "_ZN9QResource16registerResourceERK7QStringS2_")(file, root);
    note("resource " + told(file) + taken(isTaken));
    return isTaken;
}

TRACED void QCoreApplication::addLibraryPath(const QString& path)
{
    note("plug-in path " + told(path));
    passedOn<void(const QString&)>("_ZN16QCoreApplication14addLibraryPathERK7QString")(path);
}

TRACED void VELAInterface::initLog4qtConfig(const QString& file)
{
    note("log configuration " + told(file));
    passedOn<void(const QString&)>("_ZN13VELAInterface16initLog4qtConfigERK7QString")(file);
}

TRACED int QFontDatabase::addApplicationFont(const QString& file)
{
    const int id = passedOn<int(const QString&)>("_ZN13QFontDatabase18addApplicationFontERK7QString")(file);
    note("font " + told(file) + taken(id >= 0));
    return id;
}

TRACED void QCoreApplication::setAttribute(Qt::ApplicationAttribute attribute, bool on)
{
    if (attribute == Qt::AA_NativeWindows)
        note(std::string("native windows ") + (on ? "on" : "off"));
    passedOn<void(Qt::ApplicationAttribute, bool)>(
        "_ZN16QCoreApplication12setAttributeEN2Qt20ApplicationAttributeEb")(attribute, on);
}

TRACED void ORBCustom::setLanguage(ORBCustom::Language language)
{
    note(language == ORBCustom::LanguageChinese ? "language Chinese" : "language English");
    passedOn<void(ORBCustom::Language)>("_ZN9ORBCustom11setLanguageENS_8LanguageE")(language);
}

TRACED bool QTranslator::load(const QString& file, const QString& folder, const QString& delimiters,
                              const QString& suffix)
{
    const bool isTaken =
        passedOn<bool(QTranslator*, const QString&, const QString&, const QString&, const QString&)>(
            "_ZN11QTranslator4loadERK7QStringS2_S2_S2_")(this, file, folder, delimiters, suffix);
    note("translation " + told(folder) + " " + file.toStdString() + taken(isTaken));
    return isTaken;
}

TRACED void QApplication::setWindowIcon(const QIcon& icon)
{
    note(icon.availableSizes().isEmpty() ? "icon: empty" : "icon: from the resources");
    passedOn<void(const QIcon&)>("_ZN12QApplication13setWindowIconERK5QIcon")(icon);
}

// ---- guards -----------------------------------------------------------------------------------------------

extern "C" {

TRACED int sigaction(int number, const struct sigaction* action, struct sigaction* old) noexcept
{
    if (number == SIGSEGV && action && action->sa_flags & SA_SIGINFO)
        note("crash filter");
    return passedOn<int(int, const struct sigaction*, struct sigaction*)>("sigaction")(number, action, old);
}

TRACED int flock(int descriptor, int operation) noexcept
{
    const int result = passedOn<int(int, int)>("flock")(descriptor, operation);
    note(result == 0 ? "guard: lock taken" : "guard: lock held by another");
    if (result == 0)
        g_lock = descriptor;
    return result;
}

TRACED int close(int descriptor)
{
    if (descriptor >= 0 && descriptor == g_lock) {
        note("guard: lock given back");
        g_lock = -1;
    }
    return passedOn<int(int)>("close")(descriptor);
}

TRACED ssize_t send(int connection, const void* data, size_t size, int flags)
{
    const std::string text(static_cast<const char*>(data), size);
    if (text.rfind("find ", 0) == 0 || text == "show" || text == "front")
        note("asks the first copy: " + text);
    return passedOn<ssize_t(int, const void*, size_t, int)>("send")(connection, data, size, flags);
}

} // extern "C"

TRACED void VELAInterface::processID(const QString& name, QList<qint64>* ids)
{
    passedOn<void(const QString&, QList<qint64>*)>("_ZN13VELAInterface9processIDERK7QStringP5QListIxE")(name,
                                                                                                        ids);
    note("processes of the name counted");
}

TRACED void VELAInterface::killProcess(const QString& name)
{
    note("left-over processes ended: " + name.toStdString());
    passedOn<void(const QString&)>("_ZN13VELAInterface11killProcessERK7QString")(name);
}

// ---- the window -------------------------------------------------------------------------------------------

TRACED void QWidget::show()
{
    if (isWindow()) {
        const std::string name = metaObject()->className();
        const bool isMinimized = windowState().testFlag(Qt::WindowMinimized);
        note("shows " + name + (testAttribute(Qt::WA_ShowWithoutActivating) ? " without activation" : "") +
             (isMinimized ? ", minimized" : ""));
        if (!property("startTrace").isValid())
            QObject::connect(this, &QObject::destroyed, [name] { note("window gone: " + name); });
        setProperty("startTrace", true);
    }
    passedOn<void(QWidget*)>("_ZN7QWidget4showEv")(this);
}

TRACED void QWidget::raise()
{
    if (isWindow())
        note(std::string("raises ") + metaObject()->className());
    passedOn<void(QWidget*)>("_ZN7QWidget5raiseEv")(this);
}

TRACED void QWidget::activateWindow()
{
    note(std::string("activates ") + metaObject()->className());
    passedOn<void(QWidget*)>("_ZN7QWidget14activateWindowEv")(this);
}

TRACED void QCoreApplication::installNativeEventFilter(QAbstractNativeEventFilter* filter)
{
    note("native event filter on");
    passedOn<void(QCoreApplication*, QAbstractNativeEventFilter*)>(
        "_ZN16QCoreApplication24installNativeEventFilterEP26QAbstractNativeEventFilter")(this, filter);
}

TRACED void QCoreApplication::removeNativeEventFilter(QAbstractNativeEventFilter* filter)
{
    note("native event filter off");
    passedOn<void(QCoreApplication*, QAbstractNativeEventFilter*)>(
        "_ZN16QCoreApplication23removeNativeEventFilterEP26QAbstractNativeEventFilter")(this, filter);
}

TRACED int QApplication::exec()
{
    note("event loop");
    const int code = passedOn<int()>("_ZN12QApplication4execEv")();
    note("event loop ended");
    return code;
}
