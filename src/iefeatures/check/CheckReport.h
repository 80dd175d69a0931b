// What has come of cameras and a features file: the text for people and the lines for scripts, of checks and
// of imports alike.
#pragma once

#include "iefeatures/check/CameraCheck.h"

#include <QString>

#include <string>
#include <vector>

namespace companion
{

enum class Detail
{
    Attention, // what is amiss, what an import would write, warnings
    All        // every entry but those that are as the file says, and all that the file had to prove
};

// A paragraph a camera: its verdict, counts, what the file had to prove where it has not, a line for each
// entry in question.
QString checkText(const std::vector<CameraCheck>& checks, Detail detail = Detail::Attention);

// An object a line for each camera, with all entries: {"result":"ready","device":1,...}.
std::string checkJson(const std::vector<CameraCheck>& checks);

CameraVerdict gravestOf(const std::vector<CameraCheck>& checks);

} // namespace companion
