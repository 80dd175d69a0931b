// A camera's nodes as a feature bag needs them.
#pragma once

#include "KXCameraControl/bag/BagNodes.h"
#include "KXCameraControl/bag/BagText.h"
#include "KXCameraControl/camera/Camera.h"

#include <functional>

namespace kx
{

// Told before each feature is read or written; false ends the bag with KX_E_ABORTED. What has to be put back
// then is put back without asking again.
using BagWatch = std::function<bool(const std::string& feature)>;
// A value that was read or written, or whose write the line has failed.
struct BagValue
{
    const std::string& feature;
    const std::string& text;
    bool isWrite;
    KX_Status status;
};
using BagValueWatch = std::function<void(const BagValue&)>;

// The camera must be open, and its lock held.
class CameraNodes : public BagNodes
{
public:
    CameraNodes(Camera& camera, BagWatch watch) : m_camera(camera), m_watch(std::move(watch)) {}
    void setValueWatch(BagValueWatch watch) { m_valueWatch = std::move(watch); }

    BagIdentity identity();

    std::vector<std::string> streamableFeatures() override;
    std::vector<std::string> selectors() override;
    std::vector<std::string> selectedFeatures(const std::string& feature) override;
    std::vector<std::string> selectorValues(const std::string& selector, size_t limit, bool& isMore) override;
    bool exists(const std::string& feature) override;
    KX_Status accessMode(const std::string& feature, KX_XML_AccessMode& mode) override;
    KX_Status readText(const std::string& feature, std::string& text) override;
    KX_Status writeText(const std::string& feature, const std::string& text) override;
    KX_Status execute(const std::string& command) override;

private:
    template <class Body>
    KX_Status call(const std::string& feature, Body body);
    KX_Status told(KX_Status status, const std::string& feature, const std::string& text, bool isWrite);

    Camera& m_camera;
    BagWatch m_watch;
    BagValueWatch m_valueWatch;
    bool m_aborted = false;
};

} // namespace kx
