// The inventory that a command is given, and its cameras.
#pragma once

#include "iefeatures/commands/Command.h"
#include "iefeatures/console/Console.h"
#include "iefeatures/line/Inventory.h"

#include <QStringList>

#include <string>

namespace companion
{

// Reads it; its faults are told, a line each. False: there are some.
bool readInventoryOrTell(Console& console, const std::string& file, Inventory& inventory);

// Whether it has cameras of all these names; one that it has not is told.
bool hasCameras(Console& console, const Inventory& inventory, const QStringList& names);

// All cameras that are there. Who of the inventory seems to be missing is looked for a second time, as a
// packet may get lost: whoever is found in one of the two looks is there. Gives an ExitCode, as
// CameraSearch::findAll() does.
int findLine(World& world, const Inventory& inventory, std::vector<ListedCamera>& cameras);

} // namespace companion
