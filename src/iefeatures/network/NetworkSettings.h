// How a camera comes by its address (GigE Vision, bootstrap registers of the network interface).
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <QMap>

namespace companion
{

// By keys of the inventory: "mask", "gateway", "dhcp", "lla"; switches are "true" or "false". Empty for other
// transports, and where the camera does not tell. Opens it for monitoring; blocks until it has answered.
QMap<QString, QString> networkSettings(const ListedCamera& camera);

} // namespace companion
