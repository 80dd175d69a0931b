// What a GenTL producer lists, and the records of it.
#pragma once

#include "KXCameraControl/ports/gentl/HostLink.h"

#include <optional>
#include <string>
#include <vector>

namespace kx
{

struct GenTlDevice
{
    std::string interface; // the producer's own ids
    std::string device;
    std::string interfaceName; // as people know it
    std::string vendor;
    std::string model;
    std::string serialNumber;
    std::string version;
    std::string layer; // the transport layer's name: "CL", "CXP", "CLHS", "GEV", ...
    int32_t status = gentl::StatusUnknown;
};

// Devices that the library has ports of its own for (GigE Vision, USB3 Vision) are left out: they would show
// twice. The reply's text is not empty when some of the producer's interfaces could not be searched.
HostReply lookBehind(HostLink& link, std::vector<GenTlDevice>& devices);

KX_DeviceInfo recordOf(const std::string& producer, const GenTlDevice& device);
// One KX_AVAILABILITY_ value; what this process has open itself is free.
uint32_t availabilityOf(const GenTlDevice& device);

// The path of the record's producer; empty: none of that name is there now.
std::string producerOf(const KX_DeviceInfo& record);
// The one that the record was made of, if it is listed.
std::optional<GenTlDevice> deviceOf(const KX_DeviceInfo& record, const std::string& producer,
                                    const std::vector<GenTlDevice>& devices);

} // namespace kx
