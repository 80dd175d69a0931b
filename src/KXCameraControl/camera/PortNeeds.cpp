#include "KXCameraControl/camera/PortNeeds.h"
#include "KXCameraControl/camera/ModuleFeatures.h"

namespace kx
{

void servePorts()
{
    setModuleSetter(setModuleFeatures);
}

} // namespace kx
