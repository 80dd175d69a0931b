// The cameras on the line, as the companion speaks of them.
#pragma once

#include <SuiteTools/StructDeviceInfo.h>

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace companion
{

struct ListedCamera
{
    StructDeviceInfo device; // its nDeviceID counts from 1 in the order of the list
    QString transport;       // "GigE", "U3V", "CL", or the layer's own name
    QString model;
    QString serial;
    QString userName;          // empty where the transport has none
    QString address;           // GigE: dotted quad; CL: the port or the producer's interface; U3V: empty
    QString mac;               // GigE: "02:00:00:00:00:01"; else empty
    QString guid;              // U3V, where it can be read; else empty
    QString interfaceName;     // "eth1", "USB 2-1.4", ...; empty where it was asked by its address alone
    quint32 interfaceMask = 0; // of its network, GigE in host byte order; 0: not known
    QString status;            // "free", "in use", "unreachable"
    QString reason;            // why it is unreachable, as far as the search tells
    QString controller;        // once it was asked for, and where the camera tells: "10.0.0.5:49152"
    bool hasTwin = false;      // another one has the same model and serial number

    // Nobody can ask it who it is: another program has its line.
    bool isNameless() const;
    // "model serial", for messages; where that is not enough " at 10.0.0.7" behind it. Of one that is
    // nameless "camera at /dev/ttyS0".
    QString title() const;
};

// Asks the camera library who is there, in its order. Blocks for the discovery window.
using Enumerate = std::function<KX_Status(std::vector<KX_DeviceEntry>& entries)>;
KX_Status enumerateCameras(std::vector<KX_DeviceEntry>& entries);

// Who is there now; empty as well where nobody could be asked.
using Look = std::function<std::vector<ListedCamera>()>;
// Whether two looks mean the same camera, wherever and whatever it is called by then.
bool isSameCamera(const ListedCamera& one, const ListedCamera& other);
// That camera, at a later look.
std::optional<ListedCamera> findAgain(const Look& look, const ListedCamera& camera);

std::vector<ListedCamera> camerasFrom(const std::vector<KX_DeviceEntry>& entries);

} // namespace companion
