#include "iefeatures/cameras/CameraJson.h"

#include "iefeatures/console/JsonLine.h"

namespace companion
{

Json cameraJson(const ListedCamera& camera)
{
    return {{"number", camera.device.nDeviceID}, {"transport", json(camera.transport)},
            {"model", json(camera.model)},       {"serial", json(camera.serial)},
            {"name", json(camera.userName)},     {"address", json(camera.address)}};
}

} // namespace companion
