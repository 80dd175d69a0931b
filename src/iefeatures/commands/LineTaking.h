// Cameras that are taken into an inventory: what line init and line adopt have in common.
#pragma once

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/line/LineCapture.h"

namespace companion
{

// The camera of that name in the inventory, by what identifies it. ExitWell, or why there is none, which is
// told.
int findCameraOf(World& world, const SearchOptions& options, const Inventory& inventory, const QString& name,
                 CapturedCamera& found);

// capture() (LineCapture.h), with a second look at who is there. ExitWell, or why nothing may be written,
// which is told.
int captureAll(World& world, const Inventory& inventory, const CaptureTask& task,
               std::vector<CapturedCamera>& cameras);

enum class Taken
{
    AsNew,    // the inventory is written for the first time
    Added,    // to one that is there
    Refreshed // one camera of it
};
// Writes the inventory and tells of it. Gives an ExitCode.
int saveCaptured(Console& console, const Inventory& inventory, const std::vector<CapturedCamera>& cameras,
                 Taken taken);

// A sentence for each problem of each. False: none has one.
bool tellProblems(Console& console, const std::vector<CapturedCamera>& cameras);

} // namespace companion
