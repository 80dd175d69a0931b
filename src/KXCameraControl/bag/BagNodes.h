// A camera's nodes as the saver and the loader of feature bags see them.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <string>
#include <vector>

namespace kx
{

// Values are texts: decimal integers, shortest round-trip
// floats, "1" and "0", entry names, strings as they are.
class BagNodes
{
public:
    virtual ~BagNodes() = default;

    // Streamable features in the order of the description.
    virtual std::vector<std::string> streamableFeatures() = 0;
    // Every feature that selects others, streamable or not.
    virtual std::vector<std::string> selectors() = 0;
    // Names that `feature` selects, directly.
    virtual std::vector<std::string> selectedFeatures(const std::string& feature) = 0;
    // Every value that a selector can take now; empty when there are none, or more than `limit` (`isMore`).
    virtual std::vector<std::string> selectorValues(const std::string& selector, size_t limit,
                                                    bool& isMore) = 0;

    virtual bool exists(const std::string& feature) = 0;
    virtual KX_Status accessMode(const std::string& feature, KX_XML_AccessMode& mode) = 0;
    virtual KX_Status readText(const std::string& feature, std::string& text) = 0;
    virtual KX_Status writeText(const std::string& feature, const std::string& text) = 0;
    virtual KX_Status execute(const std::string& command) = 0;
};

} // namespace kx
