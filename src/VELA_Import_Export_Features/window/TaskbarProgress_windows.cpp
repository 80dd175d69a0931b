#include "window/TaskbarProgress.h"

#include <QApplication>
#include <QWidget>

#include <windows.h>

#include <shobjidl.h>

namespace
{

ITaskbarList3* NewTaskbar()
{
    ITaskbarList3* pTaskbar = nullptr;
    if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                                reinterpret_cast<void**>(&pTaskbar))))
        return nullptr;
    if (SUCCEEDED(pTaskbar->HrInit()))
        return pTaskbar;
    pTaskbar->Release();
    return nullptr;
}

// Null where nobody has a task bar. Never released: the thread's COM may be gone when statics are.
ITaskbarList3* Taskbar()
{
    static ITaskbarList3* const pTaskbar = NewTaskbar();
    return pTaskbar;
}

HWND HandleOf(const QWidget* pWindow)
{
    return reinterpret_cast<HWND>(pWindow->effectiveWinId()); // 0: it was never shown
}

} // namespace

void ShowTaskbarProgress(QWidget* pWindow, int nDone, int nAll, bool bFailed)
{
    const HWND handle = HandleOf(pWindow);
    if (!handle || nAll <= 0 || !Taskbar())
        return;
    Taskbar()->SetProgressState(handle, bFailed ? TBPF_ERROR : TBPF_NORMAL);
    Taskbar()->SetProgressValue(handle, ULONGLONG(nDone), ULONGLONG(nAll));
}

void EndTaskbarProgress(QWidget* pWindow)
{
    const HWND handle = HandleOf(pWindow);
    if (handle && Taskbar())
        Taskbar()->SetProgressState(handle, TBPF_NOPROGRESS);
    if (QGuiApplication::applicationState() != Qt::ApplicationActive)
        QApplication::alert(pWindow);
}
