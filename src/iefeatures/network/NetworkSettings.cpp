#include "iefeatures/network/NetworkSettings.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/FeatureReader.h"

#include "camera_line/RecordTexts.h"
#include "gvcp/Gvcp.h"

#include <QtEndian>

namespace companion
{
namespace
{

QString switchWord(bool isOn)
{
    return isOn ? "true" : "false";
}

std::optional<uint32_t> wordAt(FeatureReader& reader, uint32_t address)
{
    uint32_t word = 0;
    if (reader.readMemory(address, &word, sizeof word) != KX_OK)
        return {};
    return qFromBigEndian(word);
}

} // namespace

QMap<QString, QString> networkSettings(const ListedCamera& camera)
{
    const KX_DeviceInfo& device = camera.device.stDeviceInfo;
    if (device.transportType != KX_TRANSPORT_GIGE)
        return {};
    const CameraConnection connection(device, KX_ACCESS_MONITOR);
    if (connection.status() != KX_OK)
        return {};
    FeatureReader reader(connection.handle());
    const auto current = wordAt(reader, gvcp::RegIpCurrent);
    const auto mask = wordAt(reader, gvcp::RegCurrentMask);
    const auto gateway = wordAt(reader, gvcp::RegCurrentGateway);
    if (!current || !mask || !gateway)
        return {};
    return {{"mask", camera_line::dottedQuad(*mask)},
            {"gateway", camera_line::dottedQuad(*gateway)},
            {"dhcp", switchWord(*current & gvcp::kIpDhcp)},
            {"lla", switchWord(*current & gvcp::kIpLinkLocal)}};
}

} // namespace companion
