// Who is who among the cameras that were ever seen. A camera that comes back gets its old id.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QHash>
#include <QString>

class DeviceIds
{
public:
    // 1, 2, 3... in the order in which cameras are first seen. Transport and serial number decide; cameras
    // that share both within one scan are told apart by `occurrence` (0, 1, ...).
    int idOf(const KX_DeviceInfo& device, int occurrence);

    // What idOf goes by.
    static QString keyOf(const KX_DeviceInfo& device);

private:
    QHash<QString, int> m_ids;
};
