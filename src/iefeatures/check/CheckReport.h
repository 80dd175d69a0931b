// What checks have come to: the text for people, the lines for scripts, the exit code.
#pragma once

#include "iefeatures/check/CameraCheck.h"

#include <QString>

#include <string>
#include <vector>

namespace companion
{

// A paragraph a camera: its result, what the file had to prove, a line for each entry that is not as the file
// says, counts.
QString checkText(const std::vector<CameraCheck>& checks, CheckMode mode);

// An object a line for each camera, with all entries: {"result":"ready","device":1,...}.
std::string checkJson(const std::vector<CameraCheck>& checks, CheckMode mode);

int checkExitCode(const std::vector<CameraCheck>& checks);

// "would change", "not applied"
QString verdictWord(Verdict verdict, CheckMode mode);

} // namespace companion
