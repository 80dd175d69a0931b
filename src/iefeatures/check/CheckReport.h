// What has come of cameras and a features file: the text for people and the lines for scripts, of checks and
// of imports alike.
#pragma once

#include "iefeatures/check/CameraCheck.h"

#include <QString>

#include <string>
#include <vector>

namespace companion
{

// A paragraph a camera: its verdict, what the file had to prove, a line for each entry that is not as the
// file says, counts.
QString checkText(const std::vector<CameraCheck>& checks);

// An object a line for each camera, with all entries: {"result":"ready","device":1,...}.
std::string checkJson(const std::vector<CameraCheck>& checks);

CameraVerdict gravestOf(const std::vector<CameraCheck>& checks);

} // namespace companion
