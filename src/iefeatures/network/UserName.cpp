#include "iefeatures/network/UserName.h"

namespace companion
{

QString userNameObjection(const QString& name, int room)
{
    const int bytes = name.toUtf8().size();
    return bytes <= room ? QString()
                         : QString("takes %1 bytes, and the camera has room for %2.").arg(bytes).arg(room);
}

int userNameRoom(const ListedCamera& camera)
{
    switch (camera.device.stDeviceInfo.transportType) {
    case KX_TRANSPORT_GIGE:
        return kGigENameBytes;
    case KX_TRANSPORT_USB3:
        return kUsbNameBytes;
    default:
        return 0;
    }
}

} // namespace companion
