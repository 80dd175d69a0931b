// Feature files in the GenApi persistence text (GenICam GenApi, "Streaming"): saving all streamable features
// of a camera, for every combination of their selectors, and loading such a file, whoever wrote it.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <string>
#include <utility>
#include <vector>

namespace kx
{

// What a feature bag needs of a camera's nodes. Values are texts: decimal integers, shortest round-trip
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
    // Every value that a selector can take now, at most `limit`; empty when there are more or none.
    virtual std::vector<std::string> selectorValues(const std::string& selector, size_t limit) = 0;

    virtual bool exists(const std::string& feature) = 0;
    virtual KX_Status accessMode(const std::string& feature, KX_XML_AccessMode& mode) = 0;
    virtual KX_Status readText(const std::string& feature, std::string& text) = 0;
    virtual KX_Status writeText(const std::string& feature, const std::string& text) = 0;
    virtual KX_Status execute(const std::string& command) = 0;
};

struct BagIdentity
{
    std::string vendor;
    std::string model;
    std::string deviceVersion;
};

// One line of a bag. `selectors` is filled for lines of the form "Name<TAB>{Sel=Val,...}<TAB>Value".
struct BagEntry
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> selectors;
    std::string value;
};

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
    size_t entries = 0;
    size_t passes = 0;
    std::vector<Failure> failures;
    std::string registersValid; // "", "1" or "0": DeviceRegistersValid after the load, where there is one

    std::string text() const;
};

// Collects the bag's lines. Every selector is put back to what it was on every way out; a status of a failed
// line ends the collection. What could not be restored is told in `remark`.
KX_Status collectBag(BagNodes& nodes, std::vector<BagEntry>& entries, std::string& remark);
// Applies the entries in order, in passes, until a pass takes nothing more. KX_E_INCOMPLETE: some did not
// take.
KX_Status applyBag(BagNodes& nodes, const std::vector<BagEntry>& entries, BagLoadReport& report);

std::string bagText(const BagIdentity& identity, const std::vector<BagEntry>& entries);
// False unless the text begins with the persistence format's identification line.
bool parseBag(const std::string& text, std::vector<BagEntry>& entries, std::string& error);

// The files. Saving goes through a temporary beside `path` and a rename. `message` tells more in English.
KX_Status saveBag(BagNodes& nodes, const BagIdentity& identity, const std::string& path,
                  std::string& message);
KX_Status loadBag(BagNodes& nodes, const std::string& path, std::string& message);

} // namespace kx
