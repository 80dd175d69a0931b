#include "iefeatures/commands/LineFile.h"

#include "iefeatures/commands/CameraSearch.h"
#include "iefeatures/console/ExitCode.h"
#include "iefeatures/console/Text.h"
#include "iefeatures/line/LineMatch.h"

#include <algorithm>

namespace companion
{
namespace
{

bool isComplete(const Inventory& inventory, const std::vector<ListedCamera>& cameras)
{
    const std::vector<LineMatch> line = matchLine(inventory, cameras);
    return std::none_of(line.begin(), line.end(),
                        [](const LineMatch& match) { return match.state == LineState::Missing; });
}

} // namespace

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

int findLine(World& world, const Inventory& inventory, std::vector<ListedCamera>& cameras)
{
    const int code = CameraSearch::findAll(world, cameras);
    if (code != ExitWell || isComplete(inventory, cameras))
        return code;
    std::vector<ListedCamera> again;
    const int codeAgain = CameraSearch::findAll(world, again);
    for (ListedCamera& camera : again)
        if (std::none_of(cameras.begin(), cameras.end(),
                         [&](const ListedCamera& other) { return isSameCamera(camera, other); })) {
            camera.device.nDeviceID = static_cast<qint32>(cameras.size()) + 1;
            cameras.push_back(camera);
        }
    return codeAgain;
}

} // namespace companion
