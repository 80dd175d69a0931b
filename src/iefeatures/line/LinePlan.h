// What of a line's cameras is to be written so that they are as the inventory says. Only reads.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/imports/ImportFiles.h"
#include "iefeatures/line/LineCheck.h"

#include <functional>
#include <vector>

namespace companion
{

// A camera of the inventory that its features file is to be imported into.
struct LineTarget
{
    const InventoryCamera* wanted = nullptr;
    ListedCamera camera;
    SharedImportFiles files;
    CameraCheck plan; // what the import would do
    LineMatch match;  // with what differs and stays: name, address

    QStringList changes() const; // "Gain: 1 -> 2", of what it would write
};

struct LinePlan
{
    std::vector<LineTarget> targets;      // that something would be written to
    std::vector<LineCameraCheck> settled; // of the others of the inventory: why nothing is, or can be
    std::vector<ListedCamera> strangers;  // left alone

    // Of what is not in order behind it all: the settled ones, and what stays of targets.
    LineState gravest() const;
};

// `names`: of the inventory; empty: all. Cameras with another name or address are meant all the same: that is
// told, and stays. Blocks until all have answered. `inventory` must outlive the plan.
LinePlan planLine(const Inventory& inventory, const std::vector<ListedCamera>& cameras,
                  const QStringList& names, const std::function<bool()>& mayGoOn);

// Whether the target is the same camera, and the same would be written to it, as when it was planned: it is
// asked again. A sentence where not, else an empty text.
QString planObjection(const LineTarget& target, const LinePlan& now);

} // namespace companion
