#include "iefeatures/console/ReportStyle.h"

#include "iefeatures/console/Terminal.h"

#include <QtGlobal>

namespace companion
{

int reportColumns()
{
    bool isNumber = false;
    const int columns = qEnvironmentVariableIntValue("COLUMNS", &isNumber);
    if (isNumber && columns >= 0)
        return columns;
    return isTerminal(StandardStream::Output) ? terminalSize(StandardStream::Output).columns : 0;
}

} // namespace companion
