// The inventory that a command is given.
#pragma once

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

} // namespace companion
