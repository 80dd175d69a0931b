// What a camera is called, and how it comes by its address: set by the registers that every GigE Vision
// camera has, and read again.
#pragma once

#include "iefeatures/imports/FeatureWrites.h"
#include "iefeatures/network/IpPlace.h"

#include <QStringList>

#include <optional>

namespace companion
{

struct NetworkTask
{
    std::optional<IpPlace> forced;     // at once, until the camera is switched off
    std::optional<IpPlace> persistent; // whenever it is switched on
    std::optional<bool> usesDhcp;
    std::optional<bool> usesLla;
    std::optional<QString> userName;

    bool isKept() const { return persistent || usesDhcp || usesLla || userName; } // something of it
    bool isEmpty() const { return !forced && !isKept(); }
};

// What is to be done, as parts of a sentence: "the address 10.0.0.7/24 until it is switched off".
QStringList networkWords(const NetworkTask& task);

// Why it cannot be done with this camera, a sentence each: it has no such thing, or an address is somebody
// else's. Asks around for up to some seconds; writes nothing.
QStringList networkObjections(const ListedCamera& camera, const NetworkTask& task);

// FORCEIP to this camera alone, which is to be looked for again then. Blocks for up to 6 s.
FeatureWrites forceAddress(const ListedCamera& camera, const IpPlace& place);

// All of the task but what is forced, in the order name, address, switches; each is read again behind its
// write, and the first that the camera does not take ends it. An entry a setting, called as SFNC does. Takes
// the camera exclusively, blocks until it has answered.
FeatureWrites writeNetwork(const ListedCamera& camera, const NetworkTask& task);

} // namespace companion
