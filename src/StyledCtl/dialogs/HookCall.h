#pragma once

#include <StyledCtl/DialogHooks.h>

namespace styled
{

// Not answered when no hook is set.
ORBCustom::DialogAnswer askHook(const ORBCustom::DialogRequest& request);

} // namespace styled
