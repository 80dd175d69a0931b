#include "iefeatures/network/AddressOwner.h"

#include <QStringList>

namespace companion
{
namespace
{

constexpr uint32_t kTries = 16;

bool isItself(const KX_AddressOwner& owner, const KX_GigEDeviceInfo& gige)
{
    return owner.macHigh == gige.macHigh && owner.macLow == gige.macLow;
}

QString macText(const KX_AddressOwner& owner)
{
    QStringList bytes;
    for (int shift = 40; shift >= 0; shift -= 8)
        bytes += QString("%1")
                     .arg(((uint64_t(owner.macHigh) << 32 | owner.macLow) >> shift) & 0xFF, 2, 16, QChar('0'))
                     .toUpper();
    return bytes.join(':');
}

} // namespace

QString addressOwner(const ListedCamera& camera, uint32_t address)
{
    const KX_GigEDeviceInfo& gige = camera.device.stDeviceInfo.special.gige;
    KX_AddressOwner owner{};
    if (KX_CC_ProbeAddress(address, gige.interfaceAddress, &owner) != KX_OK)
        return "cannot be asked for";
    if (owner.isTaken == 0 || isItself(owner, gige))
        return {};
    if (owner.means == KX_PROBE_OWN)
        return "is this host's own";
    return owner.macHigh == 0 && owner.macLow == 0 ? "is somebody else's"
                                                   : "is somebody else's (" + macText(owner) + ')';
}

uint32_t freeAddress(const ListedCamera& camera)
{
    const KX_GigEDeviceInfo& gige = camera.device.stDeviceInfo.special.gige;
    const uint32_t hosts = ~camera.interfaceMask;
    if (gige.interfaceAddress == 0 || camera.interfaceMask == 0 || hosts < 3)
        return 0;
    const uint32_t last = gige.interfaceAddress | hosts; // everybody
    for (uint32_t back = 1; back <= kTries && back < hosts; ++back)
        if (addressOwner(camera, last - back).isEmpty())
            return last - back;
    return 0;
}

} // namespace companion
