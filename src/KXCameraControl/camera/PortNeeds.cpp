#include "KXCameraControl/camera/ModuleFeatures.h"
#include "KXCameraControl/camera/PortNeeds.h"

namespace kx
{

void servePorts()
{
    setModuleSetter(setModuleFeatures);
}

} // namespace kx
