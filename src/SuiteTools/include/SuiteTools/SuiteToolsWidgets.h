// The suite's common library, the part for programs with a window. User-interface thread unless told
// otherwise.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QFileDialog>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <functional>

#if defined(SUITETOOLSWIDGETS_BUILD_LIBRARY) || !defined(Q_OS_WIN)
#define SUITETOOLSWIDGETS_API Q_DECL_EXPORT
#else
#define SUITETOOLSWIDGETS_API // imported without a word; and a test may bring a library of its own
#endif

class QWidget;

namespace VELAInterface
{

// Event that asks the main window to load the translations of the suite's language again.
constexpr int LanguageChangedEvent = 1100;

// Routes all messages of Qt's logger of this process by a log4j properties file (widgets/LogSettings.h has
// its keys), in UTF-8 with line feeds on every system. A file that is missing or names no file that can be
// opened leaves the logger as it is.
SUITETOOLSWIDGETS_API void initLog4qtConfig(const QString& configFile);

// Ids of the running processes of that name that belong to the same user and the same runtime folder, the
// caller's own included.
SUITETOOLSWIDGETS_API void processID(const QString& processName, QList<qint64>* ids);
// Ends those processes but the caller; does not wait.
SUITETOOLSWIDGETS_API void killProcess(const QString& processName);

// Asks for one file; empty when the user chose none. Blocks in a modal dialog.
SUITETOOLSWIDGETS_API QString getOpenFileName(QWidget* parent, const QString& caption,
                                              const QString& directory, const QString& filter,
                                              QString* selectedFilter = nullptr,
                                              QFileDialog::Options options = {});

// Answers getOpenFileName() instead of a dialog, for programs that run without a person. Empty: the dialog
// again.
using OpenFileHook = std::function<QString(QWidget* parent, const QString& caption, const QString& directory,
                                           const QString& filter)>;
SUITETOOLSWIDGETS_API void setOpenFileHook(OpenFileHook function);

} // namespace VELAInterface

// Watches native messages for the suite's "language changed" and posts VELAInterface::LanguageChangedEvent to
// the window.
class SUITETOOLSWIDGETS_API VELANativeEventFilter : public QAbstractNativeEventFilter
{
public:
    explicit VELANativeEventFilter(QWidget* mainWindow);
    bool nativeEventFilter(const QByteArray& eventType, void* message, long* result) override;

private:
    [[maybe_unused]] QWidget* m_mainWindow; // only Windows has such messages
};
