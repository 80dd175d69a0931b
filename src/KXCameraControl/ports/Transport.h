// The transports that this library speaks: what each knows of its own cameras. A transport is one folder
// below this one and one row of the table.
#pragma once

#include "KXCameraControl/ports/Port.h"

#include <memory>

namespace kx
{

// Of one network interface of a camera, in host byte order.
struct IpSettings
{
    uint32_t address = 0;
    uint32_t mask = 0;
    uint32_t gateway = 0; // 0: none
};

struct Transport
{
    uint32_t type; // KX_TRANSPORT_...

    // All of them thread-safe; `find` blocks for as long as the transport's search takes.
    KX_Status (*find)(std::vector<KX_DeviceEntry>& entries);
    KX_Status (*availability)(const KX_DeviceInfo& device, uint32_t& availability);
    // Who has control: what KX_CC_GetController promises.
    KX_Status (*controller)(const KX_DeviceInfo& device, KX_Controller& controller);
    std::unique_ptr<Port> (*newPort)(const KX_DeviceInfo& device);
    std::string (*serialNumber)(const KX_DeviceInfo& device);
    // Where the camera is: equal for two records of one place, and in the order in which places are told.
    std::string (*place)(const KX_DeviceInfo& device);
    // A number that changes with the places where cameras may turn up; 0: that cannot be told. Sends nothing.
    uint32_t (*stamp)();

    // Where several transports share a type: which of its records are this one's. Null: all.
    bool (*owns)(const KX_DeviceInfo& device) = nullptr;
    // A sentence for each thing that stands in the way of its searches. Null: there are none. Sends nothing.
    std::vector<std::string> (*problems)() = nullptr;
    // Another address for a camera that nobody controls: what KX_CC_ForceIp promises. Null: there are none.
    KX_Status (*forceIp)(const KX_DeviceInfo& device, const IpSettings& wanted) = nullptr;
};

// Those that there are lines for (Transports.cpp).
const std::vector<Transport>& transports();
// Null: a transport that this library has no port for.
const Transport* transportOf(const KX_DeviceInfo& device);

} // namespace kx
