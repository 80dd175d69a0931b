#include "KXCameraControl/ports/Transport.h"

#include <algorithm>

namespace kx
{

const Transport* transportOf(const KX_DeviceInfo& device)
{
    const auto& all = transports();
    const auto transport = std::find_if(all.begin(), all.end(), [&](const Transport& one) {
        return one.type == device.transportType && (!one.owns || one.owns(device));
    });
    return transport == all.end() ? nullptr : &*transport;
}

} // namespace kx
