// Names and addresses of a line's cameras: what of an inventory can be set.
#pragma once

#include "iefeatures/line/LineMatch.h"
#include "iefeatures/network/NetworkTask.h"

namespace companion
{

// Where the inventory wants the camera to be; nothing where it does not say, or leaves it to DHCP. A mask
// that it does not say is that of the network that the camera was found in.
std::optional<IpPlace> placeOf(const InventoryCamera& wanted, const ListedCamera& camera);

// All that the inventory says of it; nothing is forced.
NetworkTask networkTaskOf(const InventoryCamera& wanted, const ListedCamera& camera);

// What of the differences can be set; an address at once as well.
NetworkTask networkTaskOf(const LineMatch& match);

// The differences that are there behind the task too: another interface, a serial number.
std::vector<LineDifference> differencesBehind(const NetworkTask& task, const LineMatch& match);

} // namespace companion
