#include "KXCameraControl/ports/Transport.h"

#include "KXCameraControl/ports/cameralink/SerialDiscovery.h"
#include "KXCameraControl/ports/gentl/GenTlDiscovery.h"
#include "KXCameraControl/ports/gige/GigeDiscovery.h"
#include "KXCameraControl/ports/usb3/Usb3Discovery.h"

#include <algorithm>

namespace kx
{

const std::vector<Transport>& transports()
{
    static const std::vector<Transport> table{gigeTransport(), usb3Transport(), serialTransport(),
                                              gentlTransport()};
    return table;
}

const Transport* transportOf(const KX_DeviceInfo& device)
{
    const auto& all = transports();
    const auto transport = std::find_if(all.begin(), all.end(), [&](const Transport& one) {
        return one.type == device.transportType && (!one.owns || one.owns(device));
    });
    return transport == all.end() ? nullptr : &*transport;
}

} // namespace kx
