// The two settings of this program in the suite's shared local configuration file. Nothing is cached: each
// call opens the file, makes its one access and closes it, so a value that another program changed is seen at
// the next read. A file that cannot be read gives the defaults; one that cannot be written loses the change
// without a word.
#pragma once

#include "window/DeviceColumns.h"

class QObject;

namespace LocalConfig
{

// One bit per device-table column that can be chosen; 107 without the key.
constexpr int kColumnBits = 7;
constexpr int kAllColumns = (1 << kColumnBits) - 1;
constexpr int kDefaultColumns = 107;
// The device-table column of each bit.
constexpr DeviceColumn kColumnOfBit[kColumnBits] = {ColumnPortId, ColumnModel,  ColumnUserName, ColumnSerial,
                                                    ColumnMac,    ColumnStatus, ColumnOperation};

int columnMask(QObject* caller);
void setColumnMask(int mask, QObject* caller);

// The stored number of the text encoding, unchecked; 0 without the key.
int encodingType(QObject* caller);

} // namespace LocalConfig
