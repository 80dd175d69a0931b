// What there are lines for.
#include "KXCameraControl/ports/Transport.h"
#include "KXCameraControl/ports/cameralink/SerialDiscovery.h"
#include "KXCameraControl/ports/gentl/GenTlDiscovery.h"
#include "KXCameraControl/ports/gige/GigeDiscovery.h"
#include "KXCameraControl/ports/usb3/Usb3Discovery.h"

namespace kx
{

const std::vector<Transport>& transports()
{
    static const std::vector<Transport> table{gigeTransport(), usb3Transport(), serialTransport(),
                                              gentlTransport()};
    return table;
}

} // namespace kx
