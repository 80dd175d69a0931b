#include "iefeatures/cameras/SearchPlaces.h"

#include "iefeatures/cameras/LastError.h"

#include "camera_line/RecordTexts.h"

#include <algorithm>

namespace companion
{
namespace
{

std::vector<uint32_t> addressesToAsk()
{
    uint32_t count = 0;
    if (KX_CC_GetSearchAddresses(nullptr, 0, &count) != KX_OK)
        return {};
    std::vector<uint32_t> addresses(count);
    if (KX_CC_GetSearchAddresses(addresses.data(), count, &count) != KX_OK)
        return {};
    addresses.resize(std::min<size_t>(addresses.size(), count));
    return addresses;
}

bool answered(uint32_t address, const ListedCamera& camera)
{
    const KX_DeviceInfo& info = camera.device.stDeviceInfo;
    return info.transportType == KX_TRANSPORT_GIGE && info.special.gige.ipAddress == address;
}

} // namespace

QStringList searchObjections()
{
    return KX_CC_CheckSearchPlaces() == KX_OK ? QStringList() : lastErrorText().split('\n');
}

QString noAnswerAt(const QString& address)
{
    return "Nobody answers at " + address + ", which KX_CAMERA_ADDRESSES names.";
}

QStringList silentAddresses(const std::vector<ListedCamera>& cameras)
{
    QStringList silent;
    for (const uint32_t address : addressesToAsk())
        if (std::none_of(cameras.begin(), cameras.end(),
                         [&](const ListedCamera& camera) { return answered(address, camera); }))
            silent += camera_line::dottedQuad(address);
    return silent;
}

} // namespace companion
