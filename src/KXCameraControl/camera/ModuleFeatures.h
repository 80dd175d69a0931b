// Features of a GenTL producer's modules that are no cameras: set by name, as people write them.
#pragma once

#include "KXCameraControl/ports/gentl/GenTlSettings.h"

namespace kx
{

// A ModuleSetter: by the module's own description.
std::vector<std::string> setModuleFeatures(Port& module, const std::vector<ModuleFeature>& features);

} // namespace kx
