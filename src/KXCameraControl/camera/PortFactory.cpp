// Which port a camera gets.
#include "KXCameraControl/camera/PortFactory.h"

#include "KXCameraControl/camera/PortNeeds.h"
#include "KXCameraControl/ports/Transport.h"

#include <mutex>

namespace kx
{

namespace
{

std::mutex factoryMutex;
PortFactory factoryInUse;

// In the library from its load on.
[[maybe_unused]] const bool areServed = (servePorts(), true);

} // namespace

std::unique_ptr<Port> makePort(const KX_DeviceInfo& device)
{
    const Transport* transport = transportOf(device);
    return transport ? transport->newPort(device) : nullptr;
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
