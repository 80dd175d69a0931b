// A build without transports: no handle can be created.
#include "ports/Port.h"

namespace kx
{

std::unique_ptr<Port> makePort(const KX_DeviceInfo&)
{
    return nullptr;
}

} // namespace kx
