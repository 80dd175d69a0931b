// The lines of a report that tell of entries of a features file.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/ReportStyle.h"

#include <QString>

namespace companion
{

// A line or more for each entry in question, those first that are amiss; warnings stand behind their entry.
// What does not fit the style's columns goes on in lines of its own, and values are cut in the middle.
QString entryLines(const CameraCheck& check, const ReportStyle& style);

} // namespace companion
