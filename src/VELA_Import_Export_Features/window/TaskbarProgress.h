// How far a batch is, at the window's button in the system's task bar. Window's thread alone.
#pragma once

class QWidget;

// Of `nAll` jobs `nDone` have ended; `bFailed`: in the colour of trouble. Nothing where the task bar has no
// such display.
void ShowTaskbarProgress(QWidget* pWindow, int nDone, int nAll, bool bFailed);

// The batch is over: its display goes, and the button asks for attention where another program is in front.
void EndTaskbarProgress(QWidget* pWindow);
