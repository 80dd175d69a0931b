// Loading a feature bag into a camera, whoever wrote it.
#pragma once

#include "KXCameraControl/bag/BagNodes.h"
#include "KXCameraControl/bag/BagText.h"

namespace kx
{

// Entries that did not take their value, and what the camera says of its registers.
struct BagLoadReport
{
    struct Failure
    {
        std::string name;
        std::string value;
        KX_Status status = KX_OK;
        std::string reason;
    };
    static constexpr size_t mostFailures = 1000; // that are told one by one

    size_t entries = 0;
    size_t untried = 0; // as the line failed before
    size_t passes = 0;
    size_t failed = 0;
    std::vector<Failure> failures; // of those the first ones
    std::string registersValid;    // "", "1" or "0": DeviceRegistersValid after the load, where there is one

    std::string text() const;
};

// Applies the entries in order, in passes, until a pass takes nothing more. KX_E_INCOMPLETE: some did not
// take.
KX_Status applyBag(BagNodes& nodes, const std::vector<BagEntry>& entries, BagLoadReport& report);

// The file. `message` tells more in English.
KX_Status loadBag(BagNodes& nodes, const std::string& path, std::string& message);

} // namespace kx
