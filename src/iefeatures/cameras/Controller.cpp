#include "iefeatures/cameras/Controller.h"

#include "camera_line/RecordTexts.h"

namespace companion
{

QString controllerOf(const ListedCamera& camera)
{
    KX_Controller controller{};
    if (KX_CC_GetController(&camera.device.stDeviceInfo, &controller) != KX_OK || controller.ipAddress == 0)
        return {};
    const QString address = camera_line::dottedQuad(controller.ipAddress);
    return controller.port == 0 ? address : address + ':' + QString::number(controller.port);
}

} // namespace companion
