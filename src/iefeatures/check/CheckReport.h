// What has come of cameras and a features file: the text for people and the lines for scripts, of checks and
// of imports alike.
#pragma once

#include "iefeatures/check/CameraCheck.h"
#include "iefeatures/console/Console.h"

#include <QString>

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

// The fields of the object of one camera, with all entries.
Json checkJson(const CameraCheck& check);

CameraVerdict gravestOf(const std::vector<CameraCheck>& checks);

} // namespace companion
