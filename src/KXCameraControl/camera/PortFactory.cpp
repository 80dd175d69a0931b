#include "KXCameraControl/camera/PortFactory.h"

#include "KXCameraControl/ports/gige/GvcpPort.h"

namespace kx
{

std::unique_ptr<Port> makePort(const KX_DeviceInfo& device)
{
    if (device.transportType == KX_TRANSPORT_GIGE)
        return std::make_unique<GvcpPort>(device.special.gige);
    return nullptr;
}

} // namespace kx
