#include "window/TaskbarProgress.h"

#include <QApplication>

void ShowTaskbarProgress(QWidget*, int, int, bool) {}

void EndTaskbarProgress(QWidget* pWindow)
{
    if (QGuiApplication::applicationState() != Qt::ApplicationActive)
        QApplication::alert(pWindow);
}
