// What has come of cameras and a features file: the text for people and the lines for scripts, of checks and
// of imports alike.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/console/ReportStyle.h"

#include <QString>

#include <vector>

namespace companion
{

// A paragraph a camera: its verdict, counts, what the file had to prove where it has not, then the entries in
// question, those first that are amiss. Registers are hexadecimal, entries of enumerations have their names.
QString checkText(const std::vector<CameraCheck>& checks, const ReportStyle& style = {});

// The fields of the object of one camera, with all entries.
Json checkJson(const CameraCheck& check);

CameraVerdict gravestOf(const std::vector<CameraCheck>& checks);

} // namespace companion
