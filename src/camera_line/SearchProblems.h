// What hides cameras from searches.
#pragma once

#include <QStringList>

namespace camera_line
{

// A sentence for each thing that the last search of this process met, or that stood in its way: producers and
// serial libraries that failed, cameras that this user may not open. Sends nothing, any thread.
QStringList searchProblems();

} // namespace camera_line
