// What of a line's cameras is to be written so that they are as the inventory says. Only reads.
#pragma once

#include "iefeatures/console/Console.h"
#include "iefeatures/imports/ImportFiles.h"
#include "iefeatures/line/LineCheck.h"
#include "iefeatures/line/Unfinished.h"
#include "iefeatures/network/NetworkTask.h"

#include <functional>
#include <optional>
#include <vector>

namespace companion
{

// A camera of the inventory that something is to be written to.
struct LineTarget
{
    const InventoryCamera* wanted = nullptr;
    ListedCamera camera;
    SharedImportFiles files;         // none: it has no features file, or cannot be asked yet
    std::optional<CameraCheck> plan; // what an import of the features file would do; none: it is not needed
    LineMatch match;                 // with what differs in anything but features
    NetworkTask network = {};        // what is set of that
    bool isUnfinished = false;       // it has its features, and its user set may not

    bool isUnreachable() const { return match.state == LineState::Unreachable; } // until it has its address
    QStringList changes() const;   // "Gain: 1 -> 2", of what would be written
    LineState stateBehind() const; // how it is when all is written
};

struct LinePlan
{
    std::vector<LineTarget> targets;      // that something would be written to
    std::vector<LineCameraCheck> settled; // of the others of the inventory: why nothing is, or can be
    std::vector<ListedCamera> strangers;  // left alone

    // Of what is not in order behind it all: the settled ones, and what stays of targets.
    LineState gravest() const;
};

// `names`: of the inventory; empty: all. An address that somebody else has is not set. Blocks until all have
// answered. `inventory` must outlive the plan.
LinePlan planLine(const Inventory& inventory, const Unfinished& unfinished,
                  const std::vector<ListedCamera>& cameras, const QStringList& names,
                  const std::function<bool()>& mayGoOn);

// Whether the target is the same camera, and the same would be written to it, as when it was planned: it is
// asked again. A sentence where not, else an empty text.
QString planObjection(const LineTarget& target, const LinePlan& now);

} // namespace companion
