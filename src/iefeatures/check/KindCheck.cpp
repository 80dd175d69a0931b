#include "iefeatures/check/KindCheck.h"

namespace companion
{

std::optional<CameraCheck> refusalOfOtherKind(const ListedCamera& camera, const ListedCamera& source)
{
    if (camera.device.stDeviceInfo.transportType == source.device.stDeviceInfo.transportType)
        return {};
    CameraCheck check;
    check.camera = camera;
    check.verdict = CameraVerdict::Incompatible;
    check.error =
        QString("It is a %1 camera, and %2 a %3 one: registers are in the order of their transport.")
            .arg(camera.transport, source.title(), source.transport);
    return check;
}

} // namespace companion
