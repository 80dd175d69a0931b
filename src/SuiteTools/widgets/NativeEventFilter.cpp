#include "SuiteTools/SuiteToolsWidgets.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#if defined(Q_OS_WIN)
#include <windows.h>
#endif

VELANativeEventFilter::VELANativeEventFilter(QWidget* mainWindow) : m_mainWindow(mainWindow) {}

// The suite's programs tell each other of a new language by a registered window message; other systems have
// none.
bool VELANativeEventFilter::nativeEventFilter(const QByteArray& eventType, void* message, long* result)
{
    Q_UNUSED(result)
#if defined(Q_OS_WIN)
    static const UINT languageChanged = RegisterWindowMessageW(L"VELA_LANGUAGE_CHANGED");
    if (eventType == "windows_generic_MSG" && static_cast<MSG*>(message)->message == languageChanged)
        QCoreApplication::postEvent(m_mainWindow,
                                    new QEvent(QEvent::Type(VELAInterface::LanguageChangedEvent)));
#else
    Q_UNUSED(eventType)
    Q_UNUSED(message)
#endif
    return false;
}
