#include "iefeatures/replace/Restart.h"

#include "iefeatures/cameras/CameraConnection.h"
#include "iefeatures/cameras/Controller.h"

#include <thread>

namespace companion
{
namespace
{

using Clock = std::chrono::steady_clock;

const char* const kReset = "DeviceReset";
constexpr std::chrono::milliseconds kPause{100};
constexpr std::chrono::seconds kTimeToGo{20};

// Whoever restarts may not have the time to say so.
bool isObeyed(KX_Status status)
{
    return status == KX_OK || status == KX_E_NO_ANSWER || status == KX_E_CONNECTION_LOST;
}

} // namespace

std::optional<bool> hasRestart(const ListedCamera& camera)
{
    const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_MONITOR);
    KX_XML_AccessMode mode = KX_AM_UNDEFINED;
    if (line.status() != KX_OK)
        return {};
    const KX_Status status = KX_XML_GetNodeAccessMode(line.handle(), kReset, &mode);
    if (status != KX_OK && KX_IS_LINE_FAILURE(status))
        return {};
    return status == KX_OK && mode != KX_AM_NOT_IMPLEMENTED;
}

QString restartCamera(const ListedCamera& camera, const Look& look, const std::function<bool()>& mayGoOn)
{
    {
        const CameraConnection line(camera.device.stDeviceInfo, KX_ACCESS_EXCLUSIVE);
        if (line.status() != KX_OK)
            return "the camera could not be opened: " +
                   openingFailure(camera.device.stDeviceInfo, line.status());
        const KX_Status status = KX_CC_ExecuteCommand(line.handle(), kReset);
        if (!isObeyed(status))
            return QString("DeviceReset failed: ") + KX_CC_StatusText(status);
    }
    const auto end = Clock::now() + kTimeToGo;
    while (mayGoOn() && Clock::now() < end) {
        if (!findAgain(look, camera))
            return {};
        std::this_thread::sleep_for(kPause);
    }
    return mayGoOn() ? "it was told to restart, and is still there." : QString("interrupted.");
}

std::optional<ListedCamera> awaitCamera(const ListedCamera& camera, const Look& look,
                                        std::chrono::milliseconds patience,
                                        const std::function<bool()>& mayGoOn,
                                        const std::function<bool(const ListedCamera&)>& isWanted)
{
    const auto end = Clock::now() + patience;
    while (mayGoOn()) {
        const auto now = findAgain(look, camera);
        if (now && isWanted(*now))
            return now;
        if (Clock::now() >= end)
            break;
        std::this_thread::sleep_for(kPause);
    }
    return {};
}

} // namespace companion
