// Transports and their ports.
#include "KXCameraControl/camera/PortFactory.h"

#include "KXCameraControl/ports/gige/GvcpPort.h"

#include <mutex>

namespace kx
{

namespace
{

std::mutex factoryMutex;
PortFactory factoryInUse;

} // namespace

std::unique_ptr<Port> makePort(const KX_DeviceInfo& device)
{
    if (device.transportType == KX_TRANSPORT_GIGE)
        return std::make_unique<GvcpPort>(device.special.gige);
    return nullptr;
}

void setPortFactory(PortFactory factory)
{
    const std::lock_guard<std::mutex> lock(factoryMutex);
    factoryInUse = std::move(factory);
}

std::unique_ptr<Port> newPort(const KX_DeviceInfo& device)
{
    const std::lock_guard<std::mutex> lock(factoryMutex);
    return factoryInUse ? factoryInUse(device) : makePort(device);
}

} // namespace kx
