// The device table's columns and what its items hold beside their texts.
#pragma once

#include <Qt>

enum DeviceColumn : int
{
    ColumnCheck = 0,
    ColumnPortId = 1,
    ColumnModel = 2,
    ColumnUserName = 3,
    ColumnSerial = 4,
    ColumnInterface = 5, // never shown
    ColumnMac = 6,
    ColumnStatus = 7,    // availability
    ColumnOperation = 8, // "Operation Status": progress and result of the batch
    ColumnCount = 9
};

enum DeviceRole : int
{
    DeviceIdRole = Qt::UserRole + 1,  // ColumnCheck: the tree's id of the device
    SuccessRole = Qt::UserRole + 2,   // ColumnOperation: whether the job stands as a success so far
    StatusCodeRole = Qt::UserRole + 3 // ColumnStatus: 1 free, 2 unreachable, 3 in use
};
