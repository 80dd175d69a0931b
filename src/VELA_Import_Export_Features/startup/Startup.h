// What happens before the window is there and after its event loop. All paths start at the executable's
// folder.
#pragma once

#include <QString>

class QApplication;
class QWidget;

namespace Startup
{

// While one lives, a program that finds no display says so and ends with exit code 1 instead of aborting.
class DisplayGuard
{
public:
    DisplayGuard();
    ~DisplayGuard();
    DisplayGuard(const DisplayGuard&) = delete;
    DisplayGuard& operator=(const DisplayGuard&) = delete;
};

void registerResources();
void addPlugInPath();
void configureLog();
void addFonts();
// By the suite's language, then by the first argument "CH" or "ENG", which overrides it; others are ignored.
void loadLanguage(int argc, char* argv[]);

// From the window's first appearance to the end of the event loop; gives the loop's exit code.
int runEventLoop(QApplication& application, QWidget& window);

} // namespace Startup
