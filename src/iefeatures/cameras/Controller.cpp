#include "iefeatures/cameras/Controller.h"

#include "camera_line/RecordTexts.h"

namespace companion
{

namespace
{

QString controllerAt(const KX_DeviceInfo& device)
{
    KX_Controller controller{};
    if (KX_CC_GetController(&device, &controller) != KX_OK || controller.ipAddress == 0)
        return {};
    const QString address = camera_line::dottedQuad(controller.ipAddress);
    return controller.port == 0 ? address : address + ':' + QString::number(controller.port);
}

} // namespace

QString controllerOf(const ListedCamera& camera)
{
    return controllerAt(camera.device.stDeviceInfo);
}

QString openingFailure(const KX_DeviceInfo& device, KX_Status status)
{
    const QString text = KX_CC_StatusText(status);
    const QString controller = status == KX_E_CONTROL_REFUSED ? controllerAt(device) : QString();
    return controller.isEmpty() ? text : text.chopped(1) + " (" + controller + ").";
}

} // namespace companion
