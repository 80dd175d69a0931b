#include "KXCameraControl/camera/PortNeeds.h"

namespace kx
{

void servePorts() {}

} // namespace kx
