// A camera that is restarted, and waited for.
#pragma once

#include "iefeatures/cameras/ListedCamera.h"

#include <chrono>
#include <functional>

namespace companion
{

// Whether the camera has the command for it (SFNC, "DeviceReset"); nothing where it cannot be asked. Opens it
// for monitoring.
std::optional<bool> hasRestart(const ListedCamera& camera);

// Executes DeviceReset and waits until the camera is off the line. A sentence where it did not go, else
// empty. Takes the camera exclusively before it goes.
QString restartCamera(const ListedCamera& camera, const Look& look, const std::function<bool()>& mayGoOn);

// The camera, as soon as it is as it is wanted; nothing when `patience` is over, or `mayGoOn` says no.
std::optional<ListedCamera> awaitCamera(const ListedCamera& camera, const Look& look,
                                        std::chrono::milliseconds patience,
                                        const std::function<bool()>& mayGoOn,
                                        const std::function<bool(const ListedCamera&)>& isWanted);

} // namespace companion
