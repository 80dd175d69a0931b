// The cameras on the line, as the companion speaks of them.
#pragma once

#include <SuiteTools/StructDeviceInfo.h>

#include <QString>

#include <functional>
#include <vector>

namespace companion
{

struct ListedCamera
{
    StructDeviceInfo device; // its nDeviceID counts from 1 in the order of the list
    QString transport;       // "GigE", "U3V", "CL"
    QString model;
    QString serial;
    QString userName; // empty where the transport has none
    QString address;  // GigE: dotted quad; CL: the port; U3V: empty
    QString status;   // "free", "in use", "unreachable"

    // "model serial", for messages.
    QString title() const;
};

// Asks the camera library who is there, in its order. Blocks for the discovery window.
using Enumerate = std::function<KX_Status(std::vector<KX_DeviceEntry>& entries)>;
KX_Status enumerateCameras(std::vector<KX_DeviceEntry>& entries);

std::vector<ListedCamera> camerasFrom(const std::vector<KX_DeviceEntry>& entries);

} // namespace companion
