// The suite's record of one camera, as the device tree announces it.
// The SuiteTools library registers it with the meta-type system under its name when it is loaded; a test that
// links a replacement of that library calls qRegisterMetaType itself.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QMetaType>

#include <cstring>

struct StructDeviceInfo
{
    // The suite's device id; key of rows and workers. -1: unset.
    qint32 nDeviceID = -1;
    // Availability: 1, 8, 13, 18 free; 2, 4, 9, 14 in use; anything else unreachable.
    qint32 nStatus = 0;
    // The camera library's record; its transportType says which of its parts counts.
    KX_DeviceInfo stDeviceInfo;

    StructDeviceInfo() { std::memset(&stDeviceInfo, 0, sizeof stDeviceInfo); }
};

Q_DECLARE_METATYPE(StructDeviceInfo)
