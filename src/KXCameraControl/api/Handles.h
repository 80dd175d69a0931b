// The live handles. A handle is a number that is never used twice, so one that was destroyed is recognised as
// such for ever, and a call that runs while another thread destroys the handle keeps its camera alive.
#pragma once

#include "KXCameraControl/camera/Camera.h"

#include <memory>

namespace kx
{

KX_HANDLE addHandle(std::shared_ptr<Camera> camera);
// Null for a handle that is null, destroyed or was never given out.
std::shared_ptr<Camera> findHandle(KX_HANDLE handle);
std::shared_ptr<Camera> removeHandle(KX_HANDLE handle);

// What new handles are observed by.
void setDefaultObserver(const Observer& observer);

} // namespace kx
