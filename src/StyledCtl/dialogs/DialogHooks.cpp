#include <StyledCtl/DialogHooks.h>

#include "StyledCtl/dialogs/HookCall.h"

namespace
{

ORBCustom::DialogHook& hook()
{
    static ORBCustom::DialogHook function;
    return function;
}

} // namespace

void ORBCustom::setDialogHook(DialogHook function)
{
    hook() = std::move(function);
}

ORBCustom::DialogAnswer styled::askHook(const ORBCustom::DialogRequest& request)
{
    // A copy: the hook may replace itself.
    const ORBCustom::DialogHook function = hook();
    return function ? function(request) : ORBCustom::DialogAnswer();
}
