#include "iefeatures/commands/LineFile.h"

#include "iefeatures/console/Text.h"

namespace companion
{

bool readInventoryOrTell(Console& console, const std::string& file, Inventory& inventory)
{
    const QString path = QString::fromStdString(file);
    const InventoryReading reading = readInventory(path);
    for (const InventoryFault& fault : reading.faults)
        console.err(faultText(path, fault) + '\n');
    inventory = reading.inventory;
    return reading.isGood();
}

bool hasCameras(Console& console, const Inventory& inventory, const QStringList& names)
{
    for (const QString& name : names) {
        if (inventory.find(name))
            continue;
        console.err(printable(inventory.path) + " has no camera \"" + printable(name) + "\".\n");
        return false;
    }
    return true;
}

} // namespace companion
