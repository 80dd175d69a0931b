// Asking the open camera, and its caller before each feature.
#include "KXCameraControl/bag/CameraNodes.h"

namespace kx
{

template <class Body>
KX_Status CameraNodes::call(const std::string& feature, Body body)
{
    if (const KX_Status lost = m_camera.lineStatus())
        return lost;
    if (!m_aborted && m_watch && !m_watch(feature)) {
        m_aborted = true;
        return KX_E_ABORTED;
    }
    return body(m_camera.nodesForCall());
}

KX_Status CameraNodes::told(KX_Status status, const std::string& feature, const std::string& text,
                            bool isWrite)
{
    const bool isFailedWrite = isWrite && KX_IS_LINE_FAILURE(status) && !m_aborted;
    if (m_valueWatch && (status == KX_OK || isFailedWrite))
        m_valueWatch({feature, text, isWrite, status});
    return status;
}

BagIdentity CameraNodes::identity()
{
    const auto textOf = [this](const char* name) {
        std::string text;
        return m_camera.nodesForCall().getText(name, text) == KX_OK ? text : std::string();
    };
    return {textOf("DeviceVendorName"), textOf("DeviceModelName"), textOf("DeviceVersion")};
}

std::vector<std::string> CameraNodes::streamableFeatures()
{
    return m_camera.nodesForCall().streamableFeatures();
}

std::vector<std::string> CameraNodes::selectors()
{
    return m_camera.nodesForCall().selectors();
}

std::vector<std::string> CameraNodes::selectedFeatures(const std::string& feature)
{
    return m_camera.nodesForCall().selectedFeatures(feature);
}

std::vector<std::string> CameraNodes::selectorValues(const std::string& selector, size_t limit, bool& isMore)
{
    std::vector<std::string> values;
    isMore = false;
    const KX_Status status = call(selector, [&](NodeMap& nodes) {
        return nodes.selectorValues(selector.c_str(), limit, values, isMore);
    });
    return status == KX_OK ? values : std::vector<std::string>();
}

bool CameraNodes::exists(const std::string& feature)
{
    return m_camera.nodesForCall().has(feature);
}

KX_Status CameraNodes::accessMode(const std::string& feature, KX_XML_AccessMode& mode)
{
    return call(feature, [&](NodeMap& nodes) {
        const KX_Status status = nodes.accessMode(feature.c_str(), mode);
        if (nodes.isReadOnly() && mode == KX_AM_READ_WRITE)
            mode = KX_AM_READ_ONLY; // selectors could not be walked through
        return status;
    });
}

KX_Status CameraNodes::readText(const std::string& feature, std::string& text)
{
    const KX_Status status =
        call(feature, [&](NodeMap& nodes) { return nodes.getText(feature.c_str(), text); });
    return told(status, feature, text, false);
}

KX_Status CameraNodes::writeText(const std::string& feature, const std::string& text)
{
    const KX_Status status =
        call(feature, [&](NodeMap& nodes) { return nodes.setText(feature.c_str(), text); });
    return told(status, feature, text, true);
}

KX_Status CameraNodes::execute(const std::string& command)
{
    return call(command, [&](NodeMap& nodes) { return nodes.execute(command.c_str()); });
}

} // namespace kx
